#include "pages/BasicTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"
#include "tests/Warnings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>

namespace
{

const QColor black(0, 0, 0);
const QColor green(12, 141, 66);
const QColor red(255, 0, 0);

const QString modemDevice = "/dev/ttyUSB1";
const QString modemMovedAway = "/dev/moved-ttyUSB1";

enum Row { Usb, SdCard, Ethernet = 5, Mobile = 8 };

/// Presses the button of the 4G row on two pages of one run. What is at the modem's device is moved
/// away after each.
int PressMobileTwice(int& argc, char** argv)
{
    const QApplication application(argc, argv);
    for (int i = 0; i < 2; ++i) {
        BasicTester page(nullptr);
        page.findChild<QPushButton*>("btn4gTest")->click();
        QFile::rename(modemDevice, modemMovedAway);
    }
    return 0;
}

} // namespace

class BasicTesterTest : public PageFixture<BasicTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void usbCountsTheVendorLines_data();
    void usbCountsTheVendorLines();
    void usbWithoutTheDriverRunsNoCommand();
    void usbListThatIsAFolderCountsNothing();
    void usbShowsThatItIsDetecting();

    void sdCountLeavesOutTheBoardsOwnEmmc_data();
    void sdCountLeavesOutTheBoardsOwnEmmc();
    void storageRowsCheckAgainAndStayBlack();

    void ethernetAnswerIsNormal();
    void ethernetWithoutAnswerIsAbnormal_data();
    void ethernetWithoutAnswerIsAbnormal();
    void ethernetTargetOfOtherFormIsLeftAlone_data();
    void ethernetTargetOfOtherFormIsLeftAlone();
    void ethernetVerdictIsNoTarget();
    void everyWordingOfAPingIsJudged_data();
    void everyWordingOfAPingIsJudged();
    void busyBoxPingIsUnderstood();
    void missingPingIsAbnormal();
    void hangingPingIsGivenUp();
    void pingTargetNeverReachesAShell();

    void mobileVerdictIsThatOfThePing_data();
    void mobileVerdictIsThatOfThePing();
    void mobileCommandIsRunOnceInARun_data();
    void mobileCommandIsRunOnceInARun();
    void mobileVerdictIsPingedAsAName();
    void mobileTargetIsNotCheckedForItsForm();

private:
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(m_page.get(), row, 1); }
};

void BasicTesterTest::init()
{
    Board::Become("language english\n");
    Board::ForgetCalls();
    MoskTranslator::Reload();
    Rebuild();
}

void BasicTesterTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
    for (const QString& path : {modemDevice, modemMovedAway}) {
        QFileInfo(path).isDir() ? QDir(path).removeRecursively() : QFile::remove(path);
    }
}

void BasicTesterTest::usbCountsTheVendorLines_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<int>("count");

    QTest::newRow("none") << QByteArray("") << 0;
    QTest::newRow("driver only") << QByteArray("usb-storage\n") << 0;
    QTest::newRow("one stick") << QByteArray("stick Kingston DataTraveler\n") << 1;
    QTest::newRow("two sticks") << QByteArray("stick Kingston\nstick SanDisk Ultra\n") << 2;
    QTest::newRow("card reader with four slots")
        << QByteArray("stick Generic SD\nstick Generic CF\nstick Generic SM\nstick Generic MS\n")
        << 4;
}

void BasicTesterTest::usbCountsTheVendorLines()
{
    QFETCH(QByteArray, board);
    QFETCH(int, count);
    Board::Become(board);

    Press(m_page.get(), "btnUsbTest");

    QCOMPARE(Field(Usb)->text(),
             QString("Detected that there is(are) %1 USB flash drive inserted!").arg(count));
    QCOMPARE(TextColour(Field(Usb)), black);
}

void BasicTesterTest::usbWithoutTheDriverRunsNoCommand()
{
    Board::WriteFile("/proc/scsi/scsi", "  Vendor: Disk\n");
    Board::PutTool("grep", "touch /tmp/grep-ran; exec /usr/bin/grep \"$@\"");

    Press(m_page.get(), "btnUsbTest");

    QVERIFY(Field(Usb)->text().contains(" 0 "));
    QVERIFY(!QFile::exists("/tmp/grep-ran"));
}

void BasicTesterTest::usbListThatIsAFolderCountsNothing()
{
    QDir().mkpath("/proc/scsi/usb-storage");
    QDir().mkpath("/proc/scsi/scsi");

    Press(m_page.get(), "btnUsbTest");

    QVERIFY(Field(Usb)->text().contains(" 0 "));
}

void BasicTesterTest::usbShowsThatItIsDetecting()
{
    Board::Become("stick Kingston\n");
    QStringList shown;
    connect(Field(Usb), &QLineEdit::textChanged, this,
            [&shown](const QString& text) { shown += text; });

    Press(m_page.get(), "btnUsbTest");

    QCOMPARE(shown.size(), 2);
    QCOMPARE(shown[0], QString("Detecting..."));
}

void BasicTesterTest::sdCountLeavesOutTheBoardsOwnEmmc_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<int>("count");

    QTest::newRow("no device at all") << QByteArray("") << 0;
    QTest::newRow("eMMC alone") << QByteArray("mmc 0\n") << 0;
    QTest::newRow("eMMC and a card") << QByteArray("mmc 0 1\n") << 1;
    QTest::newRow("gap in the numbers") << QByteArray("mmc 0 5\n") << 1;
    QTest::newRow("last number") << QByteArray("mmc 0 9\n") << 1;
    QTest::newRow("beyond the last number") << QByteArray("mmc 0\nfile /dev/mmcblk10\n") << 0;
    QTest::newRow("partitions")
        << QByteArray("mmc 0\nfile /dev/mmcblk0p1\nfile /dev/mmcblk0p2\nfile /dev/mmcblk1p1\n")
        << 0;
    QTest::newRow("all ten") << QByteArray("mmc 0 1 2 3 4 5 6 7 8 9\n") << 9;
}

void BasicTesterTest::sdCountLeavesOutTheBoardsOwnEmmc()
{
    QFETCH(QByteArray, board);
    QFETCH(int, count);
    Board::Become(board);

    Press(m_page.get(), "btnSdCardTest");

    QCOMPARE(Field(SdCard)->text(),
             QString("Detected that there is(are) %1 SD card inserted!").arg(count));
}

void BasicTesterTest::storageRowsCheckAgainAndStayBlack()
{
    Board::Become("mmc 0 1\n");
    Press(m_page.get(), "btnSdCardTest");
    QVERIFY(Field(SdCard)->text().contains(" 1 "));

    Board::Become("mmc 0\n");
    Press(m_page.get(), "btnSdCardTest");

    QVERIFY(Field(SdCard)->text().contains(" 0 "));
    QCOMPARE(TextColour(Field(SdCard)), black);
}

void BasicTesterTest::ethernetAnswerIsNormal()
{
    Board::Become("link eth0 192.168.10.2 192.168.10.1\n");
    const Warnings warnings;

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Normal!"));
    QCOMPARE(TextColour(Field(Ethernet)), green);
    QCOMPARE(Warnings::Texts(), QStringList());
}

void BasicTesterTest::ethernetWithoutAnswerIsAbnormal_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<QString>("target");

    const QByteArray link = "link eth0 192.168.10.2 192.168.10.1\n";
    QTest::newRow("no cable") << QByteArray("") << "192.168.10.1";
    QTest::newRow("silent host") << link + "silent eth0 192.168.10.1\n" << "192.168.10.1";
    QTest::newRow("no such host") << link << "192.168.10.77";
    QTest::newRow("not an address") << link << "a.b.c.d";
    QTest::newRow("only through another interface")
        << QByteArray("link usb0 192.168.10.2 192.168.10.1\n") << "192.168.10.1";
}

void BasicTesterTest::ethernetWithoutAnswerIsAbnormal()
{
    QFETCH(QByteArray, board);
    QFETCH(QString, target);
    Board::Become(board);
    Field(Ethernet)->setText(target);

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Abnormal!"));
    QCOMPARE(TextColour(Field(Ethernet)), red);
}

void BasicTesterTest::ethernetTargetOfOtherFormIsLeftAlone_data()
{
    QTest::addColumn<QString>("target");

    QTest::newRow("empty") << "";
    QTest::newRow("three parts") << "10.0.0";
    QTest::newRow("five parts") << "a.b.c.d.e";
    QTest::newRow("a name") << "localhost";
}

void BasicTesterTest::ethernetTargetOfOtherFormIsLeftAlone()
{
    QFETCH(QString, target);
    Board::PutTool("ping", "touch /tmp/ping-ran");
    Field(Ethernet)->setText(target);

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), target);
    QCOMPARE(TextColour(Field(Ethernet)), black);
    QVERIFY(!QFile::exists("/tmp/ping-ran"));
}

void BasicTesterTest::ethernetVerdictIsNoTarget()
{
    Board::Become("link eth0 192.168.10.2 192.168.10.1\n");
    Press(m_page.get(), "btnEmmcTest");
    Board::PutTool("ping", "touch /tmp/ping-ran");

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Normal!"));
    QVERIFY(!QFile::exists("/tmp/ping-ran"));
}

void BasicTesterTest::everyWordingOfAPingIsJudged_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<bool>("good");

    QTest::newRow("partial loss")
        << QByteArray("64 bytes from 1.2.3.4: icmp_seq=2 ttl=64 time=1 ms\n2 packets "
                      "transmitted, 1 received, 50% packet loss")
        << 0 << true;
    QTest::newRow("answer and a bad exit code") << QByteArray("ttl=64") << 1 << true;
    QTest::newRow("total loss and a good exit code")
        << QByteArray("2 packets transmitted, 0 received, 100% packet loss") << 0 << false;
    QTest::newRow("answer behind a NUL") << QByteArray("\\0ttl=64") << 0 << false;
    QTest::newRow("no text at all") << QByteArray("\\377\\376\\001") << 0 << false;
}

void BasicTesterTest::everyWordingOfAPingIsJudged()
{
    QFETCH(QByteArray, output);
    QFETCH(int, exitCode);
    QFETCH(bool, good);
    Board::PutTool("ping", ". \"$BOARD_HOME/record.sh\"\nprintf '%b' '" + output + "'\nexit " +
                               QByteArray::number(exitCode));

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString(good ? "Normal!" : "Abnormal!"));
    QCOMPARE(Board::Calls(), QStringList("ping -I eth0 192.168.10.1 -w 2 -c 2"));
}

void BasicTesterTest::busyBoxPingIsUnderstood()
{
    Board::Become("link eth0 192.168.10.2 192.168.10.1\n");
    Board::PutTool("ping", "exec busybox ping \"$@\"");

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Normal!"));
}

void BasicTesterTest::missingPingIsAbnormal()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");

    Press(m_page.get(), "btnEmmcTest");
    qputenv("PATH", path);

    QCOMPARE(Field(Ethernet)->text(), QString("Abnormal!"));
}

void BasicTesterTest::hangingPingIsGivenUp()
{
    Board::PutTool("ping", "exec sleep 120");
    QElapsedTimer timer;
    timer.start();

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Abnormal!"));
    QVERIFY(timer.elapsed() >= 30000);
    QCOMPARE(QProcess::execute("pkill", {"-f", "sleep 120"}), 0);
}

void BasicTesterTest::pingTargetNeverReachesAShell()
{
    Field(Ethernet)->setText("1.2.3.4;touch${IFS}/tmp/ran;$(touch /tmp/ran)`touch /tmp/ran`");

    Press(m_page.get(), "btnEmmcTest");

    QCOMPARE(Field(Ethernet)->text(), QString("Abnormal!"));
    QVERIFY(!QFile::exists("/tmp/ran"));
}

void BasicTesterTest::mobileVerdictIsThatOfThePing_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<QString>("verdict");
    QTest::addColumn<QColor>("colour");

    const QByteArray answering = "link usb0 10.64.64.2 10.64.64.1\nhost dns.alidns.com 223.5.5.5\n";
    QTest::newRow("no modem") << QByteArray() << "Abnormal!" << red;
    QTest::newRow("modem and its network") << answering + "port ttyUSB1 modem\n"
                                           << "Normal!" << green;
    QTest::newRow("network alone") << answering << "Normal!" << green;
}

void BasicTesterTest::mobileVerdictIsThatOfThePing()
{
    QFETCH(QByteArray, board);
    QFETCH(QString, verdict);
    QFETCH(QColor, colour);
    Board::Become(board);

    Press(m_page.get(), "btn4gTest");

    QCOMPARE(Field(Mobile)->text(), verdict);
    QCOMPARE(TextColour(Field(Mobile)), colour);
}

void BasicTesterTest::mobileCommandIsRunOnceInARun_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<QString>("received");

    QTest::newRow("modem") << QByteArray("port ttyUSB1 modem\n") << "/run/board/received/modem";
    QTest::newRow("nothing there") << QByteArray() << modemMovedAway;
    QTest::newRow("a plain file") << QByteArray("file /dev/ttyUSB1 left\n") << modemMovedAway;
    QTest::newRow("a folder") << QByteArray("file /dev/ttyUSB1/file left\n") << QString();
}

void BasicTesterTest::mobileCommandIsRunOnceInARun()
{
    QFETCH(QByteArray, board);
    QFETCH(QString, received);
    Board::Become(board);

    QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(), {"--press-4g-twice"}), 0);

    if (!received.isEmpty()) {
        // The board's echo knows -e; this machine's sh prints it.
        const QByteArray command = "AT+QNETDEVCTL=3,1,1\r\n\n";
        QTRY_VERIFY(QFile::exists(received));
        QTRY_VERIFY(Board::ReadFile(received).endsWith(command));
        QCOMPARE(Board::ReadFile(received).count("AT+"), 1);
    }
    QVERIFY2(!QFile::exists(modemDevice), "the second press sends it again");
}

void BasicTesterTest::mobileVerdictIsPingedAsAName()
{
    Board::Become("link usb0 10.64.64.2 10.64.64.1\nhost dns.alidns.com 223.5.5.5\n");
    Press(m_page.get(), "btn4gTest");
    QCOMPARE(Field(Mobile)->text(), QString("Normal!"));

    Press(m_page.get(), "btn4gTest");

    QCOMPARE(Field(Mobile)->text(), QString("Abnormal!"));
    QCOMPARE(TextColour(Field(Mobile)), red);
}

void BasicTesterTest::mobileTargetIsNotCheckedForItsForm()
{
    Board::PutTool("ping", ". \"$BOARD_HOME/record.sh\"\necho ttl=1");
    Field(Mobile)->setText("");

    Press(m_page.get(), "btn4gTest");

    QCOMPARE(Board::Calls(), QStringList("ping -I usb0 -w 2 -c 2"));
}

int main(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--press-4g-twice") == 0) {
        return PressMobileTwice(argc, argv);
    }
    const QApplication application(argc, argv);
    BasicTesterTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "BasicTesterTest.moc"
