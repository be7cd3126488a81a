#include "instruments/Ping.h"

#include <QByteArray>
#include <QDebug>
#include <QProcess>
#include <QString>

QByteArray RunPing(QProcess* process, const QString& command)
{
    process->start(command, QIODevice::ReadWrite);
    if (!process->waitForFinished(30000)) {
        qWarning() << command << process->errorString();
    }
    return process->readAll();
}

bool PingAnswered(const QString& output)
{
    return output.contains("TTL=") || output.contains("ttl=");
}
