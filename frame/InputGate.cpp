#include "frame/InputGate.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace
{

bool IsInput(QEvent::Type event)
{
    switch (event) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return true;
    default:
        return false;
    }
}

/// Whether a list is just being closed. It still counts as visible, but no longer as open.
bool IsListClosing()
{
    if (QApplication::activePopupWidget() != nullptr) {
        return false;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->windowType() == Qt::Popup && window->isVisible();
    });
}

} // namespace

InputGate::InputGate(QObject* parent) : QObject(parent)
{
    qApp->installEventFilter(this);
}

bool InputGate::eventFilter(QObject* watched, QEvent* event)
{
    // Sent right before the platform shows the window.
    if (event->type() == QEvent::Show && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->isWindow()) {
        Close();
    }
    if (event->type() == QEvent::ContextMenu) {
        return true;
    }
    if (!watched->isWindowType() || !IsInput(event->type())) {
        return false;
    }
    // Input reaches a window first, and the window passes it on to its widgets. A touch that no
    // widget takes becomes a mouse's input, and is dropped then.
    return m_isClosed || IsListClosing();
}

/// Closes the gate until the next turn of the event loop. The window is shown by then.
void InputGate::Close()
{
    m_isClosed = true;
    QMetaObject::invokeMethod(this, [this] { m_isClosed = false; }, Qt::QueuedConnection);
}
