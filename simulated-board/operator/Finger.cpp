#include "simulated-board/operator/Finger.h"

#include <QGuiApplication>
#include <QKeySequence>
#include <QStyleHints>
#include <QWheelEvent>
#include <QWindow>
#include <qpa/qwindowsysteminterface_p.h>

namespace
{

using Driver = QWindowSystemInterface;

/// The time of the next tap. Two taps are never so close that they make a double click.
ulong NextTapTime()
{
    static ulong s_last = 0;
    const auto now = static_cast<ulong>(QWindowSystemInterfacePrivate::eventTime.elapsed());
    const auto apart =
        static_cast<ulong>(QGuiApplication::styleHints()->mouseDoubleClickInterval()) + 1;
    s_last = qMax(now, s_last + apart);
    return s_last;
}

} // namespace

void Finger::Tap(QWindow* window, const QPoint& place)
{
    const ulong time = NextTapTime();
    const QPointF global = window->mapToGlobal(place);
    const auto send = [&](Qt::MouseButtons held, Qt::MouseButton button, QEvent::Type type) {
        Driver::handleMouseEvent<Driver::AsynchronousDelivery>(window, time, place, global, held,
                                                               button, type);
    };
    send(Qt::NoButton, Qt::NoButton, QEvent::MouseMove);
    send(Qt::LeftButton, Qt::LeftButton, QEvent::MouseButtonPress);
    send(Qt::NoButton, Qt::LeftButton, QEvent::MouseButtonRelease);
}

void Finger::TurnWheel(QWindow* window, const QPoint& place, int notches)
{
    const QPoint angle(0, notches * QWheelEvent::DefaultDeltasPerStep);
    Driver::handleWheelEvent(window, place, window->mapToGlobal(place), QPoint(), angle);
}

void Finger::PressKey(QWindow* window, int key, Qt::KeyboardModifiers modifiers,
                      const QString& text)
{
    Driver::handleKeyEvent<Driver::AsynchronousDelivery>(window, QEvent::KeyPress, key, modifiers,
                                                         text);
    Driver::handleKeyEvent<Driver::AsynchronousDelivery>(window, QEvent::KeyRelease, key, modifiers,
                                                         text);
    if (key == Qt::Key_Menu) {
        const QPoint corner;
        Driver::handleContextMenuEvent(window, false, corner, window->mapToGlobal(corner),
                                       modifiers);
    }
}

void Finger::Type(QWindow* window, const QString& text)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character == '\n') {
            PressKey(window, Qt::Key_Return, Qt::NoModifier, "\r");
        } else if (character.isHighSurrogate() && i + 1 < text.size()) {
            PressKey(window, Qt::Key_unknown, Qt::NoModifier, text.mid(i, 2));
            ++i;
        } else {
            // A key's code is that of its upper-case character.
            PressKey(window, character.toUpper().unicode(),
                     character.isUpper() ? Qt::ShiftModifier : Qt::NoModifier, character);
        }
    }
}

bool Finger::IsOnItsWay()
{
    return Driver::windowSystemEventsQueued() > 0;
}
