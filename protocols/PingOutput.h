#pragma once

class QString;

/// A public name server: made to be reached from any network, and it answers pings.
const char* const publicPingTarget = "dns.alidns.com";

/// Whether a ping's output holds an answer: "TTL=" or "ttl=", of which every ping prints one with
/// each answer. Partial loss is an answer too; exit codes differ from ping to ping.
bool PingAnswered(const QString& output);
