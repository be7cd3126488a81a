#pragma once

class QByteArray;
class QProcess;
class QString;

/// Runs a ping command line in `process`, without a shell, and returns its output. It waits for 30
/// s at most; a ping that takes longer goes on running. The output is empty when ping cannot be
/// started.
QByteArray RunPing(QProcess* process, const QString& command);
