#include "protocols/Supplicant.h"

#include <QProcess>
#include <QTest>

class SupplicantTest : public QObject
{
    Q_OBJECT

private slots:
    void nameIsReadFromItsEscapes_data();
    void nameIsReadFromItsEscapes();
    void networkIsShownAsPeopleReadIt_data();
    void networkIsShownAsPeopleReadIt();
    void valueReachesTheClientAsItIs_data();
    void valueReachesTheClientAsItIs();
    void valueThatDoesNotFitIsRefused_data();
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

    const auto add = [](const char* name, const char* item, const QString& shown) {
        QTest::newRow(name) << QString(item) << shown;
    };
    const QString mark(QChar(0x200e));
    add("plain", "MoskBench -47", "MoskBench -47");
    add("Chinese", R"(\xe5\xb7\xa5\xe5\x8e\x82 -61)", "工厂" + mark + " -61");
    add("mixed", R"(Bench\xe4\xb8\x80 -61)", "Bench一" + mark + " -61");
    add("Hebrew", R"(\xd7\xa9\xd7\x9c -50)", "של" + mark + " -50");
    add("a picture", R"(\xf0\x9f\x98\x80 -50)", "😀" + mark + " -50");
    add("quote and backslash", R"(a\"b\\c -50)", R"(a"b\c)" + mark + " -50");
    add("a backslash and no escape", R"(\\xe5\\xb7 -50)", R"(\xe5\xb7)" + mark + " -50");
    add("in UTF-8 already", "工厂 -61", "工厂 -61");
    add("no signal", R"(\xe5\xb7\xa5)", "工" + mark);
    add("no name", " -58", " -58");
    // These are shown as the client prints them.
    for (const char* name : {
             R"(\xff\xfe)",       R"(\xe5\xb7)",
             R"(\xc0\xaf)",       R"(\xed\xa0\x80)", // no UTF-8
             R"(a\nb)",           R"(a\rb)",
             R"(a\tb)",           R"(\e[31m)",
             R"(\x01)",           R"(\x7f)",
             R"(a\xc2\x85b)",     R"(a\xe2\x80\xa8b)",
             R"(a\xe2\x80\xa9b)",                      // line and paragraph separators
             R"(a\xe2\x80\xaeb)", R"(\xe2\x81\xa6a)",  // bidirectional control
             R"(\xef\xbb\xbfa)",  R"(a\xe2\x80\x8bb)", // what is not seen
             R"(\xef\xbf\xbf)",   R"(\xf3\xb0\x80\x80)",
             R"(\xe5\x)",         R"(\x00)", // no characters
         }) {
        QTest::newRow(name) << QString(name) + " -50" << QString(name) + " -50";
    }
}

void SupplicantTest::networkIsShownAsPeopleReadIt()
{
    QFETCH(QString, item);
    QFETCH(QString, shown);
    QCOMPARE(ShownNetwork(item), shown);
}

void SupplicantTest::valueReachesTheClientAsItIs_data()
{
    QTest::addColumn<QByteArray>("value");

    for (const char* value : {"Bench",
                              "a'b",
                              "a';reboot;'",
                              "''",
                              "say \"hello\"",
                              "\"quoted\"",
                              "a\\\\b",
                              "\\x41",
                              "end\\",
                              "x=1",
                              "-n",
                              "--help",
                              "$HOME $(reboot) `reboot`",
                              "a&b|c;d>e<f",
                              "#hash!~*?",
                              "%s%n%d",
                              "  blanks  ",
                              "密码密码",
                              "\xff\xfe\x80",
                              "\x01\x02\x1b\x7f",
                              "a\tb",
                              "[x]"}) {
        QTest::newRow(value) << QByteArray(value);
    }
}

void SupplicantTest::valueReachesTheClientAsItIs()
{
    QFETCH(QByteArray, value);
    const QByteArray command = SetNetworkCommand("ssid", value).value_or("refused");
    QVERIFY(command.startsWith("wpa_cli -i wlan0 set_network 0 ssid "));

    QProcess shell;
    shell.start("sh", {"-s"});
    shell.write("wpa_cli() { printf '%s|' \"$@\"; }\n" + command);
    shell.closeWriteChannel();
    QVERIFY(shell.waitForFinished());

    QCOMPARE(shell.readAll(), "-i|wlan0|set_network|0|ssid|\"" + value + "\"|");
}

void SupplicantTest::valueThatDoesNotFitIsRefused_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("fits");

    const auto add = [](const char* name, const char* variable, const QByteArray& value,
                        bool fits) {
        QTest::newRow(name) << QByteArray(variable) << value << fits;
    };
    add("passphrase of 60", "psk", QByteArray(60, 'p'), true);
    add("passphrase of 61", "psk", QByteArray(61, 'p'), false);
    add("passphrase of 100000", "psk", QByteArray(100000, 'p'), false);
    add("15 single quotes", "psk", QByteArray(15, '\''), true);
    add("16 single quotes", "psk", QByteArray(16, '\''), false);
    add("20 Chinese characters", "psk", QByteArray("密").repeated(20), true);
    add("21 Chinese characters", "psk", QByteArray("密").repeated(21), false);
    add("zero byte", "psk", QByteArray("1234\0005678", 9), false);
    add("name of 59", "ssid", QByteArray(59, 'n'), true);
    add("name of 60", "ssid", QByteArray(60, 'n'), false);
    add("name of single quotes", "ssid", QByteArray(32, '\''), false);
}

void SupplicantTest::valueThatDoesNotFitIsRefused()
{
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    QFETCH(bool, fits);
    QCOMPARE(SetNetworkCommand(variable, value).has_value(), fits);
}

void SupplicantTest::statusIsRead_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QString>("expected");

    const QByteArray address = "ip_address=192.168.43.2\n";
    const QByteArray joined = "wpa_state=COMPLETED\n" + address;
    for (const char* state :
         {"DISCONNECTED", "INACTIVE", "INTERFACE_DISABLED", "SCANNING", "AUTHENTICATING",
          "ASSOCIATING", "ASSOCIATED", "4WAY_HANDSHAKE", "GROUP_HANDSHAKE", "UNKNOWN"}) {
        QTest::newRow(state) << "ssid=Bench\nwpa_state=" + QByteArray(state) + '\n' + address
                             << "not connected";
    }
    QTest::newRow("nothing") << QByteArray() << "not connected";
    QTest::newRow("joined") << "ssid=MoskBench\n" + joined << "MoskBench";
    QTest::newRow("no address") << QByteArray("ssid=MoskBench\nwpa_state=COMPLETED\n")
                                << "not connected";
    QTest::newRow("no name") << joined << "unknown";
    QTest::newRow("name cut off") << joined + "ssid=Mosk" << "unknown";
    QTest::newRow("empty name") << "ssid=\n" + joined << "";
    QTest::newRow("blanks in it") << "ssid=a b\n" + joined << "a b";
    QTest::newRow("equals sign") << "ssid=ssid=x\n" + joined << "ssid=x";
    QTest::newRow("escaped") << "ssid=\\xe5\\xb7\\xa5\n" + joined << "工";
    QTest::newRow("escaped quote") << "ssid=a\\\"b\n" + joined << "a\"b";
    QTest::newRow("escaped line end") << "ssid=a\\nb\n" + joined << "a\\nb";
    QTest::newRow("no text") << "ssid=\\xff\\xfe\n" + joined << "\\xff\\xfe";
    QTest::newRow("in UTF-8") << "ssid=工厂\n" + joined << "工厂";
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

QTEST_GUILESS_MAIN(SupplicantTest)
#include "SupplicantTest.moc"
