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
    static const QMap<QString, Outcome (*)(Request&)> s_services{
        {"idle", Idle},
        {"list", List},
        {"press", PressBoxButton},
        {"key", PressKey},
        {"page", OpenPage},
        {"pages", ListPages},
        {"resize", Resize},
        {"screenshot", Screenshot},
    };
    static const QMap<QString, Outcome (*)(QWidget*, Request&)> s_servicesAtAWidget{
        {"text", Read},  {"property", Read},   {"items", Read},
        {"cells", Read}, {"click", Tap},       {"tab", TapTab},
        {"type", Type},  {"wheel", TurnWheel}, {"choose", Choose},
    };
    const QString what = request.wish["do"].toString();
    if (s_services.contains(what)) {
        return s_services[what](request);
    }
    if (!s_servicesAtAWidget.contains(what)) {
        return Failure(QString("cannot do \"%1\"").arg(what));
    }
    Outcome outcome;
    const QString selector = request.wish["widget"].toString();
    if (QWidget* widget = WidgetFinder::Find(selector, &outcome.error)) {
        outcome = s_servicesAtAWidget[what](widget, request);
        if (!outcome.error.isEmpty()) {
            outcome.error = QString("\"%1\" %2").arg(selector, outcome.error);
        }
    }
    return outcome;
}

/// What has gone wrong; nothing when the error is empty.
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
OperatorServer::Outcome OperatorServer::Type(QWidget* field, Request& request)
{
    if (!request.begun.isValid()) {
        request.begun.start();
        Outcome outcome = Failure(TapAt(field, field->rect().center()));
        outcome.isPending = outcome.error.isEmpty();
        return outcome;
    }
    // The focus of the window. The application has none while a keyboard's window is in front.
    const QWidget* focused = field->window()->focusWidget();
    if (focused == nullptr || (focused != field && !field->isAncestorOf(focused))) {
        return Failure("does not take the focus");
    }
    QWindow* window = field->window()->windowHandle();
    Finger::PressKey(window, Qt::Key_A, Qt::ControlModifier, QChar(1));
    Finger::PressKey(window, Qt::Key_Delete, Qt::NoModifier, QChar(0x7f));
    Finger::Type(window, request.wish["text"].toString());
    return {};
}

OperatorServer::Outcome OperatorServer::Read(QWidget* widget, Request& request)
{
    Outcome outcome;
    const QString what = request.wish["do"].toString();
    if (what == "text") {
        outcome.value = WidgetReader::Text(widget);
    } else if (what == "items") {
        outcome.value = WidgetReader::Items(widget);
    } else if (what == "cells") {
        outcome.value = WidgetReader::Cells(widget);
        outcome.error = outcome.value.isUndefined() ? "is no table" : "";
    } else {
        const QString property = request.wish["property"].toString();
        outcome.value = WidgetReader::Property(widget, property);
        if (outcome.value.isUndefined()) {
            outcome.error = QString("has no property \"%1\"").arg(property);
        }
    }
    return outcome;
}

OperatorServer::Outcome OperatorServer::List(Request& request)
{
    Outcome outcome;
    QJsonArray list;
    const auto widgets = WidgetFinder::FindAll(request.wish["widget"].toString(), &outcome.error);
    for (const QWidget* widget : widgets) {
        list.append(WidgetReader::Describe(widget));
    }
    outcome.value = list;
    return outcome;
}

OperatorServer::Outcome OperatorServer::Tap(QWidget* widget, Request& request)
{
    const QPoint centre = widget->rect().center();
    return Failure(
        TapAt(widget, {request.wish["x"].toInt(centre.x()), request.wish["y"].toInt(centre.y())}));
}

OperatorServer::Outcome OperatorServer::TapTab(QWidget* widget, Request& request)
{
    const auto* tabs = qobject_cast<QTabWidget*>(widget);
    auto* bar = tabs != nullptr ? tabs->tabBar() : qobject_cast<QTabBar*>(widget);
    if (bar == nullptr) {
        return Failure("has no tabs");
    }
    const int index = request.wish["index"].toInt(-1);
    if (index < 0 || index >= bar->count()) {
        return Failure(QString("has %1 tabs").arg(bar->count()));
    }
    return Failure(TapAt(bar, bar->tabRect(index).center()));
}

OperatorServer::Outcome OperatorServer::TurnWheel(QWidget* widget, Request& request)
{
    const QPoint centre = widget->rect().center();
    const QString reason = WhyOutOfReach(widget, centre);
    if (reason.isEmpty()) {
        Finger::TurnWheel(widget->window()->windowHandle(), widget->mapTo(widget->window(), centre),
                          request.wish["notches"].toInt());
    }
    return Failure(reason);
}

OperatorServer::Outcome OperatorServer::Choose(QWidget* widget, Request& request)
{
    QPointer<QComboBox> box = qobject_cast<QComboBox*>(widget);
    if (box == nullptr) {
        return Failure("is no combo box");
    }
    const QString text = request.wish["item"].toString();
    const int index = text.isEmpty() ? request.wish["item"].toInt(-1) : box->findText(text);
    Outcome outcome = Failure(WhyOutOfReach(box, box->rect().center()));
    if (!outcome.error.isEmpty()) {
        return outcome;
    }
    if (index < 0 || index >= box->count()) {
        return Failure("has no such item");
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

OperatorServer::Outcome OperatorServer::PressBoxButton(Request& request)
{
    const QWidget* box = QApplication::activeModalWidget();
    if (box == nullptr) {
        return Failure("no box is open");
    }
    const QString name = request.wish["button"].toString();
    QAbstractButton* button = FindBoxButton(box, name);
    if (button == nullptr) {
        return Failure(QString("the box has no button \"%1\"").arg(name));
    }
    const QString reason = TapAt(button, button->rect().center());
    return reason.isEmpty() ? Outcome()
                            : Failure(QString("the button \"%1\" %2").arg(name, reason));
}

OperatorServer::Outcome OperatorServer::PressKey(Request& request)
{
    const QKeySequence keys(request.wish["key"].toString());
    QWindow* window = QGuiApplication::focusWindow();
    if (keys.isEmpty() || keys[0] == Qt::Key_unknown) {
        return Failure(QString("no key \"%1\"").arg(request.wish["key"].toString()));
    }
    if (window == nullptr) {
        return Failure("no window has the focus");
    }
    const int modifiers = keys[0] & static_cast<int>(Qt::KeyboardModifierMask);
    Finger::PressKey(window, keys[0] & ~modifiers, Qt::KeyboardModifiers(modifiers), {});
    return {};
}

OperatorServer::Outcome OperatorServer::ListPages(Request& /*request*/)
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
OperatorServer::Outcome OperatorServer::OpenPage(Request& request)
{
    Outcome outcome;
    const QPointer<QWidget> body = WidgetFinder::Find("bodyWidget", &outcome.error);
    if (body == nullptr) {
        return outcome;
    }
    const QJsonValue wanted = request.wish["page"];
    int page = wanted.toInt(-1);
    if (wanted.isString()) {
        const QJsonArray pages = ListPages(request).value.toArray();
        const auto named =
            std::find_if(pages.begin(), pages.end(),
                         [&wanted](const QJsonValue& each) { return each["name"] == wanted; });
        if (named == pages.end()) {
            return Failure(QString("there is no page \"%1\"").arg(wanted.toString()));
        }
        page = (*named)["id"].toInt();
    } else if (!wanted.isDouble()) {
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

OperatorServer::Outcome OperatorServer::Resize(Request& request)
{
    QMainWindow* window = FindMainWindow();
    const QSize size(request.wish["width"].toInt(), request.wish["height"].toInt());
    if (window == nullptr || size.isEmpty()) {
        return Failure("no main window, or no size");
    }
    window->resize(size);
    return {};
}

OperatorServer::Outcome OperatorServer::Screenshot(Request& /*request*/)
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
