#pragma once

class QString;

/// A public name server. It can be reached from any network, and it answers pings.
const char* const publicPingTarget = "dns.alidns.com";

/// Whether a ping got an answer. Every version of ping prints "TTL=" or "ttl=" with each answer,
/// but their exit codes differ. Partial loss counts as an answer.
bool PingAnswered(const QString& output);
