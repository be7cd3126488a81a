#pragma once

#include <QStringList>

#include <memory>

/// The far side of the board's CAN bus "can0". Frames are written as candump and cansend write
/// them: IDENTIFIER#DATA, the identifier in three hexadecimal digits or, extended, in eight.
class CanBus
{
public:
    /// The kernel's own bus where it has CAN, with cansend and candump as the partner; elsewhere
    /// CanSocketPair, which takes the place of the CAN socket at the system calls.
    static std::unique_ptr<CanBus> Create();

    virtual ~CanBus() = default;

    virtual QString Name() const = 0;

    /// Whether frames with the error flag can be put on it.
    virtual bool CarriesErrors() const = 0;

    virtual void Send(const QString& frame) = 0;

    /// The frames that the board has sent since the last call; waits until there are `count`, 5 s
    /// at most.
    virtual QStringList Receive(int count) = 0;
};

/// What the program last asked of a CAN socket, where CanSocketPair stands for it.
struct CanSocketCalls {
    int type = 0;
    int protocol = 0;
    QString interface;
    int boundFamily = 0;
    int boundIndex = 0;
    int opened = 0;
};
CanSocketCalls LastCanSocketCalls();

/// Lets the next CAN sockets fail, as a kernel without CAN does, or have no interface of that name.
enum class CanFault { None, NoCan, NoInterface };
void SetCanFault(CanFault fault);
