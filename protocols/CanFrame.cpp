#include "protocols/CanFrame.h"

#include <linux/can.h>

can_frame CanFrameOf(const QString& hex)
{
    const quint64 number = hex.toULongLong(nullptr, 16);
    can_frame frame = {};
    frame.can_id = CAN_EFF_FLAG | 1;
    frame.can_dlc = 8;
    for (int i = 0; i < 8; ++i) {
        frame.data[i] = static_cast<quint8>(number >> (56 - 8 * i));
    }
    return frame;
}

QString CanFrameText(const can_frame& frame)
{
    QString text = QString("id:%1,len:%2,data:%3%4%5%6%7%8%9%10")
                       .arg(frame.can_id & ~CAN_EFF_FLAG)
                       .arg(frame.can_dlc);
    for (const int byte : frame.data) {
        text = text.arg(byte, 2, 16, QChar('0'));
    }
    return text;
}
