#pragma once

#include <QDataStream>
#include <QImage>
#include <QString>
#include <QTcpSocket>

#include <functional>

class QDeadlineTimer;

/// A VNC viewer with a finger: sees what the screen of the running program shows, and touches it.
///
/// It asks nothing of the program but the platform "vnc". What it sees has reached the screen, also
/// while a check blocks the program. What it touches while the program stands still arrives in one
/// burst. It speaks RFB 3.3 without a password and takes raw pixels of 32 bits.
class VncViewer
{
public:
    /// Waits until the program's screen is there and has been seen as a whole. False, and Error()
    /// says why, when it is not there in time.
    bool Connect(int limitMs = 15000);
    void Disconnect() { m_socket.abort(); }

    QString Error() const { return m_error; }

    /// The screen as it has come by now.
    const QImage& Picture() const { return m_picture; }

    /// Takes what comes until the picture is as wanted; false when it is not in time.
    bool WaitForPicture(const std::function<bool(const QImage& picture)>& isWanted,
                        int limitMs = 10000);

    void Move(const QPoint& place) { SendPointer(place, false); }
    void Press(const QPoint& place) { SendPointer(place, true); }
    void Release(const QPoint& place) { SendPointer(place, false); }
    void Tap(const QPoint& place);
    /// Strikes a key of a keyboard; `key` is X's code for it.
    void StrikeKey(quint32 key);

private:
    bool ShakeHands(const QDeadlineTimer& limit);
    bool WaitForBytes(qint64 count, const QDeadlineTimer& limit);
    bool TakeUpdate();
    void RequestUpdate(bool incremental);
    void SendPointer(const QPoint& place, bool pressed);

    QTcpSocket m_socket;
    QDataStream m_stream{&m_socket};
    QImage m_picture;
    QString m_error;
};
