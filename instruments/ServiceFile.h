#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The content of another service's file; empty when there is none or it cannot be read.
QByteArray ReadServiceFile(const QString& path);

/// Replaces the content of another service's file with what `edit` makes of it. A missing file has
/// no content and is created. The file's owner, mode and symbolic link stay, and whatever
/// interrupts the writing leaves the old or the new file. What is no file or cannot be read is left
/// alone. Failures are only logged.
void EditServiceFile(const QString& path,
                     const std::function<QByteArray(const QByteArray& content)>& edit);
