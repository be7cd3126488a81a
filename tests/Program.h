#pragma once

#include "simulated-board/operator/Operator.h"

#include <QProcess>

/// The path of a file in this build's folder.
inline QString Built(const QString& path)
{
    return QString::fromLocal8Bit(qgetenv("BOARD_BUILD")) + '/' + path;
}

/// Sets `program` up so that the class Operator can drive it once it has started.
inline void PutOperatorAt(QProcess& program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", Built("simulated-board/plugins"));
    environment.insert("QT_QPA_GENERIC_PLUGINS", "operator:" + Operator::DefaultSocketPath());
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}
