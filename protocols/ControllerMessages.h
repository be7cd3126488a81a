#pragma once

#include <QByteArray>

class QDateTime;

/// Messages to the companion controller on "/dev/ttyS5". It has the buzzer and the battery-backed
/// clock.

/// Switches the buzzer on or off.
QByteArray BuzzerMessage(bool on);

/// Sets the controller's clock. Each field is one binary byte: the year minus 2000 (modulo 256),
/// the month from 0, the day from 1, hour, minute and second.
QByteArray TimeMessage(const QDateTime& time);
