#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QLocalServer>
#include <QObject>
#include <QPointer>

#include <functional>

class QLocalSocket;
class QWidget;

/// Serves requests on a local socket. A request is one line with a JSON object, and so is its
/// answer.
///
/// A request has "do", the arguments of "do", and an "id" that the answer repeats. The answer has
/// "value", or "error" when the request failed.
///
/// Requests are served in order, when the event loop is about to wait. At that moment all earlier
/// input has had its effect. No slot of the program is running, except one that runs an event loop,
/// such as that of a message box. Input only joins the program's queue: a tap that opens a box is
/// answered at once.
class OperatorServer : public QObject
{
    Q_OBJECT

public:
    explicit OperatorServer(const QString& socketPath);

protected:
    void customEvent(QEvent* event) override;

private slots:
    void OnNewConnection();
    void OnAboutToWait();

private:
    struct Request {
        QPointer<QLocalSocket> from;
        QJsonObject wish;
        QString error;
        /// Started with the request, for requests that take several turns.
        QElapsedTimer begun;
    };

    /// The result of a request: a value or an error, and what to do after the answer.
    struct Outcome {
        QJsonValue value = true;
        QString error;
        std::function<void()> then;
        bool isPending = false;
    };

    /// What is known about the events that the program has posted to itself.
    enum class Posted { Unknown, Waited, TakenUp };

    void ReadLines(QLocalSocket* socket);
    void Answer(const Request& request, const Outcome& outcome);
    Outcome Serve(Request& request);

    static Outcome Failure(const QString& error);
    static Outcome Idle(Request& request);
    static Outcome List(Request& request);
    static Outcome PressBoxButton(Request& request);
    static Outcome PressKey(Request& request);
    static Outcome ListPages(Request& request);
    static Outcome OpenPage(Request& request);
    static Outcome Resize(Request& request);
    static Outcome Screenshot(Request& request);

    static Outcome Read(QWidget* widget, Request& request);
    static Outcome Tap(QWidget* widget, Request& request);
    static Outcome TapTab(QWidget* widget, Request& request);
    static Outcome Type(QWidget* field, Request& request);
    static Outcome TurnWheel(QWidget* widget, Request& request);
    static Outcome Choose(QWidget* widget, Request& request);

    QLocalServer m_server;
    QList<Request> m_waiting;
    Posted m_posted = Posted::Unknown;
};
