#include "simulated-board/Board.h"
#include "tests/Program.h"

#include <QDir>
#include <QTest>

/// Runs the tour with the real program. The board starts the program again after each restart.
class TourTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void goodBoardPasses();
    void boardWithFaultsDoesNotPass();

private:
    int TakeTour(const QByteArray& board);

    QString m_home = QString::fromLocal8Bit(qgetenv("BOARD_HOME"));
    QProcess m_program;
    QStringList m_lines;
};

void TourTest::init()
{
    PutOperatorAt(m_program);
    QDir("/tmp/tour").removeRecursively();
}

void TourTest::cleanup()
{
    QProcess::execute("killall", {"-q", "MoskTest"});
    m_program.waitForFinished();
}

int TourTest::TakeTour(const QByteArray& board)
{
    Board::Become(board);
    m_program.start(m_home + "/start-program", {Built("MoskTest")});
    QProcess tour;
    tour.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tour.start(Built("simulated-board/tour"), {"/tmp/tour"});
    if (!tour.waitForFinished(120000)) {
        return -1;
    }
    m_lines = QString::fromUtf8(tour.readAllStandardOutput()).split('\n');
    return tour.exitCode();
}

void TourTest::goodBoardPasses()
{
    const int status = TakeTour(Board::ReadFile(m_home + "/../boards/default.board"));

    QVERIFY2(status == 0, qPrintable(m_lines.join('\n')));
    QVERIFY(m_lines.contains("home | reboot | sync, reboot | ok"));
    QVERIFY(m_lines.contains(
        "basic | USB | Detected that there is(are) 1 USB flash drive inserted! | ok"));
    QVERIFY(m_lines.contains("basic | Ethernet | 正常！, ok | ok"));
    QVERIFY(m_lines.contains("wifi | connect | Connected MoskBench | ok"));
    QVERIFY(m_lines.contains("wifi | ping | 成功！, ok | ok"));
    QVERIFY(m_lines.contains("remote-access | set 6001 | Set success! | ok"));
    const QStringList pictures = QDir("/tmp/tour").entryList({"*.png"});
    for (const char* page : {"home", "basic", "touch", "serial", "wifi", "voice", "can", "database",
                             "production", "remote-access", "camera"}) {
        QVERIFY(pictures.contains(QString("%1-english.png").arg(page)));
        QVERIFY(pictures.contains(QString("%1-chinese.png").arg(page)));
    }
}

void TourTest::boardWithFaultsDoesNotPass()
{
    const QByteArray stick = "stick Kingston DataTraveler\n";
    const QByteArray ethernet = "link eth0 192.168.10.2 192.168.10.1\n";
    QByteArray board = Board::ReadFile(m_home + "/../boards/default.board");
    QVERIFY(board.contains(stick) && board.contains(ethernet));

    QCOMPARE(TakeTour(board.replace(stick, "stick A\nstick B\n").replace(ethernet, "")), 1);

    QVERIFY2(m_lines.contains("basic | USB | Detected that there is(are) 2 USB flash drive "
                              "inserted! | WRONG, expected \"Detected that there is(are) 1 USB "
                              "flash drive inserted!\""),
             qPrintable(m_lines.join('\n')));
    QVERIFY(
        m_lines.contains("basic | SD card | Detected that there is(are) 1 SD card inserted! | ok"));
    QVERIFY(
        m_lines.contains("basic | Ethernet | Abnormal!, error | WRONG, expected \"Normal!, ok\""));
}

QTEST_GUILESS_MAIN(TourTest)
#include "TourTest.moc"
