#include "protocols/ControllerMessages.h"

#include <QDateTime>

#include <numeric>

QByteArray BuzzerMessage(bool on)
{
    return QByteArray::fromHex(on ? "5AA50303FF05" : "5AA503030006");
}

QByteArray TimeMessage(const QDateTime& time)
{
    // The length counts the bytes after it: the command, six fields and the checksum.
    const char length = 8;
    const char setTime = 2;
    const QDate date = time.date();
    const QTime clock = time.time();
    QByteArray body;
    body += length;
    body += setTime;
    body += static_cast<char>(date.year() - 2000);
    // The controller counts months from 0, days from 1.
    body += static_cast<char>(date.month() - 1);
    body += static_cast<char>(date.day());
    body += static_cast<char>(clock.hour());
    body += static_cast<char>(clock.minute());
    body += static_cast<char>(clock.second());
    const auto checksum = static_cast<char>(std::accumulate(body.begin(), body.end(), 0));
    return "\x5A\xA5" + body + checksum;
}
