#pragma once

#include "simulated-board/devices/PseudoTerminalPair.h"

#include <QByteArray>
#include <QString>

/// A serial port of the simulated board. The test itself holds the far end.
class PseudoTerminal
{
public:
    /// Creates the port as `device`, such as "/dev/ttyS2".
    explicit PseudoTerminal(const QString& device);
    ~PseudoTerminal();

    /// Sends all of the bytes to the board. False, with a warning, when the board does not read
    /// them within a minute.
    bool Write(const QByteArray& bytes);

    /// Returns what the board has sent since the last call.
    QByteArray ReadAvailable();

    /// Runs the event loop until the board has sent `expected` and nothing else, 5 s at most.
    bool WaitFor(const QByteArray& expected);

    /// Unplugs the port. A program that has it open sees a hang-up.
    void Vanish();

private:
    QString m_device;
    PseudoTerminalPair m_pair;
};
