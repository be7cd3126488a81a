#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The simulated board that this process runs on. A failure ends the process with a message,
/// because a test says nothing if its board is not as described.
class Board
{
public:
    /// Makes the board as described; nothing of the earlier description stays. The lines are those
    /// of a board description (docs/simulated-board.md).
    static void Become(const QByteArray& description);

    /// The calls of the stand-in tools since the last ForgetCalls(), in order, one a line: the name
    /// and the arguments, quoted as for the shell.
    static QStringList Calls();
    static void ForgetCalls();

    /// Replaces the board's tool of that name with a shell script of the test.
    static void PutTool(const QString& name, const QByteArray& script);
    static void RemoveTools();

    /// Writes a file. Creates missing folders.
    static void WriteFile(const QString& path, const QByteArray& content);
    static QByteArray ReadFile(const QString& path);
};
