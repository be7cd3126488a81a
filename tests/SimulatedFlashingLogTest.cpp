#include "simulated-board/devices/FlashingLog.h"

#include <QRegularExpression>
#include <QTest>

class SimulatedFlashingLogTest : public QObject
{
    Q_OBJECT

private slots:
    void goodRunLooksAsRealOnesDo();
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

QTEST_APPLESS_MAIN(SimulatedFlashingLogTest)
#include "SimulatedFlashingLogTest.moc"
