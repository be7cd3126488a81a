#pragma once

#include <QThread>

#include <atomic>

/// Polls a CAN socket and emits each frame as text. It takes one frame every 10 ms. Frames that
/// come faster wait in the socket's queue, so that they do not flood the GUI.
class CanThread : public QThread
{
    Q_OBJECT

public:
    /// The caller keeps `socket`, and closes it after stop().
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
