#include "tests/VncViewer.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QThread>

#include <utility>

namespace
{

const quint16 port = 5900;
const int pollMs = 20;

/// The messages of the protocol that this viewer uses.
enum FromViewer : quint8 {
    SetPixelFormat = 0,
    SetEncodings = 2,
    WantUpdate = 3,
    Key = 4,
    Pointer = 5
};
enum FromServer : quint8 { Update = 0 };
const qint32 rawEncoding = 0;

/// 32 bits a pixel as in QImage::Format_RGB32: little endian, red from bit 16, green from 8, blue
/// from 0; then padding.
const char pixelFormat[] = {32, 24, 0, 1, 0, '\xff', 0, '\xff', 0, '\xff', 16, 8, 0, 0, 0, 0};

} // namespace

bool VncViewer::Connect(int limitMs)
{
    const QDeadlineTimer limit(limitMs);
    while (!limit.hasExpired()) {
        m_socket.abort();
        m_stream.resetStatus();
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        if (m_socket.waitForConnected(pollMs) && ShakeHands(limit)) {
            RequestUpdate(false);
            bool isWhole = false;
            return WaitForPicture(
                [&isWhole](const QImage&) { return std::exchange(isWhole, true); },
                static_cast<int>(limit.remainingTime()));
        }
        QThread::msleep(pollMs);
    }
    m_error = QString("no screen at port %1: %2").arg(port).arg(m_socket.errorString());
    return false;
}

bool VncViewer::ShakeHands(const QDeadlineTimer& limit)
{
    const QByteArray version = "RFB 003.003\n";
    if (!WaitForBytes(version.size(), limit) || !m_socket.read(version.size()).startsWith("RFB")) {
        return false;
    }
    m_socket.write(version);

    quint32 security = 0;
    if (!WaitForBytes(sizeof security, limit)) {
        return false;
    }
    m_stream >> security;
    const quint32 noPassword = 1;
    if (security != noPassword) {
        return false;
    }
    m_stream << quint8(true); // shared with other viewers

    const int formatSize = sizeof pixelFormat;
    quint16 width = 0;
    quint16 height = 0;
    quint32 nameSize = 0;
    if (!WaitForBytes(2 + 2 + formatSize + 4, limit)) {
        return false;
    }
    m_stream >> width >> height;
    m_stream.skipRawData(formatSize);
    m_stream >> nameSize;
    if (!WaitForBytes(nameSize, limit)) {
        return false;
    }
    m_stream.skipRawData(static_cast<int>(nameSize));
    m_picture = QImage(width, height, QImage::Format_RGB32);
    m_picture.fill(Qt::black);

    m_stream << quint8(SetPixelFormat) << quint8(0) << quint16(0);
    m_stream.writeRawData(pixelFormat, formatSize);
    m_stream << quint8(SetEncodings) << quint8(0) << quint16(1) << rawEncoding;
    return true;
}

bool VncViewer::WaitForBytes(qint64 count, const QDeadlineTimer& limit)
{
    while (m_socket.bytesAvailable() < count) {
        if (!m_socket.waitForReadyRead(static_cast<int>(limit.remainingTime()))) {
            return false;
        }
    }
    return true;
}

bool VncViewer::WaitForPicture(const std::function<bool(const QImage& picture)>& isWanted,
                               int limitMs)
{
    const QDeadlineTimer limit(limitMs);
    while (!isWanted(m_picture)) {
        while (!TakeUpdate()) {
            if (!m_socket.waitForReadyRead(static_cast<int>(limit.remainingTime()))) {
                m_error = "the screen does not change as wanted: " + m_socket.errorString();
                return false;
            }
        }
    }
    return true;
}

/// Receives one update of the picture and asks for the next. False until the update is complete.
bool VncViewer::TakeUpdate()
{
    m_stream.startTransaction();
    quint8 type = Update;
    quint8 padding = 0;
    quint16 parts = 0;
    m_stream >> type >> padding >> parts;
    for (; parts > 0; --parts) {
        quint16 x = 0;
        quint16 y = 0;
        quint16 width = 0;
        quint16 height = 0;
        qint32 encoding = rawEncoding;
        m_stream >> x >> y >> width >> height >> encoding;
        if (m_stream.status() != QDataStream::Ok) {
            break;
        }
        if (type != Update || encoding != rawEncoding ||
            !m_picture.rect().contains(QRect(x, y, width, height))) {
            qFatal("The screen sends what was not asked for");
        }
        for (int row = y; row < y + height; ++row) {
            auto* pixels = reinterpret_cast<QRgb*>(m_picture.scanLine(row)) + x;
            m_stream.readRawData(reinterpret_cast<char*>(pixels), width * int(sizeof *pixels));
        }
    }
    if (!m_stream.commitTransaction()) {
        m_stream.resetStatus(); // or it would not write either
        return false;
    }
    RequestUpdate(true);
    return true;
}

void VncViewer::RequestUpdate(bool incremental)
{
    m_stream << quint8(WantUpdate) << quint8(incremental) << quint16(0) << quint16(0)
             << quint16(m_picture.width()) << quint16(m_picture.height());
    m_socket.flush();
}

void VncViewer::SendPointer(const QPoint& place, Button held)
{
    m_stream << quint8(Pointer) << quint8(held) << quint16(place.x()) << quint16(place.y());
    m_socket.flush();
}

void VncViewer::Tap(const QPoint& place, Button button)
{
    Move(place);
    SendPointer(place, button);
    Release(place);
}

void VncViewer::Drag(const QPoint& from, const QPoint& to)
{
    Move(from);
    const int steps = 4;
    for (int step = 0; step <= steps; ++step) {
        Press(from + (to - from) * step / steps);
    }
    Release(to);
}

void VncViewer::SendKey(quint32 key, bool pressed)
{
    m_stream << quint8(Key) << quint8(pressed) << quint16(0) << key;
    m_socket.flush();
}

void VncViewer::StrikeKey(quint32 key, quint32 modifier)
{
    if (modifier != 0) {
        SendKey(modifier, true);
    }
    SendKey(key, true);
    SendKey(key, false);
    if (modifier != 0) {
        SendKey(modifier, false);
    }
}
