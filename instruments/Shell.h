#pragma once

#include <QByteArray>

#include <optional>

/// Runs a command line with the shell and waits for its end. The exit code is not used: a check
/// judges by what the board shows.
void RunShell(const QByteArray& command);

/// Runs a command line with the shell and returns the first `limit` bytes of its output. Nothing
/// when no shell could be started.
std::optional<QByteArray> ReadShell(const QByteArray& command, int limit);
