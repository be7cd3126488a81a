#include "frame/BodyWidget.h"
#include "simulated-board/Board.h"
#include "tests/Program.h"

#include <QTest>

#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

bool IsPlaying()
{
    return QProcess::execute("killall", {"-q", "-0", "tinyplay"}) == 0;
}

/// The settings of a serial port's line, as stty writes them.
QByteArray LineSettings(const QString& device)
{
    QProcess stty;
    stty.start("stty", {"-F", device, "-g"});
    stty.waitForFinished();
    return stty.readAllStandardOutput();
}

} // namespace

/// The real program when the system asks it to stop, as a service or at a console.
class StopTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void soundEndsWithTheProgram();
    void openPortIsLeftAsItWasFound();
    void everySignalEndsTheProgramInOrder_data();
    void everySignalEndsTheProgramInOrder();
    void signalBeforeTheWindowEndsTheProgramInOrder();
    void openListIsNoHindrance();
    void openBoxIsNoHindrance();
    void checkUnderWayIsNoHindrance();
    void ignoredHangUpStaysIgnored();

private:
    void Start();
    void StartBy(const QString& command, const QStringList& arguments);
    void Send(int signal) const;
    void ProgramEndsInOrder();
    void PlaySound();

    QProcess m_program;
    Operator m_operator;
};

void StopTest::init()
{
    Board::Become("language english\nlink eth0 192.168.10.2 192.168.10.1\n"
                  "silent eth0 192.168.10.1\nport ttyS2 echo\nsound usb/ringtone.wav 600\n");
}

void StopTest::cleanup()
{
    m_program.kill();
    m_program.waitForFinished();
    QProcess::execute("killall", {"-q", "-9", "tinyplay"});
}

void StopTest::StartBy(const QString& command, const QStringList& arguments)
{
    PutOperatorAt(m_program);
    m_program.start(command, arguments);
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
}

void StopTest::Start()
{
    StartBy(Built("MoskTest"), {});
}

void StopTest::Send(int signal) const
{
    QCOMPARE(kill(static_cast<pid_t>(m_program.processId()), signal), 0);
}

void StopTest::ProgramEndsInOrder()
{
    QVERIFY(m_program.waitForFinished(30000));
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program.exitCode(), 0);
}

void StopTest::PlaySound()
{
    QVERIFY(m_operator.OpenPage(BodyWidget::VoicePage));
    QVERIFY(m_operator.Click("bodyWidget QPushButton[0]"));
    QVERIFY(m_operator.Click("btnPlay"));
    QTRY_VERIFY(IsPlaying());
}

void StopTest::soundEndsWithTheProgram()
{
    Start();
    PlaySound();

    Send(SIGTERM);

    ProgramEndsInOrder();
    QTRY_VERIFY(!IsPlaying());
}

void StopTest::openPortIsLeftAsItWasFound()
{
    const QByteArray before = LineSettings("/dev/ttyS2");
    Start();
    QVERIFY(m_operator.OpenPage(BodyWidget::SerialPage));
    QVERIFY(m_operator.Click("btnOpenCom"));
    QTRY_VERIFY(LineSettings("/dev/ttyS2") != before);

    Send(SIGTERM);

    ProgramEndsInOrder();
    QCOMPARE(LineSettings("/dev/ttyS2"), before);
}

void StopTest::everySignalEndsTheProgramInOrder_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("page");

    QTest::newRow("SIGTERM") << SIGTERM << int(BodyWidget::HomePage);
    QTest::newRow("SIGINT") << SIGINT << int(BodyWidget::HomePage);
    QTest::newRow("SIGHUP") << SIGHUP << int(BodyWidget::HomePage);
    QTest::newRow("basic") << SIGTERM << int(BodyWidget::BasicPage);
    QTest::newRow("database") << SIGTERM << int(BodyWidget::DatabasePage);
    QTest::newRow("production") << SIGTERM << int(BodyWidget::ProductionPage);
    QTest::newRow("Wi-Fi") << SIGTERM << int(BodyWidget::WifiPage);
    QTest::newRow("CAN") << SIGTERM << int(BodyWidget::CanPage);
    QTest::newRow("remote access") << SIGTERM << int(BodyWidget::RemoteAccessPage);
    QTest::newRow("camera") << SIGTERM << int(BodyWidget::CameraPage);
}

void StopTest::everySignalEndsTheProgramInOrder()
{
    QFETCH(int, signal);
    QFETCH(int, page);
    Start();
    QVERIFY(m_operator.OpenPage(page));

    Send(signal);

    ProgramEndsInOrder();
}

void StopTest::signalBeforeTheWindowEndsTheProgramInOrder()
{
    // The home page, which is built before the window is shown, reads this file. From a pipe it
    // reads until the writer has gone.
    QVERIFY(QFile::remove("/proc/version"));
    QCOMPARE(mkfifo("/proc/version", 0600), 0);
    m_program.start(Built("MoskTest"), QStringList());
    int writer = -1;
    // Without a reader it cannot be opened.
    QVERIFY(QTest::qWaitFor(
        [&writer] {
            writer = open("/proc/version", O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            return writer >= 0;
        },
        20000));

    Send(SIGTERM);
    close(writer);

    ProgramEndsInOrder();
    QVERIFY(QFile::remove("/proc/version"));
}

void StopTest::openListIsNoHindrance()
{
    Start();
    PlaySound();
    QVERIFY(m_operator.Click("bodyWidget QComboBox[0]"));
    QVERIFY(m_operator.Count("QComboBoxPrivateContainer") == 1);

    Send(SIGTERM);

    ProgramEndsInOrder();
    QTRY_VERIFY(!IsPlaying());
}

void StopTest::openBoxIsNoHindrance()
{
    Start();
    QVERIFY(m_operator.Click("btnTestEnd"));
    QVERIFY(m_operator.Count("QMessageBox") == 1);

    Send(SIGTERM);

    ProgramEndsInOrder();
    QVERIFY2(!QFile::exists("/etc/qttestend"), "to stop is not to answer yes");
}

void StopTest::checkUnderWayIsNoHindrance()
{
    Start();
    QVERIFY(m_operator.OpenPage(BodyWidget::BasicPage));
    Board::PutTool("ping", "touch /tmp/pinging; exec sleep 2");
    QVERIFY(m_operator.Click("btnEmmcTest"));
    QTRY_VERIFY(QFile::exists("/tmp/pinging"));

    Send(SIGTERM);

    ProgramEndsInOrder();
}

void StopTest::ignoredHangUpStaysIgnored()
{
    StartBy("nohup", {Built("MoskTest")});

    Send(SIGHUP);

    QVERIFY(m_operator.Idle());
    Send(SIGTERM);
    ProgramEndsInOrder();
}

QTEST_GUILESS_MAIN(StopTest)
#include "StopTest.moc"
