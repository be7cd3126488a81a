#include "simulated-board/PseudoTerminal.h"

#include <QFile>
#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor()

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

bool PseudoTerminal::Write(const QByteArray& bytes)
{
    qint64 done = 0;
    // A full line takes more once the board has read some of it.
    const auto isWritten = [&] {
        ssize_t written = 0;
        while (done < bytes.size() && written >= 0) {
            written = write(m_pair.Master(), bytes.constData() + done, bytes.size() - done);
            done += qMax<ssize_t>(written, 0);
        }
        return done == bytes.size() || errno != EAGAIN;
    };
    if (!QTest::qWaitFor(isWritten, 60000) || done < bytes.size()) {
        qWarning("%s: %s", qPrintable(m_device), std::strerror(errno));
    }
    return done == bytes.size();
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
    QByteArray received;
    const auto isAllThere = [&] {
        received += ReadAvailable();
        return received.size() >= expected.size();
    };
    if (!QTest::qWaitFor(isAllThere) || received != expected) {
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
