#pragma once

#include <QStringList>

#include <memory>

/// The far side of the board's CAN bus "can0". Frames are written as for candump and cansend:
/// IDENTIFIER#DATA. A standard identifier has three hexadecimal digits, an extended one eight.
class CanBus
{
public:
    /// If the kernel has CAN, its own bus, with cansend and candump as the partner. If not,
    /// CanSocketPair, which replaces the CAN socket at the system calls.
    static std::unique_ptr<CanBus> Create();

    virtual ~CanBus() = default;

    virtual QString Name() const = 0;

    /// Whether frames with the error flag can be sent on it.
    virtual bool CarriesErrors() const = 0;

    virtual void Send(const QString& frame) = 0;

    /// The frames that the board has sent since the last call. Waits up to 5 s until there are
    /// `count`.
    QStringList Receive(int count);

protected:
    /// Returns the frames that are there already.
    virtual QStringList ReceiveAvailable() = 0;
};

/// The program's last calls on a CAN socket, recorded by CanSocketPair.
struct CanSocketCalls {
    int type = 0;
    int protocol = 0;
    QString interface;
    int boundFamily = 0;
    int boundIndex = 0;
    int opened = 0;
};
CanSocketCalls LastCanSocketCalls();

/// Makes the next CAN sockets fail: like those of a kernel without CAN, or like those of a kernel
/// that has no interface of that name.
enum class CanFault { None, NoCan, NoInterface };
void SetCanFault(CanFault fault);
