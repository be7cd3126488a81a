#include "simulated-board/BoardDescription.h"
#include "simulated-board/Board.h"

#include <QTest>

namespace
{

const char* const path = "/tmp/bench.board";

QString RefusalOf(const QByteArray& description)
{
    Board::WriteFile(path, description);
    QString error;
    return ReadBoardDescription(path, &error) ? QString() : error;
}

} // namespace

/// Reads descriptions of boards, good ones and wrong ones.
class BoardDescriptionTest : public QObject
{
    Q_OBJECT

private slots:
    void everyLineIsRead();
    void shippedBoardsAreRead_data();
    void shippedBoardsAreRead();
    void wrongLineIsRefused_data();
    void wrongLineIsRefused();
    void nextBoardHasNothingThatTheProgramLeft();
    void missingFileIsRefused();
    void passphraseOfRootAloneIsRead();
    void passphraseThatOthersCanReadIsRefused();
};

void BoardDescriptionTest::everyLineIsRead()
{
    const QByteArray description = "# A bench\n"
                                   "language english\n"
                                   "version Linux  version 6\n"
                                   "stick A B\n"
                                   "stick C\n"
                                   "usb-storage\n"
                                   "mmc 0 1 2\n"
                                   "link eth0 10.0.0.2 10.0.0.1\n"
                                   "link usb0 10.0.1.2 10.0.1.1\n"
                                   "host example.com 10.0.2.1\n"
                                   "silent usb0 10.0.1.1\n"
                                   "wlan0 up\n"
                                   "network \\xe5\\xb7\\xa5 - a\\x20b hidden slow far 10.0.3.1\n"
                                   "network Open -47 -\n"
                                   "scan-time 0.5\n"
                                   "port ttyS2 log stuck\n"
                                   "port ttyS0 nothing\n"
                                   "sound usb/a.wav 3\n"
                                   "camera video0 any Front  camera\n"
                                   "file /etc/x a\\nb c\n";
    Board::WriteFile(path, description);
    QString error;
    const auto board = ReadBoardDescription(path, &error);

    QVERIFY2(board, qPrintable(error));
    QCOMPARE(board->title, QString("A bench"));
    QCOMPARE(board->version, QString("Linux version 6"));
    QCOMPARE(board->language, QString("english"));
    QCOMPARE(board->sticks.size(), 2);
    QCOMPARE(board->sticks[0].model, QString("B"));
    QVERIFY(board->hasUsbStorage);
    QCOMPARE(board->mmc, (QList<int>{0, 1, 2}));
    QVERIFY(board->Answers("eth0", "10.0.0.1"));
    QVERIFY(!board->Answers("usb0", "10.0.1.1"));
    QCOMPARE(board->hosts.value("example.com"), QString("10.0.2.1"));
    QVERIFY(board->isWlanUp);
    QCOMPARE(board->scanSeconds, 0.5);
    QCOMPARE(board->networks.size(), 2);
    QCOMPARE(board->networks[0].name, QByteArray("\xe5\xb7\xa5"));
    QCOMPARE(board->networks[0].signal, QString());
    QCOMPARE(board->networks[0].passphrase, QString("a b"));
    QVERIFY(board->networks[0].isHidden && board->networks[0].isSlow);
    QCOMPARE(board->networks[0].far, QString("10.0.3.1"));
    QCOMPARE(board->networks[1].signal, QString("-47"));
    QCOMPARE(board->networks[1].passphrase, QString());
    QCOMPARE(board->RoleOf("ttyS2"), QString("log"));
    QCOMPARE(board->RoleOf("ttyS1"), QString());
    QCOMPARE(board->sounds[0].path, QString("usb/a.wav"));
    QCOMPARE(board->cameras[0].name, QString("Front camera"));
    QCOMPARE(board->files.value("/etc/x"), QByteArray("a\nb c"));
}

void BoardDescriptionTest::shippedBoardsAreRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("default") << "default";
    QTest::newRow("bare") << "bare";
}

void BoardDescriptionTest::shippedBoardsAreRead()
{
    QFETCH(QString, name);
    QString error;
    const QString home = QString::fromLocal8Bit(qgetenv("BOARD_HOME"));

    QVERIFY2(ReadBoardDescription(QString("%1/../boards/%2.board").arg(home, name), &error),
             qPrintable(error));
}

void BoardDescriptionTest::wrongLineIsRefused_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("reason");
    QTest::newRow("keyword") << QByteArray("moon full") << "\"moon\": no such keyword";
    QTest::newRow("too few") << QByteArray("link eth0 10.0.0.2")
                             << "link takes 3 arguments or more";
    QTest::newRow("too many") << QByteArray("host a 10.0.0.1 b")
                              << "host takes 2 arguments at most";
    QTest::newRow("language") << QByteArray("language klingon") << "\"klingon\" is no language";
    QTest::newRow("address") << QByteArray("link eth0 10.0.0.256 10.0.0.1")
                             << "\"10.0.0.256\" is no address";
    QTest::newRow("interface") << QByteArray("link eth7 10.0.0.2 10.0.0.1")
                               << "\"eth7\" is no interface";
    QTest::newRow("number") << QByteArray("mmc one") << "\"one\" is no number";
    QTest::newRow("large number") << QByteArray("mmc 10") << "\"10\" is no number from 0 to 9";
    QTest::newRow("signal") << QByteArray("network a strong b") << "\"strong\" is no signal";
    QTest::newRow("network") << QByteArray("network a -40 b loud") << "\"loud\" is unknown";
    QTest::newRow("no far address") << QByteArray("network a -40 b far") << "\"far\" is unknown";
    QTest::newRow("role") << QByteArray("port ttyS0 teapot") << "\"teapot\" is no role";
    QTest::newRow("log") << QByteArray("port ttyS0 log long") << "\"long\" is unknown";
    QTest::newRow("path") << QByteArray("port /dev/ttyS0 echo") << "named without /dev/";
    QTest::newRow("colour") << QByteArray("camera video0 blue Front") << "\"blue\" is no colour";
    QTest::newRow("file") << QByteArray("file etc/x a") << "named from the root";
    QTest::newRow("passphrase") << QByteArray("network a -40 @/none") << "cannot read /none";
}

void BoardDescriptionTest::wrongLineIsRefused()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, reason);

    const QString refusal = RefusalOf("# A bench\nmmc 0\n" + line + "\nstick A\n");

    QVERIFY2(refusal.startsWith(QString("%1:3: ").arg(path)), qPrintable(refusal));
    QVERIFY2(refusal.contains(reason), qPrintable(refusal));
    QVERIFY2(!refusal.contains('\n'), qPrintable(refusal));
}

void BoardDescriptionTest::nextBoardHasNothingThatTheProgramLeft()
{
    // The last one is what the 4G check leaves on a board without a modem.
    const QStringList left = {"/etc/mosk.ini", "/etc/sw2hmi", "/etc/qttestend", "/etc/frpc.ini",
                              "/dev/ttyUSB1"};
    for (const QString& each : left) {
        Board::WriteFile(each, "left");
    }

    Board::Become("");

    for (const QString& each : left) {
        QVERIFY2(!QFile::exists(each), qPrintable(each));
    }
}

void BoardDescriptionTest::missingFileIsRefused()
{
    QString error;
    QVERIFY(!ReadBoardDescription("/none.board", &error));
    QCOMPARE(error, QString("/none.board: No such file or directory"));
}

void BoardDescriptionTest::passphraseOfRootAloneIsRead()
{
    Board::WriteFile("/etc/bench.wifi", "a b&c\nanother line\n");
    QVERIFY(QFile::setPermissions("/etc/bench.wifi", QFile::ReadOwner | QFile::WriteOwner));
    Board::WriteFile(path, "network Bench -47 @/etc/bench.wifi\n");
    QString error;
    const auto board = ReadBoardDescription(path, &error);

    QVERIFY2(board, qPrintable(error));
    QCOMPARE(board->networks[0].passphrase, QString("a b&c"));
}

void BoardDescriptionTest::passphraseThatOthersCanReadIsRefused()
{
    Board::WriteFile("/etc/bench.wifi", "12345678\n");
    QVERIFY(QFile::setPermissions("/etc/bench.wifi", QFile::ReadOwner | QFile::ReadGroup));

    QCOMPARE(RefusalOf("network Bench -47 @/etc/bench.wifi\n"),
             QString("%1:1: others than root can read /etc/bench.wifi: chown root /etc/bench.wifi; "
                     "chmod 600 /etc/bench.wifi")
                 .arg(path));
}

QTEST_GUILESS_MAIN(BoardDescriptionTest)
#include "BoardDescriptionTest.moc"
