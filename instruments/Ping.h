#pragma once

class QByteArray;
class QProcess;
class QString;

/// A public name server: made to be reached from any network, and it answers pings.
const char* const publicPingTarget = "dns.alidns.com";

/// Runs a ping command line in `process`, without a shell, and returns what it printed. A ping that
/// has not ended after 30 s is left to itself; one that cannot start has printed nothing.
QByteArray RunPing(QProcess* process, const QString& command);

/// Whether a ping's output holds an answer: "TTL=" or "ttl=", of which every ping prints one with
/// each answer. Partial loss is an answer too; exit codes differ from ping to ping.
bool PingAnswered(const QString& output);
