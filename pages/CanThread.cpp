#include "pages/CanThread.h"

#include "protocols/CanFrame.h"

#include <climits>

#include <linux/can.h>
#include <unistd.h>

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
        // An empty queue and a bus that is down give the same result. Both mean silence.
        if (read(m_socket, &frame, sizeof frame) > 0) {
            emit message(CanFrameText(frame));
        }
        msleep(10);
    }
}
