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

/// Serves the outside on a local socket: one JSON object a line, answered by one line each.
///
/// A request carries "do", what "do" needs, and an "id" that the answer repeats. The answer carries
/// "value", or "error" where the request could not be met.
///
/// Requests are served in order, when the event loop is about to wait. At that moment no slot of
/// the program is half done, unless it runs a loop of its own, as a message box does, and all
/// earlier input has had its effect. Input only joins the program's queue: a tap that opens a box
/// is answered at once.
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
        /// Runs since the request was begun, for those that take several turns.
        QElapsedTimer begun;
    };

    /// What a request comes to: a value or an error, and what is left to do after the answer.
    struct Outcome {
        QJsonValue value = true;
        QString error;
        std::function<void()> then;
        bool isPending = false;
    };

    /// What is known of the events that the program has posted to itself.
    enum class Posted { Unknown, Waited, TakenUp };

    void ReadLines(QLocalSocket* socket);
    void Answer(const Request& request, const Outcome& outcome);
    Outcome Serve(Request& request);

    static Outcome Failure(const QString& error);
    static Outcome Idle(Request& request);
    static Outcome Type(Request& request);
    static Outcome Read(const QJsonObject& wish);
    static Outcome List(const QJsonObject& wish);
    static Outcome Tap(const QJsonObject& wish);
    static Outcome TapTab(const QJsonObject& wish);
    static Outcome Choose(const QJsonObject& wish);
    static Outcome PressBoxButton(const QJsonObject& wish);
    static Outcome PressKey(const QJsonObject& wish);
    static Outcome OpenPage(const QJsonObject& wish);
    static Outcome Resize(const QJsonObject& wish);
    static Outcome Screenshot();

    QLocalServer m_server;
    QList<Request> m_waiting;
    Posted m_posted = Posted::Unknown;
};
