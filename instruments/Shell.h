#pragma once

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <optional>

/// Runs a command line with the shell and waits for its end. The exit code is not used: a check
/// judges by what the board shows.
void RunShell(const QByteArray& command);

/// Runs a command line with the shell and returns the first `limit` bytes of its output. Nothing
/// when no shell could be started.
std::optional<QByteArray> ReadShell(const QByteArray& command, int limit);

/// Runs a program without a shell and waits for its end, however long that takes. `take` gets each
/// line of its output, with the line end, when it comes. No line comes when the program is missing.
void ReadLines(const QString& program, const QStringList& arguments,
               const std::function<void(const QByteArray& line)>& take);
