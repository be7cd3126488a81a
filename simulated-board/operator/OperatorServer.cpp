#include "simulated-board/operator/OperatorServer.h"

#include "simulated-board/operator/Finger.h"
#include "simulated-board/operator/WidgetFinder.h"
#include "simulated-board/operator/WidgetReader.h"

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QJsonDocument>
#include <QKeySequence>
#include <QLocalSocket>
#include <QMainWindow>
#include <QMap>
#include <QMessageBox>
#include <QMetaEnum>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <climits>

namespace
{

/// In ms. Longer than the timers by which the program puts work off to the next turn.
const int settlingTime = 10;
const int longestLine = 1 << 20;

/// Why a finger at that place of the widget would not reach it; empty when it would reach it.
QString WhyOutOfReach(const QWidget* widget, const QPoint& place)
{
    if (!widget->isVisible()) {
        return "is hidden";
    }
    if (!widget->isEnabled()) {
        return "is disabled";
    }
    const QWidget* box = QApplication::activeModalWidget();
    if (box != nullptr && QApplication::activePopupWidget() == nullptr && widget->window() != box) {
        return "is behind a box";
    }
    const QWidget* there = QApplication::widgetAt(widget->mapToGlobal(place));
    if (there == nullptr) {
        return "lies outside the screen";
    }
    if (there != widget && !widget->isAncestorOf(there)) {
        return QString("is covered by %1 \"%2\"")
            .arg(there->metaObject()->className(), there->objectName());
    }
    return {};
}

/// Taps a place of a widget. Returns the reason when it cannot.
QString TapAt(QWidget* widget, const QPoint& place)
{
    const QString reason = WhyOutOfReach(widget, place);
    if (reason.isEmpty()) {
        Finger::Tap(widget->window()->windowHandle(), widget->mapTo(widget->window(), place));
    }
    return reason;
}

QString Named(const QJsonObject& wish, const QString& reason)
{
    return QString("\"%1\" %2").arg(wish["widget"].toString(), reason);
}

/// A button of the front box, by its role ("Yes", "Ok") or its text.
QAbstractButton* FindBoxButton(const QWidget* box, const QString& name)
{
    const auto* message = qobject_cast<const QMessageBox*>(box);
    if (message != nullptr) {
        const int role = QMetaEnum::fromType<QMessageBox::StandardButtons>().keyToValue(
            name.toLatin1().constData());
        if (auto* button = message->button(static_cast<QMessageBox::StandardButton>(role))) {
            return button;
        }
    }
    const auto buttons = box->findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (button->text().remove('&') == name) {
            return button;
        }
    }
    return nullptr;
}

QMainWindow* FindMainWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* widget : windows) {
        if (auto* window = qobject_cast<QMainWindow*>(widget)) {
            return window;
        }
    }
    return nullptr;
}

} // namespace

OperatorServer::OperatorServer(const QString& socketPath)
{
    connect(&m_server, &QLocalServer::newConnection, this, &OperatorServer::OnNewConnection);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &OperatorServer::OnAboutToWait);
    // The program runs as root on a board: only root may drive it.
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    // A killed program leaves its socket file behind.
    QLocalServer::removeServer(socketPath);
    if (!m_server.listen(socketPath)) {
        qWarning("operator: cannot listen at \"%s\": %s", qPrintable(socketPath),
                 qPrintable(m_server.errorString()));
    }
}

void OperatorServer::OnNewConnection()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { ReadLines(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void OperatorServer::ReadLines(QLocalSocket* socket)
{
    while (socket->canReadLine()) {
        Request request;
        request.from = socket;
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(socket->readLine(), &error);
        if (document.isObject()) {
            request.wish = document.object();
        } else {
            request.error = "not a JSON object: " + error.errorString();
        }
        m_waiting.append(request);
    }
    if (socket->bytesAvailable() > longestLine) {
        Answer({socket, {}, {}, {}}, Failure("the line is too long"));
        socket->abort();
    }
}

void OperatorServer::OnAboutToWait()
{
    if (m_waiting.isEmpty() || Finger::IsOnItsWay()) {
        return;
    }
    if (m_posted != Posted::TakenUp) {
        // The program may have posted more events to itself. This event comes after them.
        if (m_posted == Posted::Unknown) {
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), INT_MIN);
            m_posted = Posted::Waited;
        }
        return;
    }
    m_posted = Posted::Unknown;
    // Remove it first: a request may run an event loop that calls this function again.
    Request request = m_waiting.takeFirst();
    const Outcome outcome = request.error.isEmpty() ? Serve(request) : Failure(request.error);
    if (outcome.isPending) {
        m_waiting.prepend(request);
        return;
    }
    Answer(request, outcome);
    if (outcome.then) {
        outcome.then();
    }
    if (!m_waiting.isEmpty()) {
        QAbstractEventDispatcher::instance()->wakeUp();
    }
}

void OperatorServer::customEvent(QEvent* /*event*/)
{
    m_posted = Posted::TakenUp;
}

void OperatorServer::Answer(const Request& request, const Outcome& outcome)
{
    if (request.from == nullptr) {
        return;
    }
    QJsonObject answer{{"id", request.wish["id"]}};
    if (outcome.error.isEmpty()) {
        answer["value"] = outcome.value;
    } else {
        answer["error"] = outcome.error;
    }
    request.from->write(QJsonDocument(answer).toJson(QJsonDocument::Compact) + '\n');
    request.from->flush();
}

OperatorServer::Outcome OperatorServer::Serve(Request& request)
{
    const QString what = request.wish["do"].toString();
    if (what == "idle") {
        return Idle(request);
    }
    if (what == "type") {
        return Type(request);
    }
    static const QMap<QString, Outcome (*)(const QJsonObject&)> s_services{
        {"text", Read},
        {"property", Read},
        {"items", Read},
        {"cells", Read},
        {"list", List},
        {"click", Tap},
        {"tab", TapTab},
        {"wheel", TurnWheel},
        {"choose", Choose},
        {"press", PressBoxButton},
        {"key", PressKey},
        {"page", OpenPage},
        {"pages", ListPages},
        {"resize", Resize},
        {"screenshot", Screenshot},
    };
    if (s_services.contains(what)) {
        return s_services[what](request.wish);
    }
    return Failure(QString("cannot do \"%1\"").arg(what));
}

OperatorServer::Outcome OperatorServer::Failure(const QString& error)
{
    Outcome outcome;
    outcome.error = error;
    return outcome;
}

/// Answers when the event loop has been idle for a while, timers included.
OperatorServer::Outcome OperatorServer::Idle(Request& request)
{
    Outcome outcome;
    if (!request.begun.isValid()) {
        request.begun.start();
    }
    const qint64 left = settlingTime - request.begun.elapsed();
    if (left > 0) {
        // Wakes the event loop, which otherwise might sleep on.
        QTimer::singleShot(static_cast<int>(left), Qt::PreciseTimer, qApp, [] {});
        outcome.isPending = true;
    }
    return outcome;
}

/// Taps the field, then types the text in place of the old one.
OperatorServer::Outcome OperatorServer::Type(Request& request)
{
    Outcome outcome;
    QWidget* field = WidgetFinder::Find(request.wish["widget"].toString(), &outcome.error);
    if (field == nullptr) {
        return outcome;
    }
    if (!request.begun.isValid()) {
        request.begun.start();
        const QString reason = TapAt(field, field->rect().center());
        outcome.error = reason.isEmpty() ? QString() : Named(request.wish, reason);
        outcome.isPending = reason.isEmpty();
        return outcome;
    }
    // The focus of the window. The application has none while a keyboard's window is in front.
    const QWidget* focused = field->window()->focusWidget();
    if (focused == nullptr || (focused != field && !field->isAncestorOf(focused))) {
        return Failure(Named(request.wish, "does not take the focus"));
    }
    QWindow* window = field->window()->windowHandle();
    Finger::PressKey(window, Qt::Key_A, Qt::ControlModifier, QChar(1));
    Finger::PressKey(window, Qt::Key_Delete, Qt::NoModifier, QChar(0x7f));
    Finger::Type(window, request.wish["text"].toString());
    return outcome;
}

OperatorServer::Outcome OperatorServer::Read(const QJsonObject& wish)
{
    Outcome outcome;
    const QWidget* widget = WidgetFinder::Find(wish["widget"].toString(), &outcome.error);
    if (widget == nullptr) {
        return outcome;
    }
    const QString what = wish["do"].toString();
    if (what == "text") {
        outcome.value = WidgetReader::Text(widget);
    } else if (what == "items") {
        outcome.value = WidgetReader::Items(widget);
    } else if (what == "cells") {
        outcome.value = WidgetReader::Cells(widget);
        if (outcome.value.isUndefined()) {
            return Failure(Named(wish, "is no table"));
        }
    } else {
        outcome.value = WidgetReader::Property(widget, wish["property"].toString());
        if (outcome.value.isUndefined()) {
            return Failure(
                Named(wish, QString("has no property \"%1\"").arg(wish["property"].toString())));
        }
    }
    return outcome;
}

OperatorServer::Outcome OperatorServer::List(const QJsonObject& wish)
{
    Outcome outcome;
    QJsonArray list;
    const auto widgets = WidgetFinder::FindAll(wish["widget"].toString(), &outcome.error);
    for (const QWidget* widget : widgets) {
        list.append(WidgetReader::Describe(widget));
    }
    outcome.value = list;
    return outcome;
}

OperatorServer::Outcome OperatorServer::Tap(const QJsonObject& wish)
{
    Outcome outcome;
    QWidget* widget = WidgetFinder::Find(wish["widget"].toString(), &outcome.error);
    if (widget == nullptr) {
        return outcome;
    }
    const QPoint centre = widget->rect().center();
    const QPoint place(wish["x"].toInt(centre.x()), wish["y"].toInt(centre.y()));
    const QString reason = TapAt(widget, place);
    if (!reason.isEmpty()) {
        return Failure(Named(wish, reason));
    }
    return outcome;
}

OperatorServer::Outcome OperatorServer::TapTab(const QJsonObject& wish)
{
    Outcome outcome;
    QWidget* widget = WidgetFinder::Find(wish["widget"].toString(), &outcome.error);
    if (widget == nullptr) {
        return outcome;
    }
    const auto* tabs = qobject_cast<QTabWidget*>(widget);
    auto* bar = tabs != nullptr ? tabs->tabBar() : qobject_cast<QTabBar*>(widget);
    if (bar == nullptr) {
        return Failure(Named(wish, "has no tabs"));
    }
    const int index = wish["index"].toInt(-1);
    if (index < 0 || index >= bar->count()) {
        return Failure(Named(wish, QString("has %1 tabs").arg(bar->count())));
    }
    const QString reason = TapAt(bar, bar->tabRect(index).center());
    if (!reason.isEmpty()) {
        return Failure(Named(wish, reason));
    }
    return outcome;
}

OperatorServer::Outcome OperatorServer::TurnWheel(const QJsonObject& wish)
{
    Outcome outcome;
    QWidget* widget = WidgetFinder::Find(wish["widget"].toString(), &outcome.error);
    if (widget == nullptr) {
        return outcome;
    }
    const QPoint centre = widget->rect().center();
    const QString reason = WhyOutOfReach(widget, centre);
    if (!reason.isEmpty()) {
        return Failure(Named(wish, reason));
    }
    Finger::TurnWheel(widget->window()->windowHandle(), widget->mapTo(widget->window(), centre),
                      wish["notches"].toInt());
    return outcome;
}

OperatorServer::Outcome OperatorServer::Choose(const QJsonObject& wish)
{
    Outcome outcome;
    QWidget* widget = WidgetFinder::Find(wish["widget"].toString(), &outcome.error);
    if (widget == nullptr) {
        return outcome;
    }
    QPointer<QComboBox> box = qobject_cast<QComboBox*>(widget);
    if (box == nullptr) {
        return Failure(Named(wish, "is no combo box"));
    }
    const QString reason = WhyOutOfReach(box, box->rect().center());
    if (!reason.isEmpty()) {
        return Failure(Named(wish, reason));
    }
    const QJsonValue item = wish["item"];
    const int index = item.isString() ? box->findText(item.toString()) : item.toInt(-1);
    if (index < 0 || index >= box->count()) {
        return Failure(Named(wish, "has no such item"));
    }
    outcome.then = [box, index] {
        box->setCurrentIndex(index);
        // This signal stands for an operator's choice, even of the item that is already chosen.
        if (!box.isNull()) {
            QMetaObject::invokeMethod(box, "activated", Q_ARG(int, index));
        }
    };
    return outcome;
}

OperatorServer::Outcome OperatorServer::PressBoxButton(const QJsonObject& wish)
{
    const QWidget* box = QApplication::activeModalWidget();
    if (box == nullptr) {
        return Failure("no box is open");
    }
    const QString name = wish["button"].toString();
    QAbstractButton* button = FindBoxButton(box, name);
    if (button == nullptr) {
        return Failure(QString("the box has no button \"%1\"").arg(name));
    }
    const QString reason = TapAt(button, button->rect().center());
    if (!reason.isEmpty()) {
        return Failure(QString("the button \"%1\" %2").arg(name, reason));
    }
    return {};
}

OperatorServer::Outcome OperatorServer::PressKey(const QJsonObject& wish)
{
    const QKeySequence keys(wish["key"].toString());
    QWindow* window = QGuiApplication::focusWindow();
    if (keys.isEmpty() || keys[0] == Qt::Key_unknown) {
        return Failure(QString("no key \"%1\"").arg(wish["key"].toString()));
    }
    if (window == nullptr) {
        return Failure("no window has the focus");
    }
    const int modifiers = keys[0] & static_cast<int>(Qt::KeyboardModifierMask);
    Finger::PressKey(window, keys[0] & ~modifiers, Qt::KeyboardModifiers(modifiers), {});
    return {};
}

OperatorServer::Outcome OperatorServer::ListPages(const QJsonObject& /*wish*/)
{
    Outcome outcome;
    if (QWidget* body = WidgetFinder::Find("bodyWidget", &outcome.error)) {
        QVariantList pages;
        QMetaObject::invokeMethod(body, "Pages", Q_RETURN_ARG(QVariantList, pages));
        outcome.value = QJsonArray::fromVariantList(pages);
    }
    return outcome;
}

/// Opens a page, named by its id or its name.
OperatorServer::Outcome OperatorServer::OpenPage(const QJsonObject& wish)
{
    Outcome outcome;
    const QPointer<QWidget> body = WidgetFinder::Find("bodyWidget", &outcome.error);
    if (body == nullptr) {
        return outcome;
    }
    int page = wish["page"].toInt(-1);
    if (wish["page"].isString()) {
        const QJsonArray pages = ListPages(wish).value.toArray();
        const auto named =
            std::find_if(pages.begin(), pages.end(),
                         [&wish](const QJsonValue& each) { return each["name"] == wish["page"]; });
        if (named == pages.end()) {
            return Failure(QString("there is no page \"%1\"").arg(wish["page"].toString()));
        }
        page = (*named)["id"].toInt();
    } else if (!wish["page"].isDouble()) {
        return Failure("\"page\" is no number and no name");
    }
    // If a page is deleted while its own box runs an event loop, the program crashes.
    if (QApplication::activeModalWidget() != nullptr) {
        return Failure("a box is open");
    }
    outcome.then = [body, page] {
        QMetaObject::invokeMethod(body, "OpenPage", Qt::DirectConnection, Q_ARG(int, page));
    };
    return outcome;
}

OperatorServer::Outcome OperatorServer::Resize(const QJsonObject& wish)
{
    QMainWindow* window = FindMainWindow();
    const QSize size(wish["width"].toInt(), wish["height"].toInt());
    if (window == nullptr || size.isEmpty()) {
        return Failure("no main window, or no size");
    }
    window->resize(size);
    return {};
}

OperatorServer::Outcome OperatorServer::Screenshot(const QJsonObject& /*wish*/)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!WidgetReader::PaintScreen().save(&buffer, "PNG")) {
        return Failure("the picture cannot be saved");
    }
    Outcome outcome;
    outcome.value = QString::fromLatin1(png.toBase64());
    return outcome;
}
