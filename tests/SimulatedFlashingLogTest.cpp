#include "simulated-board/Board.h"
#include "simulated-board/devices/FlashingLog.h"

#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

class SimulatedFlashingLogTest : public QObject
{
    Q_OBJECT

private slots:
    void goodRunLooksAsRealOnesDo();
    void slowReaderGetsAllOfIt();
};

// The other tests play this log. It is a good test only if it has all that real logs have.
void SimulatedFlashingLogTest::goodRunLooksAsRealOnesDo()
{
    const QString log = QString::fromStdString(FlashingLog({}));
    QVERIFY(log.count('\n') > 1000);
    const QString beforeSuccess = log.left(log.indexOf("sprite success"));
    QVERIFY(beforeSuccess.count("fail") + beforeSuccess.count("err") >= 29);
    QVERIFY(log.contains(QRegularExpression("^\\[\\d+\\]", QRegularExpression::MultilineOption)));
    QVERIFY(log.contains(QRegularExpression("\n\\[\\d+\\.\\d+\\] ")));
    QVERIFY(log.contains(QRegularExpression("\n\\[ +\\d+\\.\\d+\\] ")));
    QVERIFY(log.contains(QRegularExpression("\n\\[\\d+\\][^\r\n]*\\[\\d+\\.\\d+\\]")));
    QVERIFY(log.contains(QRegularExpression("[^\r\n]+a40i login: [^\r\n]+\r\n")));
    QVERIFY(log.contains("]begin to erase\r\n"));
    QVERIFY(log.endsWith("\r\n"));
    QVERIFY(QString::fromStdString(FlashingLog({})) == log);
}

// A page that a busy machine holds up must not lose a result.
void SimulatedFlashingLogTest::slowReaderGetsAllOfIt()
{
    Board::Become("port ttyS2 log good\n");
    const int port = open("/dev/ttyS2", O_RDWR | O_NOCTTY);
    QVERIFY(port >= 0);
    termios settings = {};
    QCOMPARE(tcgetattr(port, &settings), 0);
    cfmakeraw(&settings);
    QCOMPARE(tcsetattr(port, TCSANOW, &settings), 0);
    QCOMPARE(tcflush(port, TCIOFLUSH), 0);

    const QByteArray log = QByteArray::fromStdString(FlashingLog({}));
    QByteArray received;
    while (received.size() < log.size()) {
        char bytes[256];
        const ssize_t count = read(port, bytes, sizeof bytes);
        QVERIFY(count > 0);
        received.append(bytes, static_cast<int>(count));
        // Slower than the line.
        QThread::msleep(40);
    }
    close(port);
    QCOMPARE(received.left(log.size()), log);
}

QTEST_APPLESS_MAIN(SimulatedFlashingLogTest)
#include "SimulatedFlashingLogTest.moc"
