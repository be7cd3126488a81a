#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "tests/CanBus.h"
#include "tests/Operate.h"

#include <QDir>
#include <QEventLoop>
#include <QQuickWidget>

#include <utility>

namespace
{

/// The nanoseconds that each thread of this process has run, by its name and number.
QMap<QString, qint64> RunTimes()
{
    QMap<QString, qint64> times;
    const QStringList threads =
        QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& thread : threads) {
        const QString folder = "/proc/self/task/" + thread;
        QFile name(folder + "/comm");
        QFile schedule(folder + "/schedstat");
        // A thread may have ended meanwhile.
        if (name.open(QIODevice::ReadOnly) && schedule.open(QIODevice::ReadOnly)) {
            times[name.readAll().trimmed() + ' ' + thread] =
                schedule.readAll().split(' ').value(0).toLongLong();
        }
    }
    return times;
}

/// Lets the event loop run without waking it up, as QTest::qWait() would.
void Rest(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

/// The window while nobody touches it. A page that spins or repaints without end looks as it
/// should, but takes the time of the check that runs next.
class AtRestTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void cleanupTestCase();

    void pageTakesNoTime_data();
    void pageTakesNoTime();
    void openKeyboardTakesNoTime();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The repaints since the last call.
    int TakeRepaints() { return std::exchange(m_repaints, 0); }
    QString WhatRunsInASecond();
    void ComesToRest();

    MoskTester* m_window = nullptr;
    CanBus m_bus;
    int m_repaints = 0;
};

void AtRestTest::initTestCase()
{
    ApplyLook();
    Board::Become("language english\nport ttyS2 nothing\ncamera video0 #2060c0 Front camera\n");
    Speak("english");
    g_mainwnd = new MoskTester;
    m_window = g_mainwnd;
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    qApp->installEventFilter(this);
}

void AtRestTest::cleanup()
{
    m_window->GetBody()->OpenPage(BodyWidget::NoPage);
}

void AtRestTest::cleanupTestCase()
{
    delete m_window;
    g_mainwnd = nullptr;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool AtRestTest::eventFilter(QObject* /*watched*/, QEvent* event)
{
    m_repaints += event->type() == QEvent::UpdateRequest ? 1 : 0;
    return false;
}

/// The threads that take more than a tenth of a second of processor time in the next second, and
/// the repaints if there are more than a blinking cursor needs. Empty when the window is at rest.
QString AtRestTest::WhatRunsInASecond()
{
    QStringList busy;
    const QMap<QString, qint64> before = RunTimes();
    TakeRepaints();
    Rest(1000);
    const QMap<QString, qint64> after = RunTimes();
    for (auto thread = after.begin(); thread != after.end(); ++thread) {
        const qint64 ms = (thread.value() - before.value(thread.key())) / 1000000;
        if (ms > 100) {
            busy.append(QString("%1: %2 ms").arg(thread.key()).arg(ms));
        }
    }
    const int repaints = TakeRepaints();
    if (repaints > 8) {
        busy.append(QString("%1 repaints").arg(repaints));
    }
    return busy.join(", ");
}

/// Fails unless the window comes to rest within some seconds: what was just opened may still load.
void AtRestTest::ComesToRest()
{
    QString running;
    for (int i = 0; i < 5; ++i) {
        running = WhatRunsInASecond();
        if (running.isEmpty()) {
            return;
        }
    }
    QFAIL(qPrintable(running));
}

void AtRestTest::pageTakesNoTime_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("button");

    for (const Page& page : allPages) {
        QTest::newRow(page.name) << int(page.id) << QString();
    }
    QTest::newRow("serial port open") << int(BodyWidget::SerialPage) << "btnOpenCom";
    QTest::newRow("silent bus open") << int(BodyWidget::CanPage) << "btnOpenCom";
    QTest::newRow("camera opened and closed") << int(BodyWidget::CameraPage) << "btnclose";
}

void AtRestTest::pageTakesNoTime()
{
    QFETCH(int, page);
    QFETCH(QString, button);
    m_window->GetBody()->OpenPage(page);
    if (button == "btnclose") {
        Press(m_window, "btnopen");
    }
    if (!button.isEmpty()) {
        Press(m_window, button);
    }
    ComesToRest();
}

void AtRestTest::openKeyboardTakesNoTime()
{
    m_window->GetBody()->OpenPage(BodyWidget::BasicPage);
    QCoreApplication::processEvents();
    auto* field = m_window->findChild<QLineEdit*>();
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {},
                      field->mapTo(m_window, field->rect().center()));
    QTRY_VERIFY(m_window->findChild<QQuickWidget*>() != nullptr &&
                m_window->findChild<QQuickWidget*>()->isVisible());

    ComesToRest();
}

int main(int argc, char** argv)
{
    // As in the program.
    qputenv("QT_IM_MODULE", "qtvirtualkeyboard");
    qputenv("QT_VIRTUALKEYBOARD_DESKTOP_DISABLE", "1");
    QApplication application(argc, argv);
    AtRestTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "AtRestTest.moc"
