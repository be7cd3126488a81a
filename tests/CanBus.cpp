#include "tests/CanBus.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor()

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include <dlfcn.h>
#include <linux/can.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

const int interfaceIndex = 7;

/// The far end of the socket pair; -1 while the kernel's own CAN is used.
int farEnd = -1;
bool standsIn = false;
CanFault fault = CanFault::None;
CanSocketCalls calls;

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// Replaces functions of the C library. Calls about CAN are handled here; all others are passed on.

extern "C" int socket(int domain, int type, int protocol) noexcept
{
    static auto* real = Real<int(int, int, int)>("socket");
    if (domain != AF_CAN || !standsIn) {
        return real(domain, type, protocol);
    }
    if (fault == CanFault::NoCan) {
        errno = EAFNOSUPPORT;
        return -1;
    }
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) != 0) {
        return -1;
    }
    if (farEnd >= 0) {
        close(farEnd);
    }
    farEnd = ends[1];
    calls.type = type;
    calls.protocol = protocol;
    ++calls.opened;
    return ends[0];
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static auto* real = Real<int(int, unsigned long, ...)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request != SIOCGIFINDEX || !standsIn) {
        return real(descriptor, request, argument);
    }
    auto* interface = static_cast<ifreq*>(argument);
    calls.interface = interface->ifr_name;
    if (fault != CanFault::None) {
        errno = ENODEV;
        return -1;
    }
    interface->ifr_ifindex = interfaceIndex;
    return 0;
}

extern "C" int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept
{
    static auto* real = Real<int(int, const sockaddr*, socklen_t)>("bind");
    if (address->sa_family != AF_CAN || !standsIn) {
        return real(descriptor, address, size);
    }
    sockaddr_can can = {};
    std::memcpy(&can, address, std::min<std::size_t>(size, sizeof can));
    calls.boundFamily = can.can_family;
    calls.boundIndex = can.can_ifindex;
    if (can.can_ifindex != interfaceIndex) {
        errno = ENODEV;
        return -1;
    }
    return 0;
}

CanSocketCalls LastCanSocketCalls()
{
    return calls;
}

void SetCanFault(CanFault newFault)
{
    fault = newFault;
}

namespace
{

can_frame FrameOf(const QString& text)
{
    const QString identifier = text.section('#', 0, 0);
    const QString content = text.section('#', 1);
    can_frame frame = {};
    frame.can_id = identifier.toUInt(nullptr, 16);
    if (identifier.size() == 8 && (frame.can_id & CAN_ERR_FLAG) == 0) {
        frame.can_id |= CAN_EFF_FLAG;
    }
    if (content.startsWith('R')) {
        frame.can_id |= CAN_RTR_FLAG;
        frame.can_dlc = static_cast<__u8>(content.mid(1).toUInt());
        return frame;
    }
    const QByteArray bytes = QByteArray::fromHex(content.toLatin1());
    frame.can_dlc = static_cast<__u8>(bytes.size());
    std::memcpy(frame.data, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return frame;
}

QString TextOf(const can_frame& frame)
{
    const bool isExtended = (frame.can_id & CAN_EFF_FLAG) != 0;
    const QByteArray bytes(reinterpret_cast<const char*>(frame.data), frame.can_dlc);
    return QString("%1#%2")
        .arg(frame.can_id & CAN_EFF_MASK, isExtended ? 8 : 3, 16, QChar('0'))
        .arg(QString(bytes.toHex()))
        .toUpper();
}

class CanSocketPair : public CanBus
{
public:
    CanSocketPair() { standsIn = true; }

    ~CanSocketPair() override
    {
        standsIn = false;
        fault = CanFault::None;
        calls = CanSocketCalls();
        if (farEnd >= 0) {
            close(farEnd);
            farEnd = -1;
        }
    }

    QString Name() const override { return "a socket pair: this kernel has no CAN"; }

    bool CarriesErrors() const override { return true; }

    void Send(const QString& text) override
    {
        const can_frame frame = FrameOf(text);
        if (write(farEnd, &frame, sizeof frame) != sizeof frame && errno != ENOTCONN &&
            errno != ECONNREFUSED) {
            qFatal("CAN: %s", std::strerror(errno));
        }
    }

protected:
    QStringList ReceiveAvailable() override
    {
        QStringList frames;
        can_frame frame = {};
        ssize_t size = 0;
        while ((size = recv(farEnd, &frame, sizeof frame, MSG_DONTWAIT)) > 0) {
            frames << (size == sizeof frame ? TextOf(frame) : QString("%1 bytes").arg(size));
        }
        return frames;
    }
};

/// A virtual interface of the kernel, with the tools of can-utils at its other end.
class VirtualCan : public CanBus
{
public:
    VirtualCan()
    {
        m_dump.start("candump", {"-L", "can0"});
        m_dump.waitForStarted();
        // It listens once its own frame comes back.
        const QDeadlineTimer limit(10000);
        do {
            VirtualCan::Send("7FF#");
        } while (!m_dump.waitForReadyRead(100) && !limit.hasExpired());
        while (m_dump.waitForReadyRead(200)) {
        }
        m_dump.readAll();
    }

    ~VirtualCan() override
    {
        m_dump.kill();
        m_dump.waitForFinished();
    }

    QString Name() const override { return "the kernel's vcan"; }

    // Without a filter for them a CAN socket is given none.
    bool CarriesErrors() const override { return false; }

    void Send(const QString& frame) override { QProcess::execute("cansend", {"can0", frame}); }

protected:
    QStringList ReceiveAvailable() override
    {
        QStringList frames;
        QCoreApplication::processEvents();
        while (m_dump.canReadLine()) {
            // "(STAMP) can0 FRAME"
            frames << QString(m_dump.readLine()).trimmed().section(' ', 2, 2);
        }
        return frames;
    }

private:
    QProcess m_dump;
};

} // namespace

std::unique_ptr<CanBus> CanBus::Create()
{
    const int probe = ::socket(AF_CAN, SOCK_RAW, CAN_RAW);
    if (probe < 0) {
        return std::make_unique<CanSocketPair>();
    }
    close(probe);
    if (if_nametoindex("can0") == 0) {
        QProcess::execute("ip", {"link", "add", "can0", "type", "vcan"});
        QProcess::execute("ip", {"link", "set", "can0", "up"});
    }
    if (if_nametoindex("can0") == 0) {
        return std::make_unique<CanSocketPair>();
    }
    return std::make_unique<VirtualCan>();
}

QStringList CanBus::Receive(int count)
{
    QStringList frames;
    const auto isEnough = [&] {
        frames += ReceiveAvailable();
        return frames.size() >= count;
    };
    if (!QTest::qWaitFor(isEnough)) {
        qWarning("CAN: %d frames came, not %d", frames.size(), count);
    }
    return frames;
}
