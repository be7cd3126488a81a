#pragma once

#include <QByteArray>
#include <QString>

/// A sound file's path without the line end that the scan's output leaves on it.
QString WithoutLineEnd(const QString& item);

/// The command line that plays a sound file in the background. It is cut to 99 bytes, which is what
/// its buffer holds. `item` is a line of the scan's output, with or without its line end. Nothing
/// in the file's name is run as a command.
QByteArray PlayCommand(const QString& item);
