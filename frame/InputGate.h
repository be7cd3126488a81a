#pragma once

#include <QMouseEvent>
#include <QObject>
#include <QPointer>

#include <deque>
#include <memory>

class QTimer;

/// Drops input that would do harm.
///
/// Whatever was tapped or typed before a list, a box or another window is shown has no effect. The
/// platforms linuxfb and vnc deliver waiting input in the middle of showing a window, before they
/// enter it into their list of windows. A tap could open a box there, while the list under it is
/// only half open. If it hid or deleted the window, a window that is gone would stay in the
/// platform's list.
///
/// While a list is being closed, taps wait until it is gone and no check is under way. Keys have no
/// effect: one that opened the list again would leave it listed after it is gone, too.
///
/// No widget has a context menu. On a touch screen nobody needs one.
class InputGate : public QObject
{
    Q_OBJECT

public:
    explicit InputGate(QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct WaitingTap {
        QPointer<QObject> window;
        std::unique_ptr<QMouseEvent> tap;
    };

    void Close();
    void Deliver();

    bool m_isClosed = false;
    std::deque<WaitingTap> m_waiting;
    const QEvent* m_delivered = nullptr;
    QTimer* m_later;
};
