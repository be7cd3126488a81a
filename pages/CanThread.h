#pragma once

#include <QThread>

#include <atomic>

/// Polls a CAN socket and hands each frame on as text. It takes one frame in 10 ms; frames that
/// come faster queue up in the socket rather than flooding the GUI.
class CanThread : public QThread
{
    Q_OBJECT

public:
    /// `socket` stays its opener's, who closes it after stop().
    CanThread(int socket, QObject* parent);

    /// Ends the thread and waits until it has ended.
    void stop();

signals:
    void message(QString text);

protected:
    void run() override;

private:
    int m_socket;
    std::atomic<bool> m_isRunning{true};
};
