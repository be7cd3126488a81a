#pragma once

#include "simulated-board/devices/CanSockets.h"

#include <QStringList>

/// The far side of the board's CAN bus "can0". Frames are written as for candump and cansend:
/// IDENTIFIER#DATA. A standard identifier has three hexadecimal digits, an extended one eight.
class CanBus
{
public:
    CanBus() = default;
    ~CanBus();
    CanBus(const CanBus&) = delete;
    CanBus& operator=(const CanBus&) = delete;

    void Send(const QString& frame);

    /// The frames that the board has sent since the last call. Waits up to 5 s until there are
    /// `count`.
    QStringList Receive(int count);
};
