#pragma once

#include "simulated-board/operator/Operator.h"

#include <QProcess>

/// Where this build's files are.
inline QString Built(const QString& path)
{
    return QString::fromLocal8Bit(qgetenv("BOARD_BUILD")) + '/' + path;
}

/// Makes `program` start with an operator at it, whom the class Operator stands for.
inline void PutOperatorAt(QProcess& program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", Built("simulated-board/plugins"));
    environment.insert("QT_QPA_GENERIC_PLUGINS", "operator:" + Operator::DefaultSocketPath());
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}
