#include "pages/CanThread.h"

#include <climits>

#include <linux/can.h>
#include <unistd.h>

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

CanThread::CanThread(int socket, QObject* parent) : QThread(parent), m_socket(socket) {}

void CanThread::stop()
{
    m_isRunning = false;
    wait(ULONG_MAX);
}

void CanThread::run()
{
    while (m_isRunning) {
        can_frame frame = {};
        // Nothing waiting and a bus that is down read the same; both are silence.
        if (read(m_socket, &frame, sizeof frame) > 0) {
            emit message(CanFrameText(frame));
        }
        msleep(10);
    }
}
