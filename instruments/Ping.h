#pragma once

class QByteArray;
class QProcess;
class QString;

/// Runs a ping command line in `process`, without a shell, and returns what it printed. A ping that
/// has not ended after 30 s is left to itself; one that cannot start has printed nothing.
QByteArray RunPing(QProcess* process, const QString& command);
