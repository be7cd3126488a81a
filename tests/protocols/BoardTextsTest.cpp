#include "protocols/BoardTexts.h"

#include <QTest>

class BoardTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void rotationIsTheTenthField_data();
    void rotationIsTheTenthField();
    void countIsTheNumberPrinted_data();
    void countIsTheNumberPrinted();
    void boardsOwnEmmcIsNoCard();
    void buildStampIsTheLastSixWords_data();
    void buildStampIsTheLastSixWords();
    void answerHasATimeToLive_data();
    void answerHasATimeToLive();
};

void BoardTextsTest::rotationIsTheTenthField_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("rotation 2") << QByteArray("1 2 3 4 5 6 7 1024 600 2") << 2;
    QTest::newRow("with its line end") << QByteArray("1 2 3 4 5 6 7 1024 600 1\n") << 1;
    QTest::newRow("rotation 3") << QByteArray("1 2 3 4 5 6 7 1024 600 3") << 3;
    QTest::newRow("beyond 3") << QByteArray("1 2 3 4 5 6 7 1024 600 4") << 0;
    QTest::newRow("negative") << QByteArray("1 2 3 4 5 6 7 1024 600 -1") << 0;
    QTest::newRow("no number") << QByteArray("1 2 3 4 5 6 7 1024 600 up") << 0;
    QTest::newRow("nine fields") << QByteArray("1 2 3 4 5 6 7 1024 2") << 0;
    QTest::newRow("eleven fields") << QByteArray("1 2 3 4 5 6 7 1024 600 0 2") << 0;
    QTest::newRow("two blanks count") << QByteArray("1 2 3 4 5 6 7  1024 2") << 2;
    QTest::newRow("NUL ends it") << QByteArray("1 2 3 4 5 6 7 1024 600 2\0 3", 28) << 2;
}

void BoardTextsTest::rotationIsTheTenthField()
{
    QFETCH(QByteArray, text);
    QFETCH(int, expected);
    QCOMPARE(RotationOf(text), expected);
}

void BoardTextsTest::countIsTheNumberPrinted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("a line") << QByteArray("3\n") << 3;
    QTest::newRow("padded") << QByteArray("      4\n") << 4;
    QTest::newRow("no number") << QByteArray("wc: not found") << 0;
}

void BoardTextsTest::countIsTheNumberPrinted()
{
    QFETCH(QByteArray, text);
    QFETCH(int, expected);
    QCOMPARE(CountOf(text), expected);
}

void BoardTextsTest::boardsOwnEmmcIsNoCard()
{
    QCOMPARE(SdCardsAmong(0), 0);
    QCOMPARE(SdCardsAmong(1), 0);
    QCOMPARE(SdCardsAmong(2), 1);
    QCOMPARE(SdCardsAmong(10), 9);
}

void BoardTextsTest::buildStampIsTheLastSixWords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("a kernel's line")
        << "Linux version 3.10.65 (builder@host) #5 Tue Oct 18 10:21:07 CST 2022"
        << "Tue Oct 18 10:21:07 CST 2022";
    QTest::newRow("seven words") << "1 2 3 4 5 6 7"
                                 << "2 3 4 5 6 7";
    QTest::newRow("six words") << "1 2 3 4 5 6"
                               << "";
    QTest::newRow("two blanks") << "1 2 3  5 6 7"
                                << "2 3  5 6 7";
    QTest::newRow("nothing") << ""
                             << "";
}

void BoardTextsTest::buildStampIsTheLastSixWords()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(BuildStampOf(text), expected);
}

void BoardTextsTest::answerHasATimeToLive_data()
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

void BoardTextsTest::answerHasATimeToLive()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(PingAnswered(text), expected);
}

QTEST_APPLESS_MAIN(BoardTextsTest)
#include "BoardTextsTest.moc"
