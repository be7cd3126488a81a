#include "instruments/Ping.h"

#include <QByteArray>
#include <QDebug>
#include <QProcess>
#include <QString>

QByteArray RunPing(QProcess* process, const QString& command)
{
    // The command as one string is how Qt 5.12 splits it; later versions offer another call.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    process->start(command, QIODevice::ReadWrite);
    QT_WARNING_POP
    if (!process->waitForFinished(30000)) {
        qWarning() << command << process->errorString();
    }
    return process->readAll();
}

bool PingAnswered(const QString& output)
{
    return output.contains("TTL=") || output.contains("ttl=");
}
