#include "frame/InputGate.h"

#include <QApplication>
#include <QTimer>
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

InputGate::InputGate(QObject* parent) : QObject(parent), m_later(new QTimer(this))
{
    // A timer, because PaintPage() lets no timer run: a tap must not change the page under a check.
    m_later->setSingleShot(true);
    connect(m_later, &QTimer::timeout, this, &InputGate::Deliver);
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
    if (m_isClosed) {
        return true;
    }
    if (event == m_delivered || (m_waiting.empty() && !IsListClosing())) {
        return false;
    }
    // A tap waits until the list is gone, and later taps behind it. A key that opened the same list
    // again would leave it open and hidden.
    if (const auto* tap = dynamic_cast<QMouseEvent*>(event)) {
        m_waiting.push_back({watched, std::make_unique<QMouseEvent>(*tap)});
        m_later->start();
    }
    return true;
}

/// Closes the gate until the next turn of the event loop. The window is shown by then.
void InputGate::Close()
{
    m_isClosed = true;
    m_waiting.clear();
    QMetaObject::invokeMethod(this, [this] { m_isClosed = false; }, Qt::QueuedConnection);
}

/// Delivers the taps that wait. If one of them shows a window, the others are dropped.
void InputGate::Deliver()
{
    while (!m_waiting.empty()) {
        const WaitingTap next = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (next.window != nullptr) {
            m_delivered = next.tap.get();
            QCoreApplication::sendEvent(next.window, next.tap.get());
        }
    }
    m_delivered = nullptr;
}
