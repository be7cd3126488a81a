#include "protocols/Player.h"

#include <QTest>

class PlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void commandPlaysTheFile_data();
    void commandPlaysTheFile();
    void longNameIsCutWithinItsQuotes();
};

void PlayerTest::commandPlaysTheFile_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QByteArray>("command");

    QTest::newRow("plain") << "/mnt/usb/tone.wav\n" << QByteArray("tinyplay /mnt/usb/tone.wav &");
    QTest::newRow("no line end") << "/mnt/a.wav" << QByteArray("tinyplay /mnt/a.wav &");
    QTest::newRow("blank") << "/mnt/a b.wav\n" << QByteArray("tinyplay '/mnt/a b.wav' &");
    QTest::newRow("command") << "/mnt/$(reboot).wav\n"
                             << QByteArray("tinyplay '/mnt/$(reboot).wav' &");
    QTest::newRow("quote") << "/mnt/it's.wav\n" << QByteArray("tinyplay '/mnt/it'\\''s.wav' &");
    QTest::newRow("two line ends") << "/mnt/a\n.wav\n" << QByteArray("tinyplay '/mnt/a\n.wav' &");
}

void PlayerTest::commandPlaysTheFile()
{
    QFETCH(QString, item);
    QFETCH(QByteArray, command);
    QCOMPARE(PlayCommand(item), command);
}

void PlayerTest::longNameIsCutWithinItsQuotes()
{
    QCOMPARE(PlayCommand(QString(200, 'x')).size(), 99);
    const QByteArray quoted = PlayCommand(QString(200, ' '));
    QVERIFY(quoted.size() <= 99);
    QVERIFY(quoted.endsWith("' &"));
    QVERIFY(PlayCommand(QString(200, '\'')).endsWith("' &"));
}

QTEST_APPLESS_MAIN(PlayerTest)
#include "PlayerTest.moc"
