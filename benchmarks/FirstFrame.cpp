#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>

#include <cstdio>
#include <ctime>

namespace
{

double NowMs(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Prints, once the first window stands on the screen of the platform vnc or linuxfb, the processor
/// time that the process has spent since it was started, in milliseconds, and the steady clock.
class FirstFrame : public QObject
{
    Q_OBJECT

public:
    FirstFrame() { qApp->installEventFilter(this); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Expose) {
            m_isPainted = true;
        } else if (event->type() == QEvent::UpdateRequest && m_isPainted &&
                   watched->inherits("QFbScreen")) {
            // The screen takes over what windows have painted in the handling of this event.
            qApp->removeEventFilter(this);
            QMetaObject::invokeMethod(this, &FirstFrame::Print, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void Print()
    {
        std::printf("%f %f\n", NowMs(CLOCK_PROCESS_CPUTIME_ID), NowMs(CLOCK_MONOTONIC));
        std::fflush(stdout);
    }

    bool m_isPainted = false;
};

} // namespace

/// Loads FirstFrame into a program: QT_QPA_GENERIC_PLUGINS=first-frame.
class FirstFramePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "first-frame.json")

public:
    QObject* create(const QString& /*name*/, const QString& /*parameters*/) override
    {
        return new FirstFrame;
    }
};

#include "FirstFrame.moc"
