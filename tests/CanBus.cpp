#include "tests/CanBus.h"

#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor()

#include <cerrno>
#include <cstring>

#include <linux/can.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/// The partner's end of the socket; -1 while the program has opened none.
int farEnd = -1;

void CloseFarEnd()
{
    if (farEnd >= 0) {
        close(farEnd);
    }
    farEnd = -1;
}

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

} // namespace

void OnCanOpened(int partner)
{
    CloseFarEnd();
    farEnd = partner;
}

CanBus::~CanBus()
{
    CloseFarEnd();
    canFault = CanFault::None;
    canSocketCalls = CanSocketCalls();
}

void CanBus::Send(const QString& text)
{
    const can_frame frame = FrameOf(text);
    if (write(farEnd, &frame, sizeof frame) != sizeof frame && errno != ENOTCONN &&
        errno != ECONNREFUSED) {
        qFatal("CAN: %s", std::strerror(errno));
    }
}

QStringList CanBus::Receive(int count)
{
    QStringList frames;
    const auto isEnough = [&] {
        can_frame frame = {};
        ssize_t size = 0;
        while ((size = recv(farEnd, &frame, sizeof frame, MSG_DONTWAIT)) > 0) {
            frames << (size == sizeof frame ? TextOf(frame) : QString("%1 bytes").arg(size));
        }
        return frames.size() >= count;
    };
    if (!QTest::qWaitFor(isEnough)) {
        qWarning("CAN: %d frames came, not %d", frames.size(), count);
    }
    return frames;
}
