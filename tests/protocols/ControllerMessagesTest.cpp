#include "protocols/ControllerMessages.h"

#include <QDateTime>
#include <QTest>

class ControllerMessagesTest : public QObject
{
    Q_OBJECT

private slots:
    void buzzerIsSwitchedByAMessage();
    void timeMessageIsByteForByte_data();
    void timeMessageIsByteForByte();
};

void ControllerMessagesTest::buzzerIsSwitchedByAMessage()
{
    QCOMPARE(BuzzerMessage(true).toHex(), QByteArray("5aa50303ff05"));
    QCOMPARE(BuzzerMessage(false).toHex(), QByteArray("5aa503030006"));
}

void ControllerMessagesTest::timeMessageIsByteForByte_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<QByteArray>("message");

    const auto add = [](const char* name, const char* time, const char* message) {
        QTest::newRow(name) << QString(time) << QByteArray::fromHex(message);
    };
    add("the page's own", "2022-01-01 00:00:00", "5AA5080216000100000021");
    add("end of the year", "2022-12-31 23:59:59", "5AA50802160B1F173B3BD7");
    add("year beyond 255", "2300-01-01 00:00:00", "5AA508022C000100000037");
    add("first year", "2000-01-01 00:00:00", "5AA508020000010000000B");
    add("before the first year", "1999-01-01 00:00:00", "5AA50802FF00010000000A");
    add("leap day", "2024-02-29 12:34:56", "5AA5080218011D0C2238A6");
    add("last year", "9999-12-31 23:59:59", "5AA508023F0B1F173B3B00");
}

void ControllerMessagesTest::timeMessageIsByteForByte()
{
    QFETCH(QString, time);
    QFETCH(QByteArray, message);

    const QDateTime sent = QDateTime::fromString(time, "yyyy-MM-dd hh:mm:ss");
    QCOMPARE(TimeMessage(sent).toHex(), message.toHex());
}

QTEST_APPLESS_MAIN(ControllerMessagesTest)
#include "ControllerMessagesTest.moc"
