#pragma once

#include <QByteArray>
#include <QString>

/// A sound file's path as a scan printed it, without the line end that the scan leaves on it.
QString WithoutLineEnd(const QString& item);

/// The command line that plays a sound file in the background, cut to what its buffer of 100 bytes
/// holds. `item` is a line of the scan's output, with or without its line end; whatever the file's
/// name holds reaches the player as part of the name, never as a command.
QByteArray PlayCommand(const QString& item);
