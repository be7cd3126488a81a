#include "protocols/DeviceCount.h"

#include <QTest>

class DeviceCountTest : public QObject
{
    Q_OBJECT

private slots:
    void countIsTheNumberPrinted_data();
    void countIsTheNumberPrinted();
    void boardsOwnEmmcIsNoCard();
};

void DeviceCountTest::countIsTheNumberPrinted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("a line") << QByteArray("3\n") << 3;
    QTest::newRow("padded") << QByteArray("      4\n") << 4;
    QTest::newRow("no number") << QByteArray("wc: not found") << 0;
}

void DeviceCountTest::countIsTheNumberPrinted()
{
    QFETCH(QByteArray, text);
    QFETCH(int, expected);
    QCOMPARE(CountOf(text), expected);
}

void DeviceCountTest::boardsOwnEmmcIsNoCard()
{
    QCOMPARE(SdCardsAmong(0), 0);
    QCOMPARE(SdCardsAmong(1), 0);
    QCOMPARE(SdCardsAmong(2), 1);
    QCOMPARE(SdCardsAmong(10), 9);
}

QTEST_APPLESS_MAIN(DeviceCountTest)
#include "DeviceCountTest.moc"
