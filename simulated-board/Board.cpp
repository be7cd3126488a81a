#include "simulated-board/Board.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace
{

const char* const callsPath = "/run/board/calls";
const char* const toolsPath = "/run/board/tools";

/// These functions write to /etc and /dev, so they must never run on a real machine.
void CheckWeAreOnTheBoard()
{
    if (!QFileInfo("/run/host/etc").isDir()) {
        qFatal("This runs on the simulated board only: see simulated-board/board");
    }
}

} // namespace

void Board::Become(const QByteArray& description)
{
    CheckWeAreOnTheBoard();
    QProcess apply;
    apply.setProcessChannelMode(QProcess::MergedChannels);
    apply.setProgram(QString::fromLocal8Bit(qgetenv("BOARD_HOME")) + "/apply");
    apply.start();
    apply.write(description);
    apply.closeWriteChannel();
    if (!apply.waitForFinished() || apply.exitCode() != 0) {
        qFatal("The board cannot become this: %s%s", qPrintable(apply.errorString()),
               apply.readAll().constData());
    }
}

QStringList Board::Calls()
{
    QStringList calls = QString::fromUtf8(ReadFile(callsPath)).split('\n');
    calls.removeAll("");
    return calls;
}

void Board::ForgetCalls()
{
    WriteFile(callsPath, {});
}

void Board::PutTool(const QString& name, const QByteArray& script)
{
    const QString path = QString(toolsPath) + '/' + name;
    WriteFile(path, "#!/bin/bash\n" + script + "\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void Board::RemoveTools()
{
    QDir tools(toolsPath);
    const QStringList names = tools.entryList(QDir::Files);
    for (const QString& name : names) {
        tools.remove(name);
    }
}

void Board::WriteFile(const QString& path, const QByteArray& content)
{
    CheckWeAreOnTheBoard();
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
}

QByteArray Board::ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("Cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
    return file.readAll();
}
