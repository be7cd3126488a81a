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

    const QByteArray nine = "1028 -4 -6520 7 617 -5292 65536 1024 600";
    QTest::newRow("0") << nine + " 0\n" << 0;
    QTest::newRow("1") << nine + " 1\n" << 1;
    QTest::newRow("2") << nine + " 2\n" << 2;
    QTest::newRow("3") << nine + " 3\n" << 3;
    QTest::newRow("no line end") << nine + " 2" << 2;
    QTest::newRow("CR LF") << nine + " 2\r\n" << 2;
    QTest::newRow("signed and padded") << nine + " +03\n" << 3;
    QTest::newRow("4") << nine + " 4\n" << 0;
    QTest::newRow("7") << nine + " 7\n" << 0;
    QTest::newRow("-1") << nine + " -1\n" << 0;
    QTest::newRow("a word") << nine + " two\n" << 0;
    QTest::newRow("a word behind the number") << nine + " 2x\n" << 0;
    QTest::newRow("hexadecimal") << nine + " 0x2\n" << 0;
    QTest::newRow("a fraction") << nine + " 2.0\n" << 0;
    QTest::newRow("beyond 32 bits") << nine + " 4294967298\n" << 0;
    QTest::newRow("no file content") << QByteArray("") << 0;
    QTest::newRow("7 fields") << QByteArray("1 2 3 4 5 6 3\n") << 0;
    QTest::newRow("9 fields") << nine + "\n" << 0;
    QTest::newRow("11 fields") << nine + " 2 2\n" << 0;
    QTest::newRow("blank behind the last field") << nine + " 2 \n" << 0;
    QTest::newRow("two blanks make a field") << QByteArray("1 2 3 4 5 6 7 8  2\n") << 2;
    QTest::newRow("tabs do not") << nine + "\t2\n" << 0;
    QTest::newRow("NUL ends the line") << nine + QByteArray(" 2\0 9 9 9\n", 10) << 2;
    QTest::newRow("NUL in an early field") << QByteArray("1\0 ", 3) + nine + " 2\n" << 0;
    QTest::newRow("binary") << QByteArray::fromHex("ff00fe2080a0ff0a0d") << 0;
    QTest::newRow("bytes of no text") << nine + " \xff\xfe\n" << 0;
    QTest::newRow("1 MB without a line end") << QByteArray(1024 * 1024, '1') << 0;
    QTest::newRow("1 MB of fields") << QByteArray("2 ").repeated(512 * 1024) << 0;
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

    const auto add = [](const char* name, const char* text, const char* expected) {
        QTest::newRow(name) << QString(text) << QString(expected);
    };
    add("a kernel's line", "Linux version 3.10.65 (builder@host) #5 Tue Oct 18 10:21:07 CST 2022",
        "Tue Oct 18 10:21:07 CST 2022");
    add("seven words", "1 2 3 4 5 6 7", "2 3 4 5 6 7");
    add("six words", "1 2 3 4 5 6", "");
    add("two blanks", "1 2 3  5 6 7", "2 3  5 6 7");
    add("nothing", "", "");
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
