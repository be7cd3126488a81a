#pragma once

#include <QEvent>
#include <QObject>

/// Drops input that would do harm.
///
/// Whatever was tapped or typed before a list, a box or another window is shown has no effect. The
/// platforms linuxfb and vnc deliver waiting input in the middle of showing a window, before they
/// enter it into their list of windows. A tap could open a box there, while the list under it is
/// only half open. If it hid or deleted the window, a window that is gone would stay in the
/// platform's list.
///
/// Nor has what is delivered in the middle of closing a list. A key could open the list again,
/// which would leave it listed after it is gone, too. A tap could begin a check while the list's
/// own code is still running.
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
    void Close();

    bool m_isClosed = false;
};
