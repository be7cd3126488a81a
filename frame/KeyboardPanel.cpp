#include "frame/KeyboardPanel.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDebug>
#include <QEvent>
#include <QInputMethod>
#include <QMainWindow>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QTimer>
#include <QWindow>

namespace
{

/// The free space between a field and the keyboard, in pixels.
const int gap = 6;

/// Whether `object` is the area of `field` that shows its text. A scroll bar beside the text is
/// not.
bool IsTextOf(const QWidget* field, const QObject* object)
{
    const auto* area = qobject_cast<const QAbstractScrollArea*>(field);
    return field != nullptr && object == (area != nullptr ? area->viewport() : field);
}

/// Switches off word completion and automatic capitals for `field`. A completed word, an added
/// blank or a capital letter would spoil an address or a passphrase.
void TakeAsTyped(QWidget* field)
{
    const Qt::InputMethodHints hints = field->inputMethodHints();
    field->setInputMethodHints(hints | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
}

/// How far the window's content must move up so that `field` ends above `room`, in pixels. `line`
/// is the line of the field's text that is typed into. `field` and `line` are given for content
/// that has not moved. Of a field higher than `room` the top is shown; if `line` would then be
/// hidden, the content moves further.
int DistanceUp(const QRect& field, const QRect& line, int room)
{
    const int whole = field.bottom() + 1 + gap - room;
    const int enough = qMax(field.top() - gap, line.bottom() + 1 + gap - room);
    return qMax(0, qMin(whole, enough));
}

} // namespace

KeyboardPanel::KeyboardPanel(QMainWindow* window) : QObject(window), m_window(window)
{
    m_settle = new QTimer(this);
    m_settle->setSingleShot(true);
    connect(m_settle, &QTimer::timeout, this, &KeyboardPanel::OnSettled);

    const auto settle = QOverload<>::of(&QTimer::start);
    const QInputMethod* method = QGuiApplication::inputMethod();
    connect(method, &QInputMethod::visibleChanged, m_settle, settle);
    connect(method, &QInputMethod::cursorRectangleChanged, m_settle, settle);
    connect(qApp, &QGuiApplication::focusObjectChanged, m_settle, settle);
    qApp->installEventFilter(this);
}

/// The field that takes typed text while the window is active. Null when the focused widget takes
/// none, such as a read-only view.
QWidget* KeyboardPanel::FieldInFocus() const
{
    QWidget* widget = m_window->focusWidget();
    return widget != nullptr && widget->testAttribute(Qt::WA_InputMethodEnabled) ? widget : nullptr;
}

bool KeyboardPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn && watched == FieldInFocus()) {
        TakeAsTyped(FieldInFocus());
    }
    FollowFinger(watched, event->type());
    FollowContent(watched, event->type());
    return QObject::eventFilter(watched, event);
}

/// Knows whether a finger is down on the page, and settles things when it is lifted.
void KeyboardPanel::FollowFinger(const QObject* watched, QEvent::Type event)
{
    switch (event) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (watched->isWidgetType()) {
            m_fingerOnPage = watched != m_keys;
        }
        // On an X server without a window manager nobody else activates the window.
        if (watched == m_window->windowHandle() && !m_window->isActiveWindow()) {
            m_window->activateWindow();
        }
        break;
    case QEvent::MouseButtonRelease:
        m_fingerOnPage = false;
        m_tapped = m_tapped || IsTextOf(FieldInFocus(), watched);
        m_settle->start();
        break;
    case QEvent::WindowBlocked:
        // If a finger is still down, its release goes to the box that blocks the window.
        m_fingerOnPage = false;
        m_settle->start();
        break;
    default:
        break;
    }
}

/// Settles things when the content moves, changes its size or comes back from behind a box.
void KeyboardPanel::FollowContent(const QObject* watched, QEvent::Type event)
{
    if (m_keys == nullptr) {
        return;
    }
    switch (event) {
    case QEvent::Move:
        // The window's layout has moved the content back to the top.
        if (watched == m_window->centralWidget()) {
            MoveContent(m_distance);
        }
        m_settle->start();
        break;
    case QEvent::Resize:
    case QEvent::Hide:
    case QEvent::WindowUnblocked:
        m_settle->start();
        break;
    default:
        break;
    }
}

// Runs when the current event has been handled. Nothing moves while a finger is down on the page or
// a list is open: the release or the choice would go to another place.
void KeyboardPanel::OnSettled()
{
    if (m_fingerOnPage || QApplication::activePopupWidget() != nullptr) {
        return;
    }
    if (m_tapped && m_window->isActiveWindow()) {
        m_tapped = false;
        Open();
    }
    if (m_keys == nullptr) {
        return;
    }
    if (IsWanted()) {
        ShowBelow(FieldInFocus());
    } else {
        m_keys->hide();
        MoveContent(0);
    }
}

void KeyboardPanel::Open()
{
    if (FieldInFocus() == nullptr) {
        return;
    }
    if (!m_tried) {
        m_tried = true;
        Load();
        // The keys were loaded after the field got the focus, so they do not know of it.
        QGuiApplication::inputMethod()->update(Qt::ImQueryAll);
    }
    QGuiApplication::inputMethod()->show();
    if (m_keys != nullptr && !m_keys->rootObject()->property("active").toBool()) {
        Warn("the input method plug-in does not answer");
    }
}

void KeyboardPanel::Load()
{
    // The board's platform has no OpenGL. The keys are drawn just as fast in software.
    const QString software = "software";
    if (QQuickWindow::sceneGraphBackend() != software) {
        QQuickWindow::setSceneGraphBackend(software);
    }
    auto* keys = new QQuickWidget(m_window);
    keys->engine()->setOutputWarningsToStandardError(false);
    auto* component =
        new QQmlComponent(keys->engine(), QUrl("qrc:/keyboard/KeyboardPanel.qml"), keys);
    QObject* root = component->isReady() ? component->create() : nullptr;
    keys->engine()->setOutputWarningsToStandardError(true);
    if (root == nullptr) {
        Warn(component->errorString().simplified());
        delete keys;
        return;
    }
    keys->setObjectName("keyboardPanel");
    keys->setFocusPolicy(Qt::NoFocus);
    keys->setResizeMode(QQuickWidget::SizeRootObjectToView);
    keys->setContent(component->url(), component, root);
    keys->hide();
    connect(keys->rootObject(), SIGNAL(keysHeightChanged()), m_settle, SLOT(start()));
    m_keys = keys;
}

bool KeyboardPanel::IsWanted() const
{
    return FieldInFocus() != nullptr && QApplication::activeModalWidget() == nullptr &&
           m_keys->rootObject()->property("active").toBool();
}

void KeyboardPanel::ShowBelow(const QWidget* field)
{
    // The height of the keys follows from their width.
    QQuickItem* root = m_keys->rootObject();
    root->setWidth(m_window->width());
    const int height = qRound(root->property("keysHeight").toReal());
    const int room = m_window->height() - height;
    m_keys->setGeometry(0, room, m_window->width(), height);
    m_keys->raise();
    m_keys->show();

    const QWidget* content = m_window->centralWidget();
    const QRect whole(field->mapTo(content, QPoint(0, 0)), field->size());
    const QRect line = field->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    MoveContent(qMin(DistanceUp(whole, line.translated(whole.topLeft()) & whole, room), height));
}

void KeyboardPanel::MoveContent(int distance)
{
    m_distance = distance;
    m_window->centralWidget()->move(0, -distance);
}

void KeyboardPanel::Warn(const QString& reason)
{
    if (!m_warned) {
        m_warned = true;
        qWarning("No on-screen keyboard: %s", qPrintable(reason));
    }
}
