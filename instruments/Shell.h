#pragma once

#include <QByteArray>

#include <optional>

/// Runs a command line with the shell and waits for its end. Its outcome is not looked at: a check
/// judges by what the board shows, not by exit codes.
void RunShell(const QByteArray& command);

/// Runs a command line with the shell and returns the first bytes of its output, `limit` at most.
/// Nothing when no shell could be started.
std::optional<QByteArray> ReadShell(const QByteArray& command, int limit);
