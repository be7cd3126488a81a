#pragma once

#include "simulated-board/operator/Operator.h"

#include <QProcess>

/// The path of a file in this build's folder.
inline QString Built(const QString& path)
{
    return QString::fromLocal8Bit(qgetenv("BOARD_BUILD")) + '/' + path;
}

/// Asks the program to end, as the service does, and returns whether it was running and ended in
/// order. It has ended in any case.
inline bool EndInOrder(QProcess& program)
{
    const bool wasRunning = program.state() == QProcess::Running;
    program.terminate();
    if (!program.waitForFinished(20000)) {
        program.kill();
        program.waitForFinished();
        return false;
    }
    return wasRunning && program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0;
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

/// Has nobody look for leaks when `program` ends. The keyboard's QML engine lives as long as the
/// process, and what its heap holds looks lost.
inline void LookForNoLeaks(QProcess& program)
{
    QProcessEnvironment environment = program.processEnvironment();
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":detect_leaks=0");
    program.setProcessEnvironment(environment);
}
