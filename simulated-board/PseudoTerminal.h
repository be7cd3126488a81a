#pragma once

#include "simulated-board/devices/PseudoTerminalPair.h"

#include <QByteArray>
#include <QString>

/// A serial port of the simulated board whose far end the test holds itself.
class PseudoTerminal
{
public:
    /// Comes up as `device`, such as "/dev/ttyS2".
    explicit PseudoTerminal(const QString& device);
    ~PseudoTerminal();

    /// Sends to the board, all of it.
    void Write(const QByteArray& bytes);

    /// What the board has sent by now.
    QByteArray ReadAvailable();

    /// Runs the event loop until the board has sent `expected` and nothing else, 5 s at most.
    bool WaitFor(const QByteArray& expected);

    /// Is unplugged: whoever has the port open sees it vanish.
    void Vanish();

private:
    QString m_device;
    PseudoTerminalPair m_pair;
};
