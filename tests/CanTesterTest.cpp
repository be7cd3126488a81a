#include "pages/CanTester.h"

#include "instruments/ReceiveView.h"
#include "pages/CanThread.h"
#include "simulated-board/Board.h"
#include "tests/CanBus.h"
#include "tests/PageFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryFile>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/// Counts the entries of a folder of this process in /proc: its descriptors or its threads. A
/// thread that has just ended is still listed for a moment, so a count of threads may fall but must
/// not rise.
int Count(const char* what)
{
    return QDir(QString("/proc/self/") + what).entryList(QDir::AllEntries | QDir::System).size();
}

/// The number of this process's threads that receive from a bus. Qt names a thread after its class.
int ReceivingThreads()
{
    int count = 0;
    for (const QString& task :
         QDir("/proc/self/task").entryList(QDir::NoDotAndDotDot | QDir::Dirs)) {
        QFile name("/proc/self/task/" + task + "/comm");
        count += name.open(QIODevice::ReadOnly) && name.readAll() == "CanThread\n" ? 1 : 0;
    }
    return count;
}

/// A thread that reads one end of a socket pair, and the number of frames that it tells of.
struct Listener : QObject {
    Listener()
    {
        if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, ends) != 0) {
            qFatal("no socket pair");
        }
        thread = std::make_unique<CanThread>(ends[0], nullptr);
        // Counted in the test's thread, as the page takes them.
        connect(thread.get(), &CanThread::message, this, [this] { ++messages; });
    }

    ~Listener() override
    {
        close(ends[0]);
        close(ends[1]);
    }

    bool Send() const
    {
        const can_frame frame = {};
        return write(ends[1], &frame, sizeof frame) == sizeof frame;
    }

    int ends[2] = {-1, -1};
    std::unique_ptr<CanThread> thread;
    int messages = 0;
};

} // namespace

class CanTesterTest : public PageFixture<CanTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pageIsInTheLanguageOfTheProgram();

    void openBindsCan0();
    void firstInterfaceIsTheOneAskedFor();
    void openTwiceStaysAsItIs();
    void framesRunTogether();
    void framesComeInOrderAndNoneIsLost();
    void threadWithoutFramesSaysNothing();
    void threadTakesOneFrameInTenMilliseconds();
    void threadStoppedBeforeItStartsReadsNothing();
    void stopReturnsWhenTheThreadHasEnded();

    void sendBeforeTheOpenDoesNothing();
    void sendWithoutBusIsSilent();

    void pageOpensTheBusOnce();
    void closeEndsTheThread();
    void closedNumberReachesNoOtherFile();
    void freshPageOpensTheBusAgain();
    void kernelWithoutCanIsSilent();
    void missingInterfaceIsSilent();
    void leavingThePageReleasesAll_data();
    void leavingThePageReleasesAll();

private:
    QPushButton* OpenButton() { return m_page->findChild<QPushButton*>("btnOpenCom"); }
    QString Received()
    {
        m_page->findChild<ReceiveView*>()->ShowGathered();
        return m_page->findChild<QTextEdit*>()->toPlainText();
    }
    void Type(const QString& text) { m_page->findChild<QLineEdit*>()->setText(text); }
    void Open();

    std::unique_ptr<CanBus> m_bus;
};

void CanTesterTest::init()
{
    Board::Become("language english\n");
    Speak("english");
    m_bus = std::make_unique<CanBus>();
    Rebuild();
}

void CanTesterTest::cleanup()
{
    m_page.reset();
    m_bus.reset();
}

void CanTesterTest::Open()
{
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), QString("Close"));
}

void CanTesterTest::pageIsInTheLanguageOfTheProgram()
{
    Speak("chinese");
    QCOMPARE(OpenButton()->text(), QString("Open"));
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), QString::fromUtf8("关闭"));
}

void CanTesterTest::openBindsCan0()
{
    Open();
    const CanSocketCalls& calls = canSocketCalls;
    QCOMPARE(calls.opened, 1);
    QCOMPARE(calls.type, static_cast<int>(SOCK_RAW));
    QCOMPARE(calls.protocol, CAN_RAW);
    QCOMPARE(calls.interface, std::string("can0"));
    QCOMPARE(calls.boundFamily, AF_CAN);
    QCOMPARE(calls.boundIndex, 7);
}

void CanTesterTest::firstInterfaceIsTheOneAskedFor()
{
    m_page->StartCan(1);
    QCOMPARE(canSocketCalls.interface, std::string("can1"));
    Rebuild();
    m_page->StartCan(0);
    QCOMPARE(canSocketCalls.interface, std::string("can0"));
}

void CanTesterTest::openTwiceStaysAsItIs()
{
    m_page->StopCan();
    m_page->StartCan(0);
    m_bus->Send("001#");
    QTRY_VERIFY(!Received().isEmpty());
    const int opened = canSocketCalls.opened;
    const int descriptors = Count("fd");
    const int threads = Count("task");
    m_page->StartCan(0);
    QCOMPARE(canSocketCalls.opened, opened);
    QCOMPARE(Count("fd"), descriptors);
    QTRY_VERIFY(Count("task") <= threads);
}

void CanTesterTest::framesRunTogether()
{
    Open();
    m_bus->Send("123#11");
    m_bus->Send("00000124#R");
    QTRY_COMPARE(Received(), QString("id:291,len:1,data:1100000000000000"
                                     "id:1073742116,len:0,data:0000000000000000"));
}

void CanTesterTest::framesComeInOrderAndNoneIsLost()
{
    Open();
    QString expected;
    for (int i = 0; i < 100; ++i) {
        m_bus->Send(QString("%1#").arg(i, 3, 16, QChar('0')));
        expected += QString("id:%1,len:0,data:0000000000000000").arg(i);
        QTest::qWait(1);
    }
    QTRY_COMPARE_WITH_TIMEOUT(Received(), expected, 20000);
}

void CanTesterTest::threadWithoutFramesSaysNothing()
{
    Listener listener;
    listener.thread->start();
    QTest::qWait(50);
    QCOMPARE(listener.messages, 0);
    QVERIFY(listener.Send());
    QTRY_COMPARE(listener.messages, 1);
    listener.thread->stop();
    // The socket stays its opener's.
    QVERIFY(fcntl(listener.ends[0], F_GETFD) >= 0);
}

void CanTesterTest::threadTakesOneFrameInTenMilliseconds()
{
    Listener listener;
    while (listener.Send()) {
    }
    QElapsedTimer timer;
    timer.start();
    listener.thread->start();
    QTRY_VERIFY(listener.messages >= 5);
    listener.thread->stop();
    QCoreApplication::processEvents();
    // Busy machines make it slower, never faster.
    QVERIFY(listener.messages <= timer.elapsed() / 10 + 1);
}

void CanTesterTest::threadStoppedBeforeItStartsReadsNothing()
{
    Listener listener;
    QVERIFY(listener.Send());
    listener.thread->stop();
    listener.thread->start();
    QVERIFY(listener.thread->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(listener.messages, 0);
}

void CanTesterTest::stopReturnsWhenTheThreadHasEnded()
{
    for (int i = 0; i < 20; ++i) {
        const auto thread = std::make_unique<CanThread>(-1, nullptr);
        thread->start();
        QTRY_VERIFY(thread->isRunning());
        thread->stop();
        QVERIFY(thread->isFinished());
    }
}

void CanTesterTest::sendBeforeTheOpenDoesNothing()
{
    Press(m_page.get(), "btnSendCom");
    Open();
    Type("aB");
    Press(m_page.get(), "btnSendCom");
    QCOMPARE(m_bus->Receive(1), QStringList{"00000001#00000000000000AB"});
    QCOMPARE(Received(), QString());
}

void CanTesterTest::sendWithoutBusIsSilent()
{
    Open();
    m_bus.reset();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(OpenButton()->text(), QString("Close"));
    QCOMPARE(Received(), QString());
}

void CanTesterTest::pageOpensTheBusOnce()
{
    Open();
    m_bus->Send("001#");
    QTRY_COMPARE(Received(), QString("id:1,len:0,data:0000000000000000"));
    for (int i = 0; i < 3; ++i) {
        Press(m_page.get(), "btnOpenCom");
        QCOMPARE(OpenButton()->text(), QString("Open"));
        m_bus->Send("002#");
        QTest::qWait(50);
        QCOMPARE(Received(), QString("id:1,len:0,data:0000000000000000"));
    }
}

void CanTesterTest::closeEndsTheThread()
{
    QCOMPARE(ReceivingThreads(), 0);
    Open();
    QTRY_COMPARE(ReceivingThreads(), 1);
    Press(m_page.get(), "btnOpenCom");
    // A thread that has just ended is listed for a moment.
    QTRY_COMPARE(ReceivingThreads(), 0);
}

// By then the number of the closed socket may be that of another file.
void CanTesterTest::closedNumberReachesNoOtherFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    Open();
    Press(m_page.get(), "btnOpenCom");

    // Whoever opens files now is given every number that is free.
    std::vector<int> numbers(32);
    for (int& number : numbers) {
        number = dup(file.handle());
    }
    for (int i = 0; i < 2; ++i) {
        Press(m_page.get(), "btnSendCom");
        Press(m_page.get(), "btnOpenCom");
        QCOMPARE(OpenButton()->text(), QString("Open"));
    }
    m_page.reset();

    QVERIFY(m_bus->Receive(0).isEmpty());
    QCOMPARE(file.size(), 0);
    for (const int number : numbers) {
        QVERIFY(fcntl(number, F_GETFD) >= 0);
        close(number);
    }
}

void CanTesterTest::freshPageOpensTheBusAgain()
{
    Open();
    Press(m_page.get(), "btnOpenCom");
    Rebuild();
    Open();
    m_bus->Send("001#");
    QTRY_COMPARE(Received(), QString("id:1,len:0,data:0000000000000000"));
}

void CanTesterTest::kernelWithoutCanIsSilent()
{
    canFault = CanFault::NoCan;
    const int threads = Count("task");
    for (int i = 0; i < 5; ++i) {
        Press(m_page.get(), "btnOpenCom");
        QCOMPARE(OpenButton()->text(), QString("Close"));
        Press(m_page.get(), "btnSendCom");
    }
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(Received(), QString());
    QTRY_VERIFY(Count("task") <= threads + 1);
    m_page.reset();
    QTRY_VERIFY(Count("task") <= threads);
}

void CanTesterTest::missingInterfaceIsSilent()
{
    canFault = CanFault::NoInterface;
    Open();
    // Never bound to index 0, which is every bus there is.
    QCOMPARE(canSocketCalls.boundIndex, -1);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void CanTesterTest::leavingThePageReleasesAll_data()
{
    QTest::addColumn<int>("presses");
    QTest::newRow("never opened") << 0;
    QTest::newRow("receiving") << 1;
    QTest::newRow("closed") << 2;
}

void CanTesterTest::leavingThePageReleasesAll()
{
    QFETCH(int, presses);
    // The far end of the stand-in stays open between pages; so have it there from the start.
    Open();
    Rebuild();
    const int descriptors = Count("fd");
    const int threads = Count("task");
    for (int i = 0; i < presses; ++i) {
        Press(m_page.get(), "btnOpenCom");
    }
    m_bus->Send("001#");
    m_page.reset();
    QCOMPARE(Count("fd"), descriptors);
    QTRY_VERIFY(Count("task") <= threads);
}

QTEST_MAIN(CanTesterTest)
#include "CanTesterTest.moc"
