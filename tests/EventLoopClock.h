#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

/// Measures how long the event loop has been running. A stall, in which other programs or the
/// program's own slots keep the event loop from running, counts as 20 ms at most. So a busy machine
/// makes no wait much longer.
class EventLoopClock : public QObject
{
public:
    EventLoopClock()
    {
        m_timer.start(5, Qt::PreciseTimer, this);
        m_sinceTick.start();
    }

    /// Milliseconds since the clock was made.
    int Elapsed() const { return static_cast<int>(m_elapsed); }

private:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        m_elapsed += qMin<qint64>(m_sinceTick.restart(), 20);
    }

    QBasicTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_elapsed = 0;
};
