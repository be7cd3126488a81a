#pragma once

#include <QByteArray>

class QDateTime;

/// What the companion controller behind "/dev/ttyS5", which has the buzzer and the battery-backed
/// clock, is told.

/// Switches the buzzer on or off.
QByteArray BuzzerMessage(bool on);

/// Sets the controller's clock: all fields plain binary, the year within its range of 256 from
/// 2000 on, the month from 0, the day from 1.
QByteArray TimeMessage(const QDateTime& time);
