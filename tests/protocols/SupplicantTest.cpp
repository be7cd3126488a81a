#include "protocols/Supplicant.h"

#include <QTest>

class SupplicantTest : public QObject
{
    Q_OBJECT

private slots:
    void nameIsReadFromItsEscapes_data();
    void nameIsReadFromItsEscapes();
    void networkIsShownAsPeopleReadIt_data();
    void networkIsShownAsPeopleReadIt();
    void valueStandsInBothQuotes();
    void valueThatDoesNotFitIsRefused();
    void statusIsRead_data();
    void statusIsRead();
};

void SupplicantTest::nameIsReadFromItsEscapes_data()
{
    QTest::addColumn<QByteArray>("printed");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("plain") << QByteArray("MoskBench") << QByteArray("MoskBench");
    QTest::newRow("bytes") << QByteArray("\\xe5\\xb7\\xa5") << QByteArray("\xe5\xb7\xa5");
    QTest::newRow("quote") << QByteArray("a\\\"b") << QByteArray("a\"b");
    QTest::newRow("back-slash") << QByteArray("a\\\\xe5") << QByteArray("a\\xe5");
    QTest::newRow("escape") << QByteArray("\\e[0m\\n\\r\\t") << QByteArray("\033[0m\n\r\t");
    QTest::newRow("none that it prints")
        << QByteArray("\\q\\xZZ\\xE5") << QByteArray("\\q\\xZZ\\xE5");
    QTest::newRow("cut off") << QByteArray("a\\xe") << QByteArray("a\\xe");
    QTest::newRow("zero byte") << QByteArray("\\x00") << QByteArray("\\x00");
}

void SupplicantTest::nameIsReadFromItsEscapes()
{
    QFETCH(QByteArray, printed);
    QFETCH(QByteArray, bytes);
    QCOMPARE(SsidBytes(printed), bytes);
}

void SupplicantTest::networkIsShownAsPeopleReadIt_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("shown");

    const QString mark(QChar(0x200e));
    QTest::newRow("plain") << "MoskBench -47"
                           << "MoskBench -47";
    QTest::newRow("Chinese") << "\\xe5\\xb7\\xa5\\xe5\\x8e\\x82 -58"
                             << QString::fromUtf8("工厂") + mark + " -58";
    QTest::newRow("no UTF-8") << "\\xe5\\xb7 -58"
                              << "\\xe5\\xb7 -58";
    QTest::newRow("line end") << "a\\nb -58"
                              << "a\\nb -58";
    QTest::newRow("turned round") << "\\xe2\\x80\\xaeabc -58"
                                  << "\\xe2\\x80\\xaeabc -58";
    QTest::newRow("no name") << " -58"
                             << " -58";
}

void SupplicantTest::networkIsShownAsPeopleReadIt()
{
    QFETCH(QString, item);
    QFETCH(QString, shown);
    QCOMPARE(ShownNetwork(item), shown);
}

void SupplicantTest::valueStandsInBothQuotes()
{
    QCOMPARE(SetNetworkCommand("ssid", "it's $(reboot)").value_or("nothing"),
             QByteArray("wpa_cli -i wlan0 set_network 0 ssid '\"it'\\''s $(reboot)\"'"));
}

void SupplicantTest::valueThatDoesNotFitIsRefused()
{
    const int room = 99 - int(qstrlen("wpa_cli -i wlan0 set_network 0 psk '\"\"'"));
    QCOMPARE(SetNetworkCommand("psk", QByteArray(room, 'x')).value_or("").size(), 99);
    QVERIFY(!SetNetworkCommand("psk", QByteArray(room + 1, 'x')));
    QVERIFY(!SetNetworkCommand("psk", QByteArray("a\0b", 3)));
}

void SupplicantTest::statusIsRead_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QString>("expected");

    const QByteArray joined = "wpa_state=COMPLETED\nip_address=192.168.43.2\n";
    QTest::newRow("nothing") << QByteArray() << "not connected";
    QTest::newRow("joined") << "ssid=MoskBench\n" + joined << "MoskBench";
    QTest::newRow("no address") << QByteArray("ssid=MoskBench\nwpa_state=COMPLETED\n")
                                << "not connected";
    QTest::newRow("scanning") << QByteArray("wpa_state=SCANNING\n") << "not connected";
    QTest::newRow("no name") << joined << "unknown";
    QTest::newRow("name cut off") << joined + "ssid=Mosk" << "unknown";
    QTest::newRow("blanks in it") << "ssid=a b\n" + joined << "a b";
    QTest::newRow("Chinese") << "ssid=\\xe5\\xb7\\xa5\n" + joined << QString::fromUtf8("工");
}

void SupplicantTest::statusIsRead()
{
    QFETCH(QByteArray, status);
    QFETCH(QString, expected);
    const auto link = ReadLinkStatus(status);
    const QString read = !link               ? QString("unknown")
                         : link->isConnected ? link->network
                                             : QString("not connected");
    QCOMPARE(read, expected);
}

QTEST_APPLESS_MAIN(SupplicantTest)
#include "SupplicantTest.moc"
