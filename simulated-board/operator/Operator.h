#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QLocalSocket>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <functional>

/// Operates the running program from outside: presses, types and reads.
///
/// Widgets are named by selectors, which WidgetFinder.h describes. A call returns when the program
/// has handled it, after everything that was asked for before. So a text that is read after a press
/// is the result of the press. For work that a page does later, by a timer, use Idle() or
/// WaitForText(). A call that fails returns false or nothing, and Error() says why.
class Operator
{
public:
    explicit Operator(const QString& socketPath = DefaultSocketPath());

    /// Where the service's program listens, or that of the simulated board if this is one, or the
    /// value of OPERATOR_SOCKET.
    static QString DefaultSocketPath();

    /// Waits until the program is up and shows its first page.
    bool Connect(int limitMs = 15000);

    /// Why the last call failed; empty when it did not.
    QString Error() const { return m_error; }

    /// Whether the program still answers: false once it has gone, or a call has waited in vain.
    bool IsThere() const { return m_isThere; }

    /// Calls do not wait any longer once `isStopped` says so.
    void SetStop(const std::function<bool()>& isStopped) { m_isStopped = isStopped; }

    /// How long calls wait for the program. By default longer than the longest check, which takes
    /// 30 s.
    void SetLimit(int limitMs) { m_limit = limitMs; }

    QString Text(const QString& widget);
    QVariant Property(const QString& widget, const QString& property);
    QStringList Items(const QString& widget);
    QList<QStringList> Cells(const QString& widget);
    /// How many widgets a selector matches.
    int Count(const QString& widget);
    /// Class, name, position, state and text of the widgets that a selector matches, or of all
    /// widgets.
    QJsonArray List(const QString& widget = QString());

    bool Click(const QString& widget);
    bool ClickAt(const QString& widget, const QPoint& place);
    bool ClickTab(const QString& widget, int index);
    /// Turns a mouse's wheel over a widget, by notches; away from the user if positive.
    bool TurnWheel(const QString& widget, int notches);
    /// Chooses an item of a combo box.
    bool Choose(const QString& widget, int index);
    bool Choose(const QString& widget, const QString& item);
    /// Replaces the text of a field by typing.
    bool SetText(const QString& widget, const QString& text);
    /// Presses a key, named as in shortcuts: "Return", "Ctrl+A".
    bool PressKey(const QString& key);
    /// Presses a button of the open box, by its role ("Yes", "No", "Ok") or the text on it.
    bool PressBoxButton(const QString& button);
    bool OpenPage(int id);
    bool OpenPage(const QString& name);
    /// The program's pages, each with its "id", its "name" and its "tab": its place in the menu,
    /// or -1.
    QJsonArray Pages();
    bool Resize(int width, int height);

    /// Waits until the program has no more work to do.
    bool Idle();

    /// The whole screen as a PNG file's bytes.
    QByteArray Screenshot();
    /// Writes the whole screen to a PNG file.
    bool Screenshot(const QString& path);

    /// Waits until a widget shows a text, or a text that `isWanted` accepts.
    bool WaitForText(const QString& widget, const QString& text, int limitMs = 5000);
    bool WaitForText(const QString& widget, const std::function<bool(const QString&)>& isWanted,
                     int limitMs = 5000);

    /// Sends one request and returns its value; undefined on failure.
    QJsonValue Ask(QJsonObject wish);

private:
    bool Do(const QJsonObject& wish);
    QJsonValue Fail(const QString& error);
    QByteArray ReadLine(int limitMs);

    QString m_socketPath;
    QLocalSocket m_socket;
    QString m_error;
    std::function<bool()> m_isStopped;
    bool m_isThere = false;
    int m_limit = 35000;
    int m_lastId = 0;
};
