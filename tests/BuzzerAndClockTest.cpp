#include "pages/BasicTester.h"
#include "simulated-board/Board.h"
#include "simulated-board/PseudoTerminal.h"
#include "tests/OpenDescriptors.h"
#include "tests/PageFixture.h"

#include <QDateTime>
#include <QDir>

#include <cerrno>
#include <ctime>
#include <optional>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

namespace
{

const char* const port = "/dev/ttyS5";
const QByteArray buzzerOn = QByteArray::fromHex("5AA50303FF05");
const QByteArray buzzerOff = QByteArray::fromHex("5AA503030006");
const QByteArray newYear = QByteArray::fromHex("5AA5080216000100000021");

const QColor green(12, 141, 66);
const QColor red(255, 0, 0);

enum Row { Buzzer = 3, ClockRead = 6, ClockSet = 7 };

/// The last setting of the system clock.
struct ClockSetting {
    timeval time = {};
    bool zoneGiven = false;
};
std::optional<ClockSetting> s_clock;
bool s_clockIsRefused = false;

/// A value from the state that the controller reports.
QString Controller(const QString& what)
{
    const QString state = Board::ReadFile("/run/board/received/controller");
    for (const QString& line : state.split('\n')) {
        if (line.startsWith(what + ' ')) {
            return line.mid(what.size() + 1);
        }
    }
    return {};
}

void SendDirectly(const QByteArray& bytes)
{
    QFile file(port);
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QDateTime Time(const QString& text)
{
    return QDateTime::fromString(text, "yyyy-MM-dd hh:mm:ss");
}

} // namespace

// Replaces the C library's function: tests must not set this machine's clock.
extern "C" int settimeofday(const timeval* time, const struct timezone* zone) noexcept
{
    s_clock = ClockSetting{*time, zone != nullptr};
    if (s_clockIsRefused) {
        errno = EPERM;
        return -1;
    }
    return 0;
}

class BuzzerAndClockTest : public PageFixture<BasicTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void buzzerGoesOnAndOff();
    void buzzerBytesAreTheControllers();
    void buzzerShowsNoDetecting();
    void buzzerWithoutControllerFails_data();
    void buzzerWithoutControllerFails();
    void buzzerKeepsItsStateWhenTheControllerIsAway();
    void buzzerStartsAsOffOnEachPage();
    void buzzerNeverWaitsForTheController();
    void buzzerLeavesTheLineAsItIs();
    void fiveHundredPressesLeaveNoDescriptor();

    void timeIsTheSystems();
    void timeIsAskedOfTheDateTool();
    void timeIsShownAsItIsPrinted_data();
    void timeIsShownAsItIsPrinted();
    void timeWithoutAShellStaysDetecting();

    void timeReachesTheControllerAndTheSystem_data();
    void timeReachesTheControllerAndTheSystem();
    void timeIsLocal();
    void timeOfOtherFormIsLeftAlone();
    void timeThatIsInvalidIsLeftAlone();
    void timeWithoutControllerSetsNoClock();
    void timeThatTheSystemRefusesStillReachesTheController();
    void settingTheTimeShowsNothing();

    void controllerRefusesAWrongByte_data();
    void controllerRefusesAWrongByte();
    void controllerFindsTheFrameInTheStream();

private:
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(m_page.get(), row, 1); }
};

void BuzzerAndClockTest::init()
{
    Board::Become("language english\nport ttyS5 controller\n");
    Board::ForgetCalls();
    Speak("english");
    s_clock.reset();
    s_clockIsRefused = false;
    QTRY_VERIFY(QFile::exists("/run/board/received/controller"));
    Rebuild();
}

void BuzzerAndClockTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
}

void BuzzerAndClockTest::buzzerGoesOnAndOff()
{
    Press(m_page.get(), "btnBeepTest");
    QCOMPARE(Field(Buzzer)->text(), QString("BEEP on!"));
    QCOMPARE(TextColour(Field(Buzzer)), green);
    QTRY_COMPARE(Controller("buzzer"), QString("on"));

    Press(m_page.get(), "btnBeepTest");
    QCOMPARE(Field(Buzzer)->text(), QString("BEEP Off!"));
    QCOMPARE(TextColour(Field(Buzzer)), green);
    QTRY_COMPARE(Controller("buzzer"), QString("off"));
    QCOMPARE(Controller("refused"), QString("0"));
}

void BuzzerAndClockTest::buzzerBytesAreTheControllers()
{
    Board::Become("language english\n");
    PseudoTerminal line(port);
    Press(m_page.get(), "btnBeepTest");
    QVERIFY(line.WaitFor(buzzerOn));
    Press(m_page.get(), "btnBeepTest");
    QVERIFY(line.WaitFor(buzzerOff));
}

void BuzzerAndClockTest::buzzerShowsNoDetecting()
{
    QStringList shown;
    connect(Field(Buzzer), &QLineEdit::textChanged, this,
            [&shown](const QString& text) { shown += text; });

    Press(m_page.get(), "btnBeepTest");

    QCOMPARE(shown, QStringList("BEEP on!"));
}

void BuzzerAndClockTest::buzzerWithoutControllerFails_data()
{
    QTest::addColumn<bool>("folder");
    QTest::newRow("no port") << false;
    QTest::newRow("a folder in the port's place") << true;
}

void BuzzerAndClockTest::buzzerWithoutControllerFails()
{
    QFETCH(bool, folder);
    Board::Become("language english\n");
    if (folder) {
        QVERIFY(QDir().mkpath(port));
    }

    Press(m_page.get(), "btnBeepTest");
    QDir().rmdir(port);

    QCOMPARE(Field(Buzzer)->text(), QString("Failed!"));
    QCOMPARE(TextColour(Field(Buzzer)), red);
}

void BuzzerAndClockTest::buzzerKeepsItsStateWhenTheControllerIsAway()
{
    Press(m_page.get(), "btnBeepTest");
    Board::Become("language english\n");
    Press(m_page.get(), "btnBeepTest");
    QCOMPARE(Field(Buzzer)->text(), QString("Failed!"));

    PseudoTerminal line(port);
    Press(m_page.get(), "btnBeepTest");

    QVERIFY(line.WaitFor(buzzerOff));
    QCOMPARE(Field(Buzzer)->text(), QString("BEEP Off!"));
    QCOMPARE(TextColour(Field(Buzzer)), green);
}

void BuzzerAndClockTest::buzzerStartsAsOffOnEachPage()
{
    Press(m_page.get(), "btnBeepTest");
    QTRY_COMPARE(Controller("buzzer"), QString("on"));

    Rebuild();
    Press(m_page.get(), "btnBeepTest");

    QCOMPARE(Field(Buzzer)->text(), QString("BEEP on!"));
    QTRY_COMPARE(Controller("accepted"), QString("2"));
    QCOMPARE(Controller("buzzer"), QString("on"));
}

void BuzzerAndClockTest::buzzerNeverWaitsForTheController()
{
    Board::Become("language english\n");
    // A partner that never reads, behind a line that takes no more.
    const PseudoTerminal line(port);
    const int filler = open(port, O_RDWR | O_NOCTTY | O_NONBLOCK);
    QVERIFY(filler >= 0);
    // The system moves what was written on, so that there is room again a little later.
    const QByteArray junk(4096, 'x');
    pollfd room = {filler, POLLOUT, 0};
    do {
        while (write(filler, junk.constData(), junk.size()) > 0) {
        }
    } while (poll(&room, 1, 300) > 0);
    close(filler);

    Press(m_page.get(), "btnBeepTest");

    QCOMPARE(Field(Buzzer)->text(), QString("BEEP on!"));
}

void BuzzerAndClockTest::buzzerLeavesTheLineAsItIs()
{
    const int line = open(port, O_RDWR | O_NOCTTY);
    QVERIFY(line >= 0);
    termios settings = {};
    QCOMPARE(tcgetattr(line, &settings), 0);
    cfsetspeed(&settings, B19200);
    settings.c_cflag |= CSTOPB;
    QCOMPARE(tcsetattr(line, TCSANOW, &settings), 0);
    QCOMPARE(tcgetattr(line, &settings), 0);

    Press(m_page.get(), "btnBeepTest");

    termios after = {};
    QCOMPARE(tcgetattr(line, &after), 0);
    close(line);
    QCOMPARE(after.c_iflag, settings.c_iflag);
    QCOMPARE(after.c_oflag, settings.c_oflag);
    QCOMPARE(after.c_cflag, settings.c_cflag);
    QCOMPARE(after.c_lflag, settings.c_lflag);
    QCOMPARE(cfgetospeed(&after), speed_t(B19200));
}

void BuzzerAndClockTest::fiveHundredPressesLeaveNoDescriptor()
{
    const int before = OpenDescriptors();

    for (int i = 0; i < 500; ++i) {
        Press(m_page.get(), "btnBeepTest");
    }

    QCOMPARE(OpenDescriptors(), before);
    QTRY_COMPARE(Controller("accepted"), QString("500"));
    QCOMPARE(Controller("refused"), QString("0"));
    QCOMPARE(Controller("buzzer"), QString("off"));
}

void BuzzerAndClockTest::timeIsTheSystems()
{
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);

    Press(m_page.get(), "btnrRTCTest");

    const QString shown = Field(ClockRead)->text();
    QVERIFY(shown.endsWith('\n'));
    QVERIFY(Time(shown.trimmed()) >= before);
    QVERIFY(Time(shown.trimmed()) <= QDateTime::currentDateTime());
    QCOMPARE(TextColour(Field(ClockRead)), green);
}

void BuzzerAndClockTest::timeIsAskedOfTheDateTool()
{
    Board::PutTool("date", ". \"$BOARD_HOME/record.sh\"\necho 2031-02-03 04:05:06");
    QStringList shown;
    connect(Field(ClockRead), &QLineEdit::textChanged, this,
            [&shown](const QString& text) { shown += text; });

    Press(m_page.get(), "btnrRTCTest");

    QCOMPARE(shown, QStringList({"Detecting...", "2031-02-03 04:05:06\n"}));
    QCOMPARE(Board::Calls(), QStringList("date +%Y-%m-%d\\ %H:%M:%S"));
}

void BuzzerAndClockTest::timeIsShownAsItIsPrinted_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("shown");

    QTest::newRow("30 bytes") << QByteArray("123456789012345678901234567890")
                              << "123456789012345678901234567890";
    QTest::newRow("31 bytes") << QByteArray("1234567890123456789012345678901")
                              << "123456789012345678901234567890";
    QTest::newRow("nothing") << QByteArray("") << "";
    QTest::newRow("NUL") << QByteArray("2031\\0 and more") << "2031";
    QTest::newRow("no ASCII") << QByteArray("\\344\\366") << "äö";
}

void BuzzerAndClockTest::timeIsShownAsItIsPrinted()
{
    QFETCH(QByteArray, output);
    QFETCH(QString, shown);
    Board::PutTool("date", "printf '%b' '" + output + "'");

    Press(m_page.get(), "btnrRTCTest");

    QCOMPARE(Field(ClockRead)->text(), shown);
    QCOMPARE(Field(ClockRead)->property("status").toString(), QString("ok"));
}

void BuzzerAndClockTest::timeWithoutAShellStaysDetecting()
{
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {3, limit.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);

    Press(m_page.get(), "btnrRTCTest");
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);

    QCOMPARE(Field(ClockRead)->text(), QString("Detecting..."));
    QVERIFY(!Field(ClockRead)->property("status").isValid());
}

void BuzzerAndClockTest::timeReachesTheControllerAndTheSystem_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("kept");

    QTest::newRow("the page's own") << "2022-01-01 00:00:00"
                                    << "2022-01-01 00:00:00";
    QTest::newRow("end of the year") << "2022-12-31 23:59:59"
                                     << "2022-12-31 23:59:59";
    QTest::newRow("leap day") << "2024-02-29 12:34:56"
                              << "2024-02-29 12:34:56";
    QTest::newRow("year beyond the controller's") << "2300-01-01 00:00:00"
                                                  << "2044-01-01 00:00:00";
}

void BuzzerAndClockTest::timeReachesTheControllerAndTheSystem()
{
    QFETCH(QString, time);
    QFETCH(QString, kept);
    Field(ClockSet)->setText(time);

    Press(m_page.get(), "btnwRTCTest");

    QTRY_COMPARE(Controller("time"), kept);
    QCOMPARE(Controller("refused"), QString("0"));
    QVERIFY(s_clock.has_value());
    QCOMPARE(qint64(s_clock->time.tv_sec), Time(time).toSecsSinceEpoch());
    QCOMPARE(qint64(s_clock->time.tv_usec), qint64(0));
    QVERIFY(!s_clock->zoneGiven);
}

void BuzzerAndClockTest::timeIsLocal()
{
    qputenv("TZ", "CST-8");
    tzset();

    Press(m_page.get(), "btnwRTCTest");
    qputenv("TZ", "UTC");
    tzset();

    QVERIFY(s_clock.has_value());
    QCOMPARE(qint64(s_clock->time.tv_sec), Time("2021-12-31 16:00:00").toSecsSinceEpoch());
    QTRY_COMPARE(Controller("time"), QString("2022-01-01 00:00:00"));
}

void BuzzerAndClockTest::timeOfOtherFormIsLeftAlone()
{
    Board::Become("language english\n");
    PseudoTerminal line(port);
    const char* const texts[] = {"2022-1-1 0:0:0",
                                 "2022-02-30 00:00:00",
                                 "2023-02-29 00:00:00",
                                 "2022-13-01 00:00:00",
                                 "2022-00-01 00:00:00",
                                 "2022-01-01 24:00:00",
                                 "2016-12-31 23:59:60",
                                 "2022-01-01",
                                 "00:00:00",
                                 "2022-01-01T00:00:00",
                                 "2022/01/01 00:00:00",
                                 " 2022-01-01 00:00:00",
                                 "2022-01-01 00:00:00 ",
                                 "2022-01-01  00:00:00",
                                 "22-01-01 00:00:00",
                                 "20220-01-01 00:00:00",
                                 "now",
                                 ""};
    for (const char* text : texts) {
        Field(ClockSet)->setText(text);

        Press(m_page.get(), "btnwRTCTest");

        QVERIFY2(line.ReadAvailable().isEmpty() && !s_clock.has_value(), text);
        QCOMPARE(Field(ClockSet)->text(), QString(text));
    }
}

void BuzzerAndClockTest::timeThatIsInvalidIsLeftAlone()
{
    m_page->SetTimeTyUart(QDateTime());

    QVERIFY(!s_clock.has_value());
    QCOMPARE(Controller("accepted"), QString("0"));
}

void BuzzerAndClockTest::timeWithoutControllerSetsNoClock()
{
    Board::Become("language english\n");

    Press(m_page.get(), "btnwRTCTest");

    QVERIFY(!s_clock.has_value());
}

void BuzzerAndClockTest::timeThatTheSystemRefusesStillReachesTheController()
{
    s_clockIsRefused = true;

    Press(m_page.get(), "btnwRTCTest");

    QTRY_COMPARE(Controller("time"), QString("2022-01-01 00:00:00"));
    QCOMPARE(Field(ClockSet)->text(), QString("2022-01-01 00:00:00"));
    QVERIFY(!Field(ClockSet)->property("status").isValid());
}

void BuzzerAndClockTest::settingTheTimeShowsNothing()
{
    const QString read = Field(ClockRead)->text();

    Press(m_page.get(), "btnwRTCTest");

    QTRY_COMPARE(Controller("accepted"), QString("1"));
    QCOMPARE(Field(ClockSet)->text(), QString("2022-01-01 00:00:00"));
    QVERIFY(!Field(ClockSet)->property("status").isValid());
    QCOMPARE(Field(ClockRead)->text(), read);
    QCOMPARE(Board::Calls(), QStringList());
}

void BuzzerAndClockTest::controllerRefusesAWrongByte_data()
{
    QTest::addColumn<QByteArray>("frame");

    for (const QByteArray& frame : {newYear, buzzerOn, buzzerOff}) {
        for (int i = 0; i < frame.size(); ++i) {
            QByteArray wrong = frame;
            wrong[i] = static_cast<char>(wrong[i] ^ 0x04);
            QTest::newRow(wrong.toHex()) << wrong;
        }
    }
}

void BuzzerAndClockTest::controllerRefusesAWrongByte()
{
    QFETCH(QByteArray, frame);

    SendDirectly(frame);

    QTRY_VERIFY(Controller("refused").toInt() > 0);
    QCOMPARE(Controller("accepted"), QString("0"));
    QCOMPARE(Controller("buzzer"), QString("off"));
    QCOMPARE(Controller("time"), QString("none"));
}

void BuzzerAndClockTest::controllerFindsTheFrameInTheStream()
{
    SendDirectly("noise\x5A" + buzzerOn.left(4));
    SendDirectly(buzzerOn.mid(4) + newYear + "\x5A\xA5" + buzzerOff);

    QTRY_COMPARE(Controller("accepted"), QString("3"));
    QCOMPARE(Controller("time"), QString("2022-01-01 00:00:00"));
    QCOMPARE(Controller("buzzer"), QString("off"));
}

QTEST_MAIN(BuzzerAndClockTest)
#include "BuzzerAndClockTest.moc"
