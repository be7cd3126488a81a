#include "simulated-board/operator/Operator.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QThread>

namespace
{

/// How often to look for changes that the program does not report, in ms.
const int pollMs = 20;

} // namespace

Operator::Operator(const QString& socketPath) : m_socketPath(socketPath) {}

QString Operator::DefaultSocketPath()
{
    return qEnvironmentVariable("OPERATOR_SOCKET", QFile::exists("/run/board")
                                                       ? "/run/board/operator"
                                                       : "/run/mosktest/operator");
}

bool Operator::Connect(int limitMs)
{
    const QDeadlineTimer limit(limitMs);
    m_socket.abort();
    while (true) {
        m_socket.connectToServer(m_socketPath);
        if (m_socket.waitForConnected(pollMs) && Property("bodyWidget", "visible").toBool() &&
            Idle()) {
            return true;
        }
        if (limit.hasExpired() || (m_isStopped && m_isStopped())) {
            Fail(QString("the program is not up at %1 after %2 ms: %3")
                     .arg(m_socketPath)
                     .arg(limitMs)
                     .arg(m_socket.state() == QLocalSocket::ConnectedState
                              ? m_error
                              : m_socket.errorString()));
            return false;
        }
        m_socket.abort();
        QThread::msleep(pollMs);
    }
}

QString Operator::Text(const QString& widget)
{
    return Ask({{"do", "text"}, {"widget", widget}}).toString();
}

QVariant Operator::Property(const QString& widget, const QString& property)
{
    return Ask({{"do", "property"}, {"widget", widget}, {"property", property}}).toVariant();
}

QStringList Operator::Items(const QString& widget)
{
    return Ask({{"do", "items"}, {"widget", widget}}).toVariant().toStringList();
}

QList<QStringList> Operator::Cells(const QString& widget)
{
    QList<QStringList> rows;
    const QJsonArray cells = Ask({{"do", "cells"}, {"widget", widget}}).toArray();
    for (const QJsonValue& row : cells) {
        rows.append(row.toVariant().toStringList());
    }
    return rows;
}

int Operator::Count(const QString& widget)
{
    return List(widget).size();
}

QJsonArray Operator::List(const QString& widget)
{
    return Ask({{"do", "list"}, {"widget", widget}}).toArray();
}

bool Operator::Click(const QString& widget)
{
    return Do({{"do", "click"}, {"widget", widget}});
}

bool Operator::ClickAt(const QString& widget, const QPoint& place)
{
    return Do({{"do", "click"}, {"widget", widget}, {"x", place.x()}, {"y", place.y()}});
}

bool Operator::ClickTab(const QString& widget, int index)
{
    return Do({{"do", "tab"}, {"widget", widget}, {"index", index}});
}

bool Operator::Choose(const QString& widget, int index)
{
    return Do({{"do", "choose"}, {"widget", widget}, {"item", index}});
}

bool Operator::Choose(const QString& widget, const QString& item)
{
    return Do({{"do", "choose"}, {"widget", widget}, {"item", item}});
}

bool Operator::SetText(const QString& widget, const QString& text)
{
    return Do({{"do", "type"}, {"widget", widget}, {"text", text}});
}

bool Operator::TurnWheel(const QString& widget, int notches)
{
    return Do({{"do", "wheel"}, {"widget", widget}, {"notches", notches}});
}

bool Operator::PressKey(const QString& key)
{
    return Do({{"do", "key"}, {"key", key}});
}

bool Operator::PressBoxButton(const QString& button)
{
    return Do({{"do", "press"}, {"button", button}});
}

bool Operator::OpenPage(int id)
{
    return Do({{"do", "page"}, {"page", id}});
}

bool Operator::OpenPage(const QString& name)
{
    return Do({{"do", "page"}, {"page", name}});
}

QJsonArray Operator::Pages()
{
    return Ask({{"do", "pages"}}).toArray();
}

bool Operator::Resize(int width, int height)
{
    return Do({{"do", "resize"}, {"width", width}, {"height", height}});
}

bool Operator::Idle()
{
    return Do({{"do", "idle"}});
}

QByteArray Operator::Screenshot()
{
    return QByteArray::fromBase64(Ask({{"do", "screenshot"}}).toString().toLatin1());
}

bool Operator::Screenshot(const QString& path)
{
    const QByteArray png = Screenshot();
    if (png.isEmpty()) {
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(png) != png.size() || !file.flush()) {
        Fail(QString("cannot write %1: %2").arg(path, file.errorString()));
        return false;
    }
    return true;
}

bool Operator::WaitForText(const QString& widget, const QString& text, int limitMs)
{
    const auto isText = [&text](const QString& shown) { return shown == text; };
    if (WaitForText(widget, isText, limitMs)) {
        return true;
    }
    m_error += QString(", not \"%1\"").arg(text);
    return false;
}

bool Operator::WaitForText(const QString& widget,
                           const std::function<bool(const QString&)>& isWanted, int limitMs)
{
    const QDeadlineTimer limit(limitMs);
    while (true) {
        const QString shown = Text(widget);
        if (m_error.isEmpty() && isWanted(shown)) {
            return true;
        }
        if (limit.hasExpired() || !m_isThere || (m_isStopped && m_isStopped())) {
            if (m_error.isEmpty()) {
                Fail(QString("\"%1\" shows \"%2\" after %3 ms").arg(widget, shown).arg(limitMs));
            }
            return false;
        }
        QThread::msleep(pollMs);
    }
}

bool Operator::Do(const QJsonObject& wish)
{
    return !Ask(wish).isUndefined();
}

QJsonValue Operator::Ask(QJsonObject wish)
{
    m_error.clear();
    wish["id"] = ++m_lastId;
    m_socket.write(QJsonDocument(wish).toJson(QJsonDocument::Compact) + '\n');
    m_socket.flush();

    const QDeadlineTimer limit(m_limit);
    while (true) {
        const QByteArray line = ReadLine(static_cast<int>(limit.remainingTime()));
        if (line.isEmpty()) {
            m_isThere = false;
            return Fail(m_socket.state() == QLocalSocket::ConnectedState
                            ? QString("no answer to \"%1\" after %2 ms")
                                  .arg(wish["do"].toString())
                                  .arg(m_limit)
                            : QString("the program has gone"));
        }
        const QJsonObject answer = QJsonDocument::fromJson(line).object();
        // The answer to an earlier request that timed out may still come.
        if (answer["id"].toInt() != m_lastId) {
            continue;
        }
        m_isThere = true;
        return answer.contains("error") ? Fail(answer["error"].toString()) : answer["value"];
    }
}

QJsonValue Operator::Fail(const QString& error)
{
    m_error = error;
    return QJsonValue::Undefined;
}

/// Reads one line from the program; empty when none comes in time.
QByteArray Operator::ReadLine(int limitMs)
{
    const QDeadlineTimer limit(limitMs);
    const auto isOver = [&] {
        return limit.hasExpired() || m_socket.state() != QLocalSocket::ConnectedState ||
               (m_isStopped && m_isStopped());
    };
    while (!m_socket.canReadLine()) {
        // In short turns, so that a stop is noticed.
        const qint64 turn = qMin<qint64>(limit.remainingTime(), 200);
        if (!m_socket.waitForReadyRead(static_cast<int>(turn)) && isOver()) {
            return {};
        }
    }
    return m_socket.readLine();
}
