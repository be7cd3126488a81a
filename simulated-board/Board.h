#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The simulated board that this process runs on. Failures end the process with a message: a test
/// on a board that is not as described says nothing.
class Board
{
public:
    /// Makes the board what the description says, in place of what it was. The lines are those of
    /// a board description (docs/simulated-board.md).
    static void Become(const QByteArray& description);

    /// The calls of the stand-in tools since the last ForgetCalls(), in order, one a line: the name
    /// and the arguments, quoted as the shell would.
    static QStringList Calls();
    static void ForgetCalls();

    /// Puts a shell script of the test's own in front of the board's tool of that name.
    static void PutTool(const QString& name, const QByteArray& script);
    static void RemoveTools();

    /// Writes a file, and its folders where they are missing.
    static void WriteFile(const QString& path, const QByteArray& content);
    static QByteArray ReadFile(const QString& path);
};
