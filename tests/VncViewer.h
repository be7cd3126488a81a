#pragma once

#include <QDataStream>
#include <QImage>
#include <QString>
#include <QTcpSocket>

#include <functional>

class QDeadlineTimer;

/// A VNC viewer with a finger. It sees the screen of the running program, and touches it.
///
/// The program only needs the platform "vnc". The viewer sees what has really reached the screen,
/// even while a check blocks the program. Taps that it sends during that time arrive all at once
/// afterwards. It speaks RFB 3.3 without a password and receives raw pixels of 32 bits.
class VncViewer
{
public:
    /// Waits until the viewer has received the whole screen once. False on a timeout; Error() then
    /// says why.
    bool Connect(int limitMs = 15000);
    void Disconnect() { m_socket.abort(); }

    QString Error() const { return m_error; }

    /// The screen as received until now.
    const QImage& Picture() const { return m_picture; }

    /// Receives updates until `isWanted` accepts the picture. False on a timeout.
    bool WaitForPicture(const std::function<bool(const QImage& picture)>& isWanted,
                        int limitMs = 10000);

    /// The buttons of a mouse. A finger is the left one.
    enum Button : quint8 { NoButton = 0, LeftButton = 1, RightButton = 4 };

    void Move(const QPoint& place) { SendPointer(place, NoButton); }
    void Press(const QPoint& place) { SendPointer(place, LeftButton); }
    void Release(const QPoint& place) { SendPointer(place, NoButton); }
    void Tap(const QPoint& place, Button button = LeftButton);
    void Drag(const QPoint& from, const QPoint& to);
    /// Presses and releases a key, while `modifier` is held down if it is given. Both are X's codes
    /// for the keys.
    void StrikeKey(quint32 key, quint32 modifier = 0);

private:
    bool ShakeHands(const QDeadlineTimer& limit);
    bool WaitForBytes(qint64 count, const QDeadlineTimer& limit);
    bool TakeUpdate();
    void RequestUpdate(bool incremental);
    void SendPointer(const QPoint& place, Button held);
    void SendKey(quint32 key, bool pressed);

    QTcpSocket m_socket;
    QDataStream m_stream{&m_socket};
    QImage m_picture;
    QString m_error;
};
