#include "instruments/Ping.h"

#include <QByteArray>
#include <QDebug>
#include <QProcess>
#include <QString>

QByteArray RunPing(QProcess* process, const QString& command)
{
    // This call is deprecated. Its successor, QProcess::splitCommand(), is newer than the board's
    // Qt.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    process->start(command, QIODevice::ReadWrite);
    QT_WARNING_POP
    if (!process->waitForFinished(30000)) {
        qWarning() << command << process->errorString();
    }
    return process->readAll();
}
