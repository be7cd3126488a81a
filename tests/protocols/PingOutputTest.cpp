#include "protocols/PingOutput.h"

#include <QTest>

class PingOutputTest : public QObject
{
    Q_OBJECT

private slots:
    void answerHasATimeToLive_data();
    void answerHasATimeToLive();
};

void PingOutputTest::answerHasATimeToLive_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    QTest::newRow("iputils") << "64 bytes from 192.168.10.1: icmp_seq=1 ttl=64 time=0.03 ms"
                             << true;
    QTest::newRow("BusyBox") << "64 bytes from 192.168.10.1: seq=0 ttl=64 time=0.1 ms" << true;
    QTest::newRow("capitals") << "Reply from 192.168.10.1: bytes=32 time<1ms TTL=128" << true;
    QTest::newRow("mixed") << "Ttl=64" << false;
    QTest::newRow("silent host") << "From 192.168.10.2 icmp_seq=1 Destination Host Unreachable"
                                 << false;
    QTest::newRow("nothing") << "" << false;
}

void PingOutputTest::answerHasATimeToLive()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(PingAnswered(text), expected);
}

QTEST_APPLESS_MAIN(PingOutputTest)
#include "PingOutputTest.moc"
