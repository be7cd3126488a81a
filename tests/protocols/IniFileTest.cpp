#include "protocols/IniFile.h"

#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace
{

/// What QSettings reads from a file of that content.
QString ReadAsQSettings(const QByteArray& content, const QString& key)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        return file.errorString();
    }
    file.close();
    const QSettings settings(file.fileName(), QSettings::IniFormat);
    return settings.contains(key) ? settings.value(key).toString() : QString("(absent)");
}

const IniKey remotePort = {"vnc", "remote_port"};

} // namespace

class IniFileTest : public QObject
{
    Q_OBJECT

private slots:
    void valueReadsBackTheSame_data();
    void valueReadsBackTheSame();
    void plainValueStandsAsItIs();
    void valueIsReadFromItsLine_data();
    void valueIsReadFromItsLine();

    void onlyTheValueChanges_data();
    void onlyTheValueChanges();
    void newKeyComesToTheEndOfItsSection_data();
    void newKeyComesToTheEndOfItsSection();
    void nothingOutsideTheLinePlaysAPart_data();
    void nothingOutsideTheLinePlaysAPart();
    void unchangedValueKeepsItsSpelling();
    void anyContentTakesAValue_data();
    void anyContentTakesAValue();
};

void IniFileTest::valueReadsBackTheSame_data()
{
    QTest::addColumn<QString>("value");

    const QString values =
        "|1|relay.example.com|a;b|;a|a ;b|a,b|,|a=b|#a|a #b|%20|a%b|@x|@@x|@|@@|@)|"
        "@Variant(1)|@ByteArray(x)|@Invalid()|[x]| a|a | |a  b|'a'|`a`|a\"b|"
        "\"a\"|\"|a\\b|a\\|\\x41|a\tb|\t|a\nb|a\r\n|\x7f|密码|密1a|é9|\u00a0|"
        "\U0001f600f";
    for (const QString& value : values.split('|')) {
        QTest::newRow(qPrintable(value)) << value;
    }
    QTest::newRow("zero byte") << QString(QChar(0)) + "1";
    QTest::newRow("long") << QString(5000, 'x');
}

void IniFileTest::valueReadsBackTheSame()
{
    QFETCH(QString, value);
    const QList<QByteArray> contents = {
        "", "enable=1\r\npassword=old ; why\r\nx=\"a;b\"\r\n[o]\r\ny=1",
        "[General]\npassword=\"a, b\"\nenable=1\n", "password = ; why\n[common]\nserver_addr =\n",
        "\xef\xbb\xbf[General]\npassword=1\n"};

    for (const QByteArray& content : contents) {
        const IniKey password = {"General", "password"};
        const QByteArray general = IniWithValue(content, password, value);
        QCOMPARE(IniValue(general, password), value);
        QCOMPARE(ReadAsQSettings(general, "password"), value);
        const IniKey address = {"common", "server_addr"};
        const QByteArray common = IniWithValue(content, address, value);
        QCOMPARE(IniValue(common, address), value);
        QCOMPARE(ReadAsQSettings(common, "common/server_addr"), value);
        // Plainer readers take quotes off and know no escapes.
        if (!value.contains(QRegularExpression("[^ !#-\\[\\]-~]")) && !value.startsWith("@")) {
            const QByteArray plain = value.toLatin1();
            QVERIFY(common.contains("=" + plain) || common.contains("=\"" + plain + '"'));
        }
    }
}

void IniFileTest::plainValueStandsAsItIs()
{
    for (const char* value : {"frp-1.example.com", "7000", "", "@home", "100%"}) {
        QCOMPARE(IniWithValue("[vnc]\n", remotePort, value),
                 "[vnc]\nremote_port=" + QByteArray(value) + '\n');
    }
}

void IniFileTest::valueIsReadFromItsLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("asQSettings");

    const auto add = [](const QByteArray& line, const QString& value, bool asQSettings) {
        QTest::newRow(line.simplified()) << line << value << asQSettings;
    };
    add("key=a", "a", true);
    add("key =\t a b \t", "a b", true);
    add("key=", "", true);
    add("key= ; why", "", true);
    add("key=a #1", "a #1", true);
    add("key=a ; it's 7\" wide", "a", true);
    add("key=a\t;b", "a", true);
    add("key=\"a ;b\" ;c", "a ;b", true);
    add("key=\" a \"", " a ", true);
    add("key=a\"b c\" d", "ab cd", true);
    add("key=a=b", "a=b", true);
    add("key=a#b", "a#b", true);
    add("key='a'", "'a'", true);
    add(R"(key=\x41\x62\x5bc6g\102\0)", QString("Ab\u5bc6gB") + QChar(0), true);
    add(R"(key=a\tb\n\"\\\'\?c\zd)", "a\tb\n\"\\'?cd", true);
    add(R"(key=\x)", "", true);
    add(R"(key=\x123456789)", "\u6789", true);
    add("key=@", "@", true);
    add("key=@@a", "@a", true);
    add("key=@ByteArray(a)", "a", true);
    add("key=@String(a)", "a", true);
    add("key=@Size(1)", "@Size(1)", true);
    add("key=\xe9", "\u00e9", true);
    add("key=\xe5\xaf", "\u00e5\u00af", true);
    // QSettings would make lists, values of its own types and values of several lines of these.
    add("key=a;b", "a;b", false);
    add("key=a, b,", "a, b,", false);
    add("key=@Size(1 2)", "@Size(1 2)", false);
    add("key=a\"b ;c", "a\"b ;c", false);
    add("key=\"", "\"", false);
    add("key=C:\\t\\", "C:\\t\\", false);
    add("\vkey=a", "a", false);
    add("\xef\xbb\xbfkey=\xe5\xaf\x86", "\u5bc6", false);
}

void IniFileTest::valueIsReadFromItsLine()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, value);
    QFETCH(bool, asQSettings);

    for (const char* lineEnd : {"", "\n", "\r", "\r\nother=\"\r\n"}) {
        QCOMPARE(IniValue(line + lineEnd, {"General", "key"}), value);
    }
    QCOMPARE(ReadAsQSettings(line + '\n', "key") == value, asQSettings);
}

void IniFileTest::onlyTheValueChanges_data()
{
    QTest::addColumn<QByteArray>("content");

    // The value stands between < and >.
    const auto add = [](const char* name, const QByteArray& content) {
        QTest::newRow(name) << content;
    };
    add("among others", "# frp\n[common]\ntoken = a;b\n\n[vnc]\nremote_port = <6000>\n; z\n");
    add("in other sections, too", "remote_port=1\n[a]\nremote_port=2\n[vnc]\nremote_port=<3>\n[b]\n"
                                  "remote_port=4\n");
    add("keys like it", "[vnc]\nremote_ports=1\nRemote_port=2\nremote_port=<3>\n");
    add("commented out", "[vnc]\n#remote_port=1\n; remote_port=2\nremote_port=<4>\n");
    add("written twice", "[vnc]\nremote_port=1\nx=\nremote_port=<2>\n");
    add("section written twice", "[vnc]\nremote_port=1\n[a]\n[vnc]\nremote_port=<2>\n");
    add("CR LF", "[vnc]\r\nremote_port = <1>\r\nx=2\r\n");
    add("bare CR", "[vnc]\rremote_port=<1>\rx=2\r");
    add("no newline at the end", "[vnc]\nremote_port=<1>");
    add("byte-order mark", "\xef\xbb\xbf[vnc]\nremote_port=<1>\n");
    add("indented", " [vnc]\n\tremote_port\t=\t<1>\n");
    add("comment behind it", "[vnc]\nremote_port=<1> ; why\n");
    add("comment behind nothing", "[vnc]\nremote_port=<> ; why\n");
    add("semicolon in quotes", "[vnc]\nremote_port=<\"1 ;2\">\n");
    add("semicolon in it", "[vnc]\nremote_port=<1;2>\n");
    add("quote left open", "[vnc]\nremote_port=<a\"b>\nx=2\n");
    add("back-slash at the end", "[vnc]\nremote_port=<a\\>\nx=2\n");
    add("empty value", "[vnc]\nremote_port = <>\nx=2\n");
    add("zero bytes", QByteArray("[vnc]\na=\0\0\nremote_port=<1>\n\0", 28));
}

void IniFileTest::onlyTheValueChanges()
{
    QFETCH(QByteArray, content);
    const QByteArray before = QByteArray(content).replace('<', "").replace('>', "");
    const int value = content.indexOf('<');
    const QByteArray after =
        content.left(value) + "6001" + content.mid(content.indexOf('>', value) + 1);

    QCOMPARE(IniWithValue(before, remotePort, "6001"), after);
    QCOMPARE(ReadAsQSettings(after, "vnc/remote_port"), QString("6001"));
}

void IniFileTest::newKeyComesToTheEndOfItsSection_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("content");

    // What is new stands between < and >.
    const auto add = [](const char* name, const char* section, const char* content) {
        QTest::newRow(name) << QByteArray(section) << QByteArray(content);
    };
    add("empty file", "vnc", "<[vnc]\nkey=1\n>");
    add("empty file, general", "General", "<[General]\nkey=1\n>");
    add("no such section", "vnc", "[common]\na=1\n<\n[vnc]\nkey=1\n>");
    add("no newline at the end", "vnc", "[common]\na=1<\n\n[vnc]\nkey=1\n>");
    add("before a comment", "common", "[common]\na=1\n<key=1\n>\n# vnc\n[vnc]\nb=2\n");
    add("empty section", "common", "[common]\n<key=1\n>[vnc]\nb=2\n");
    add("after a line without a name", "vnc", "[vnc]\n=2\n<key=1\n>\n[x]\nb=2\n");
    add("last section", "vnc", "[vnc]\r\nb=2<\r\nkey=1\r\n>");
    add("before any section", "General", "# conf\na=1\n<key=1\n>\n[x]\nb=2\n");
    add("general section", "General", "[general]\na=1\n<key=1\n>[x]\nb=2\n");
    add("other sections only", "General", "[x]\nb=2\n<\n[General]\nkey=1\n>");
    add("comments only", "General", "# conf\n<\n[General]\nkey=1\n>");
    add("section in other letters", "vnc", "[VNC]\nkey=2\n<\n[vnc]\nkey=1\n>");
    add("section without a name", "General", "[]\nkey=2\n<\n[General]\nkey=1\n>");
    add("byte-order mark alone", "General", "\xef\xbb\xbf<[General]\nkey=1\n>");
}

void IniFileTest::newKeyComesToTheEndOfItsSection()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, content);
    const int added = content.indexOf('<');
    const QByteArray before = content.left(added) + content.mid(content.indexOf('>') + 1);
    const QByteArray after = QByteArray(content).replace('<', "").replace('>', "");

    QCOMPARE(IniWithValue(before, {section, "key"}, "1"), after);
    QCOMPARE(ReadAsQSettings(after, section == "General" ? "key" : section + "/key"), QString("1"));
}

void IniFileTest::nothingOutsideTheLinePlaysAPart_data()
{
    QTest::addColumn<QByteArray>("content");

    for (const char* content :
         {"# an 8\" panel\n[vnc]\n", "[common]\ntoken = a\"b\n[vnc]\n", "[vnc]\nlocal = \"x\n",
          "# C:\\\n[vnc]\n", "[vnc] \\\n", "\xef\xbb\xbf# \"\n[vnc]\n", "\xef\xbb\xbf[vnc]\n"}) {
        QTest::newRow(QByteArray(content).simplified()) << QByteArray(content);
    }
    QTest::newRow("zero byte and quote") << QByteArray("\0\"\n[vnc]\n", 9);
    QTest::newRow("zero byte before the key") << QByteArray("[vnc]\n\0remote_port=1\n", 21);
}

void IniFileTest::nothingOutsideTheLinePlaysAPart()
{
    QFETCH(QByteArray, content);
    QCOMPARE(IniValue(content, remotePort), QString());

    const QByteArray once = IniWithValue(content, remotePort, "6001");
    QVERIFY(once.startsWith(content));
    QCOMPARE(once.mid(content.size()), QByteArray("remote_port=6001\n"));

    const QByteArray behind = "enable=\"\n[x]\n";
    QCOMPARE(IniValue(once + behind, remotePort), QString("6001"));
    QCOMPARE(IniWithValue(once + behind, remotePort, "7"), content + "remote_port=7\n" + behind);
}

void IniFileTest::unchangedValueKeepsItsSpelling()
{
    for (const char* line :
         {"remote_port = \"6001\" ; as agreed", R"(remote_port=\x36\x30\x30\x31)"}) {
        const QByteArray content = "[vnc]\n" + QByteArray(line);
        QCOMPARE(IniWithValue(content, remotePort, "6001"), content);
    }
}

void IniFileTest::anyContentTakesAValue_data()
{
    QTest::addColumn<QByteArray>("content");

    QByteArray binary;
    for (uint i = 0, bits = 7; i < 1024 * 1024; ++i) {
        bits = bits * 1664525 + 1013904223;
        binary += static_cast<char>(bits >> 24);
    }
    QTest::newRow("1 MB of anything") << binary;
    QTest::newRow("1 MB value") << "key=" + QByteArray(1024 * 1024, 'x');
    for (const char* text : {"key_of_another = value\n", "x", "\n", "\"", "[", "\\", "="}) {
        QTest::newRow(QByteArray(text).simplified()) << QByteArray(text).repeated(100000);
    }
    QTest::newRow("1 MB of zeros") << QByteArray(1024 * 1024, '\0');
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe[\0v\0n\0c\0]\0\n\0", 14);
}

void IniFileTest::anyContentTakesAValue()
{
    QFETCH(QByteArray, content);

    const QByteArray changed = IniWithValue(content, remotePort, "6001");

    QVERIFY(changed.startsWith(content));
    QCOMPARE(IniValue(changed, remotePort), QString("6001"));
}

QTEST_APPLESS_MAIN(IniFileTest)
#include "IniFileTest.moc"
