#pragma once

#include <QByteArray>
#include <QString>

// What the kernel's files and the board's tools tell.

/// The screen's rotation, 0 to 3, in a line of tslib's calibration file: the last of its ten
/// fields. 0 when that field is missing: older versions of tslib write nine fields.
int RotationOf(const QByteArray& calibration);

/// The number that a counting command such as `wc -l` printed; 0 when it printed none.
int CountOf(const QByteArray& output);

/// How many of the MMC devices found are SD cards: all but one, the board's own eMMC.
int SdCardsAmong(int mmcDevices);

/// The build stamp in the line of /proc/version: its last six words. Words are split at single
/// blanks, so there is an empty word between two blanks. Empty when the line has six words or
/// fewer.
QString BuildStampOf(const QString& version);

/// A public name server. It can be reached from any network, and it answers pings.
const char* const publicPingTarget = "dns.alidns.com";

/// Whether a ping got an answer. Every version of ping prints "TTL=" or "ttl=" with each answer,
/// but their exit codes differ. Partial loss counts as an answer.
bool PingAnswered(const QString& output);
