#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The content of another service's file; empty when the file is missing or cannot be read.
QByteArray ReadServiceFile(const QString& path);

/// Replaces the content of another service's file with the result of `edit`. A missing file counts
/// as empty and is created. The file keeps its owner and mode, and a symbolic link stays a link. If
/// the writing is interrupted, the file is either the old or the new one. A path that is not a
/// plain file, or a file that cannot be read, is left as it is. Failures are only logged.
void EditServiceFile(const QString& path,
                     const std::function<QByteArray(const QByteArray& content)>& edit);
