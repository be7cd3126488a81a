#pragma once

#include <QSerialPort>
#include <QTest>

#include <poll.h>

/// Waits until the system has bytes for a port, without running the event loop.
inline void WaitUntilReadable(const QSerialPort* port)
{
    pollfd state = {port->handle(), POLLIN, 0};
    QCOMPARE(poll(&state, 1, 60000), 1);
}
