#include "simulated-board/PseudoTerminal.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(const QString& device) : m_device(device)
{
    m_pair.LinkAs(device.toStdString());
    fcntl(m_pair.Master(), F_SETFL, O_NONBLOCK);
}

PseudoTerminal::~PseudoTerminal()
{
    Vanish();
}

void PseudoTerminal::Write(const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            write(m_pair.Master(), bytes.constData() + done, bytes.size() - done);
        if (written > 0) {
            done += written;
        } else if (errno == EAGAIN) {
            // The line is full. The board must read first.
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        } else {
            qFatal("%s: %s", qPrintable(m_device), std::strerror(errno));
        }
    }
}

QByteArray PseudoTerminal::ReadAvailable()
{
    QByteArray received;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(m_pair.Master(), buffer, sizeof buffer)) > 0) {
        received.append(buffer, static_cast<int>(count));
    }
    return received;
}

bool PseudoTerminal::WaitFor(const QByteArray& expected)
{
    QElapsedTimer timer;
    timer.start();
    QByteArray received;
    while (received.size() < expected.size() && timer.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        received += ReadAvailable();
    }
    if (received != expected) {
        qWarning("%s: the board sent %s, not %s", qPrintable(m_device),
                 received.toPercentEncoding(" ").constData(),
                 expected.toPercentEncoding(" ").constData());
    }
    return received == expected;
}

void PseudoTerminal::Vanish()
{
    QFile::remove(m_device);
    m_pair.Close();
}
