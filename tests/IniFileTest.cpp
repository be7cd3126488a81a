#include "pages/IniFile.h"
#include "simulated-board/Board.h"
#include "tests/FrpIni.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace
{

/// What QSettings reads from a file of that content.
QString ReadAsQSettings(const QByteArray& content, const QString& key)
{
    // Each its own file: QSettings remembers what it has read.
    static int s_number = 0;
    const QString path = QString("/tmp/read/%1.ini").arg(++s_number);
    Board::WriteFile(path, content);
    const QSettings settings(path, QSettings::IniFormat);
    return settings.contains(key) ? settings.value(key).toString() : QString("(absent)");
}

const IniEntry remotePort = {"vnc", "remote_port", "6001"};

} // namespace

class IniFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void valueReadsBackTheSame_data();
    void valueReadsBackTheSame();
    void plainValueStandsAsItIs();

    void onlyTheKeysLineChanges_data();
    void onlyTheKeysLineChanges();
    void newKeyComesToTheEndOfItsSection_data();
    void newKeyComesToTheEndOfItsSection();
    void everyReaderSeesTheValue_data();
    void everyReaderSeesTheValue();
    void secondWritingChangesNothing_data();
    void secondWritingChangesNothing();
    void otherBytesSurviveInAnyFile_data();
    void otherBytesSurviveInAnyFile();

    void unchangedValueKeepsItsSpelling();
    void fileKeepsOwnerAndMode();
    void symbolicLinkStaysOne();
    void linkToAMissingFileMakesTheFile();
    void whatIsNoFileIsLeftAlone_data();
    void whatIsNoFileIsLeftAlone();
    void fullDiskKeepsTheOldFile();
    void readOnlyDiskKeepsTheOldFile();
    void writingKilledHalfwayLeavesTheOldFile();
    void killedWritingLeavesTheOldOrTheNewFile();
};

void IniFileTest::init()
{
    QDir("/tmp/read").removeRecursively();
    QDir("/etc/ini").removeRecursively();
    QVERIFY(QDir().mkpath("/etc/ini"));
}

void IniFileTest::valueReadsBackTheSame_data()
{
    QTest::addColumn<QString>("value");

    const QStringList values = {"",
                                "1",
                                "relay.example.com",
                                "a;b",
                                ";a",
                                "a,b",
                                ",",
                                "a=b",
                                "#a",
                                "a #b",
                                "%20",
                                "a%b",
                                "@x",
                                "@@x",
                                "@",
                                "@@",
                                "@)",
                                "@Variant(1)",
                                "@ByteArray(x)",
                                "@Invalid()",
                                "[x]",
                                " a",
                                "a ",
                                " ",
                                "a  b",
                                "'a'",
                                "`a`",
                                "a\"b",
                                "\"a\"",
                                "\"",
                                "a\\b",
                                "a\\",
                                "\\x41",
                                "a\tb",
                                "\t",
                                "a\nb",
                                "a\r\n",
                                "\x7f",
                                "密码",
                                "密1a",
                                "é9",
                                "\u00a0",
                                QString::fromUtf8("\xf0\x9f\x98\x80"
                                                  "f"),
                                QString(QChar(0)) + "1",
                                QString(5000, 'x')};
    for (const QString& value : values) {
        QTest::newRow(qPrintable(value.left(20))) << value;
    }
}

void IniFileTest::valueReadsBackTheSame()
{
    QFETCH(QString, value);
    const QList<QByteArray> contents = {"",
                                        "enable=1\r\npassword=old ; why\r\nx=\"a;b\"\r\n[o]\r\ny=1",
                                        "[General]\npassword=\"a, b\"\nenable=1\n",
                                        "\xef\xbb\xbfpassword=1\nenable=1\n",
                                        "# it's \"odd\nenable=1\n[z]\npassword=7\n",
                                        "# C:\\\npassword=1\n[General]\npassword=2"};

    for (const QByteArray& content : contents) {
        const QByteArray general = IniWithEntry(content, {"", "password", value});
        QCOMPARE(ReadAsQSettings(general, "password"), value);
        const QByteArray common = IniWithEntry(content, {"common", "server_addr", value});
        QCOMPARE(ReadAsQSettings(common, "common/server_addr"), value);
        // The frp client knows no escapes.
        if (!value.contains(QRegularExpression("[^ !#-\\[\\]-~]")) && !value.startsWith("@")) {
            QCOMPARE(ReadAsFrp(common)["common/server_addr"], value.toLatin1());
        }
    }
}

void IniFileTest::plainValueStandsAsItIs()
{
    QCOMPARE(IniText("frp-1.example.com"), QByteArray("frp-1.example.com"));
    QCOMPARE(IniText("7000"), QByteArray("7000"));
    QCOMPARE(IniText(""), QByteArray(""));
    QCOMPARE(IniText("@home"), QByteArray("@home"));
}

void IniFileTest::onlyTheKeysLineChanges_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("among others")
        << QByteArray(
               "# frp\n[common]\ntoken = a;b\n\n[vnc]\ntype = tcp\nremote_port = 6000\n; z\n")
        << QByteArray(
               "# frp\n[common]\ntoken = a;b\n\n[vnc]\ntype = tcp\nremote_port = 6001\n; z\n");
    QTest::newRow("same key in other sections")
        << QByteArray("remote_port=1\n[ssh]\nremote_port=2\n[vnc]\nremote_port=3\n[web]\n"
                      "remote_port=4\n")
        << QByteArray("remote_port=1\n[ssh]\nremote_port=2\n[vnc]\nremote_port=6001\n[web]\n"
                      "remote_port=4\n");
    QTest::newRow("keys like it") << QByteArray(
                                         "[vnc]\nremote_ports=1\nRemote_port=2\nremote_port=3\n")
                                  << QByteArray("[vnc]\nremote_ports=1\nRemote_port=2\n"
                                                "remote_port=6001\n");
    QTest::newRow("commented out")
        << QByteArray("[vnc]\n#remote_port=1\n; remote_port=2\n# remote_port = 3\nremote_port=4\n")
        << QByteArray(
               "[vnc]\n#remote_port=1\n; remote_port=2\n# remote_port = 3\nremote_port=6001\n");
    QTest::newRow("written twice") << QByteArray("[vnc]\nremote_port=1\nx=\nremote_port=2\n")
                                   << QByteArray("[vnc]\nremote_port=6001\nx=\nremote_port=6001\n");
    QTest::newRow("section written twice")
        << QByteArray("[vnc]\nremote_port=1\n[a]\n[vnc]\nremote_port=2\n")
        << QByteArray("[vnc]\nremote_port=6001\n[a]\n[vnc]\nremote_port=6001\n");
    QTest::newRow("CR LF") << QByteArray("[vnc]\r\nremote_port = 1\r\nx=2\r\n")
                           << QByteArray("[vnc]\r\nremote_port = 6001\r\nx=2\r\n");
    QTest::newRow("bare CR") << QByteArray("[vnc]\rremote_port=1\rx=2\r")
                             << QByteArray("[vnc]\rremote_port=6001\rx=2\r");
    QTest::newRow("no newline at the end")
        << QByteArray("[vnc]\nremote_port=1") << QByteArray("[vnc]\nremote_port=6001");
    QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbf[vnc]\nremote_port=1\n")
                                     << QByteArray("\xef\xbb\xbf[vnc]\nremote_port=6001\n");
    QTest::newRow("indented") << QByteArray(" [vnc]\n\tremote_port\t=\t1\n")
                              << QByteArray(" [vnc]\n\tremote_port\t=\t6001\n");
    QTest::newRow("comment behind it") << QByteArray("[vnc]\nremote_port=1 ; why\n")
                                       << QByteArray("[vnc]\nremote_port=6001 ; why\n");
    QTest::newRow("semicolon in quotes")
        << QByteArray("[vnc]\nremote_port=\"1;2\"\n") << QByteArray("[vnc]\nremote_port=6001\n");
    QTest::newRow("quote left open") << QByteArray("[vnc]\nremote_port=a\"b\nx=2\n")
                                     << QByteArray("[vnc]\nremote_port=6001\nx=2\n");
    QTest::newRow("back-slash at the end") << QByteArray("[vnc]\nremote_port=a\\\nx=2\n")
                                           << QByteArray("[vnc]\nremote_port=6001\nx=2\n");
    QTest::newRow("empty value") << QByteArray("[vnc]\nremote_port=\nx=2\n")
                                 << QByteArray("[vnc]\nremote_port=6001\nx=2\n");
    QTest::newRow("zero bytes") << QByteArray("[vnc]\na=\0\0\nremote_port=1\n\0", 26)
                                << QByteArray("[vnc]\na=\0\0\nremote_port=6001\n\0", 29);
}

void IniFileTest::onlyTheKeysLineChanges()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);

    QCOMPARE(IniWithEntry(before, remotePort), after);
    QCOMPARE(ReadAsQSettings(after, "vnc/remote_port"), QString("6001"));
    if (!after.contains("why") && !after.contains("[vnc]\r")) {
        QCOMPARE(ReadAsFrp(after)["vnc/remote_port"], QByteArray("6001"));
    }
}

void IniFileTest::newKeyComesToTheEndOfItsSection_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("empty file") << QByteArray("vnc") << QByteArray("")
                                << QByteArray("[vnc]\nkey=1\n");
    QTest::newRow("empty file, general")
        << QByteArray("") << QByteArray("") << QByteArray("[General]\nkey=1\n");
    QTest::newRow("no such section") << QByteArray("vnc") << QByteArray("[common]\na=1\n")
                                     << QByteArray("[common]\na=1\n\n[vnc]\nkey=1\n");
    QTest::newRow("no such section, no newline at the end")
        << QByteArray("vnc") << QByteArray("[common]\na=1")
        << QByteArray("[common]\na=1\n\n[vnc]\nkey=1\n");
    QTest::newRow("before the comment of the next section")
        << QByteArray("common") << QByteArray("[common]\na=1\n\n# vnc\n[vnc]\nb=2\n")
        << QByteArray("[common]\na=1\nkey=1\n\n# vnc\n[vnc]\nb=2\n");
    QTest::newRow("empty section") << QByteArray("common") << QByteArray("[common]\n[vnc]\nb=2\n")
                                   << QByteArray("[common]\nkey=1\n[vnc]\nb=2\n");
    QTest::newRow("last section, no newline at the end")
        << QByteArray("vnc") << QByteArray("[vnc]\r\nb=2")
        << QByteArray("[vnc]\r\nb=2\r\nkey=1\r\n");
    QTest::newRow("keys before any section")
        << QByteArray("") << QByteArray("# conf\na=1\n\n[x]\nb=2\n")
        << QByteArray("# conf\na=1\nkey=1\n\n[x]\nb=2\n");
    QTest::newRow("general section") << QByteArray("") << QByteArray("[general]\na=1\n[x]\nb=2\n")
                                     << QByteArray("[general]\na=1\nkey=1\n[x]\nb=2\n");
    QTest::newRow("other sections only") << QByteArray("") << QByteArray("[x]\nb=2\n")
                                         << QByteArray("[x]\nb=2\n\n[General]\nkey=1\n");
    QTest::newRow("comments only")
        << QByteArray("") << QByteArray("# conf\n") << QByteArray("# conf\n\n[General]\nkey=1\n");
    QTest::newRow("section in other letters") << QByteArray("vnc") << QByteArray("[VNC]\nkey=2\n")
                                              << QByteArray("[VNC]\nkey=2\n\n[vnc]\nkey=1\n");
    QTest::newRow("byte-order mark alone") << QByteArray("") << QByteArray("\xef\xbb\xbf")
                                           << QByteArray("\xef\xbb\xbf[General]\nkey=1\n");
}

void IniFileTest::newKeyComesToTheEndOfItsSection()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);

    QCOMPARE(IniWithEntry(before, {section, "key", "1"}), after);
    const QString key = section.isEmpty() ? QString("key") : section + "/key";
    QCOMPARE(ReadAsQSettings(after, key), QString("1"));
}

// Lines of others that QSettings reads in another way than the frp client: both have to see ours.
void IniFileTest::everyReaderSeesTheValue_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("quote left open in a token")
        << QByteArray("[common]\nserver_addr = x\ntoken = a\"b\n\n[vnc]\nremote_port = 1\n");
    QTest::newRow("quote left open in a comment")
        << QByteArray("# an 8\" panel\n[common]\nserver_addr = x\n[vnc]\nremote_port = 1\n");
    QTest::newRow("back-slash at the end of a comment")
        << QByteArray("[vnc]\n# C:\\\nremote_port = 1\n");
    QTest::newRow("quote left open in the same section")
        << QByteArray("[vnc]\nlocal = \"x\nremote_port = 1\n");
    QTest::newRow("section behind an open quote") << QByteArray("[common]\ntoken = \"\n");
    QTest::newRow("quoted text over two lines")
        << QByteArray("[common]\nmeta = \"a\nb\"\n[vnc]\nremote_port = 1\n");
}

void IniFileTest::everyReaderSeesTheValue()
{
    QFETCH(QByteArray, content);

    const QByteArray after = IniWithEntry(content, remotePort);

    QCOMPARE(ReadAsQSettings(after, "vnc/remote_port"), QString("6001"));
    QMap<QByteArray, QByteArray> expected = ReadAsFrp(content);
    expected["vnc/remote_port"] = "6001";
    QCOMPARE(ReadAsFrp(after), expected);
    for (const QByteArray& line : content.split('\n')) {
        QVERIFY2(line.startsWith("remote_port") || after.contains(line), line.constData());
    }
}

void IniFileTest::secondWritingChangesNothing_data()
{
    everyReaderSeesTheValue_data();
    QTest::newRow("key on the line of the byte-order mark")
        << QByteArray("\xef\xbb\xbfremote_port=1\n");
    QTest::newRow("empty") << QByteArray();
}

void IniFileTest::secondWritingChangesNothing()
{
    QFETCH(QByteArray, content);
    for (const IniEntry& entry : {remotePort, IniEntry{"", "remote_port", "1;2"}}) {
        const QByteArray once = IniWithEntry(content, entry);
        QCOMPARE(IniWithEntry(once, entry), once);
    }
}

void IniFileTest::otherBytesSurviveInAnyFile_data()
{
    QTest::addColumn<QByteArray>("content");

    QByteArray binary;
    for (uint i = 0, bits = 1; i < 1024 * 1024; ++i) {
        bits = bits * 1664525 + 1013904223;
        binary += static_cast<char>(bits >> 24);
    }
    QTest::newRow("1 MB of anything") << binary;
    QTest::newRow("1 MB of keys") << QByteArray("key_of_another = value\n").repeated(50000);
    QTest::newRow("1 MB in one line") << QByteArray(1024 * 1024, 'x');
    QTest::newRow("1 MB of zeros") << QByteArray(1024 * 1024, '\0');
    QTest::newRow("1 MB of line ends") << QByteArray(1024 * 1024, '\n');
    QTest::newRow("1 MB of quotes") << QByteArray(1024 * 1024, '"');
    QTest::newRow("1 MB of open sections") << QByteArray("[").repeated(1024 * 1024);
}

void IniFileTest::otherBytesSurviveInAnyFile()
{
    QFETCH(QByteArray, content);
    Board::WriteFile("/etc/ini/file", content);

    WriteIniFile("/etc/ini/file", {remotePort});

    const QByteArray after = Board::ReadFile("/etc/ini/file");
    QCOMPARE(ReadAsQSettings(after, "vnc/remote_port"), QString("6001"));
    QVERIFY(after.size() < content.size() + 100);
    // The section may stand in front of a line that QSettings sees no end of, and again at the end.
    const int added = after.indexOf("[vnc]");
    QVERIFY(content.startsWith(after.left(qMin(added, content.size()))));
    QVERIFY(after.contains(content.mid(added)));
}

void IniFileTest::unchangedValueKeepsItsSpelling()
{
    const QByteArray content = "[vnc]\nremote_port = \"6001\" ; as agreed\n";
    Board::WriteFile("/etc/ini/file", content);
    const QDateTime written = QFileInfo("/etc/ini/file").lastModified();

    WriteIniFile("/etc/ini/file", {remotePort});

    QCOMPARE(Board::ReadFile("/etc/ini/file"), content);
    QCOMPARE(QFileInfo("/etc/ini/file").lastModified(), written);
}

void IniFileTest::fileKeepsOwnerAndMode()
{
    Board::WriteFile("/etc/ini/file", "[vnc]\nremote_port=1\n");
    QCOMPARE(chmod("/etc/ini/file", 0440), 0);

    WriteIniFile("/etc/ini/file", {remotePort});

    struct stat after = {};
    QCOMPARE(stat("/etc/ini/file", &after), 0);
    QCOMPARE(after.st_mode & 07777, 0440u);
    QCOMPARE(Board::ReadFile("/etc/ini/file"), QByteArray("[vnc]\nremote_port=6001\n"));
}

void IniFileTest::symbolicLinkStaysOne()
{
    Board::WriteFile("/var/real/file", "[vnc]\nremote_port=1\n");
    QVERIFY(QFile::link("../../var/real/file", "/etc/ini/file"));

    WriteIniFile("/etc/ini/file", {remotePort});

    QVERIFY(QFileInfo("/etc/ini/file").isSymLink());
    QCOMPARE(Board::ReadFile("/var/real/file"), QByteArray("[vnc]\nremote_port=6001\n"));
    QCOMPARE(QDir("/var/real").entryList(QDir::Files), QStringList("file"));
}

void IniFileTest::linkToAMissingFileMakesTheFile()
{
    QVERIFY(QDir().mkpath("/var/none"));
    QVERIFY(QFile::link("/var/none/file", "/etc/ini/file"));

    WriteIniFile("/etc/ini/file", {remotePort});

    QVERIFY(QFileInfo("/etc/ini/file").isSymLink());
    QCOMPARE(Board::ReadFile("/var/none/file"), QByteArray("[vnc]\nremote_port=6001\n"));
}

void IniFileTest::whatIsNoFileIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("maker");

    QTest::newRow("folder") << QByteArray("mkdir /etc/ini/file");
    QTest::newRow("pipe") << QByteArray("mkfifo /etc/ini/file");
    QTest::newRow("endless device") << QByteArray("ln -s /dev/zero /etc/ini/file");
    QTest::newRow("link into a missing folder") << QByteArray("ln -s /nowhere/f /etc/ini/file");
}

void IniFileTest::whatIsNoFileIsLeftAlone()
{
    QFETCH(QByteArray, maker);
    QCOMPARE(std::system(maker.constData()), 0);
    struct stat before = {};
    QCOMPARE(lstat("/etc/ini/file", &before), 0);

    WriteIniFile("/etc/ini/file", {remotePort});

    struct stat after = {};
    QCOMPARE(lstat("/etc/ini/file", &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(QDir("/etc/ini").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             QStringList("file"));
}

void IniFileTest::fullDiskKeepsTheOldFile()
{
    QVERIFY(QDir().mkpath("/mnt/small"));
    QCOMPARE(mount("none", "/mnt/small", "tmpfs", 0, "size=64k"), 0);
    const QByteArray content = "[vnc]\nremote_port=1\n# " + QByteArray(5000, 'x');
    Board::WriteFile("/mnt/small/file", content);
    QFile rest("/mnt/small/rest");
    QVERIFY(rest.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (rest.write(QByteArray(4096, 'y')) == 4096) {
    }
    rest.close();

    WriteIniFile("/mnt/small/file", {remotePort});

    QCOMPARE(Board::ReadFile("/mnt/small/file"), content);
    QCOMPARE(QDir("/mnt/small").entryList(QDir::Files), QStringList({"file", "rest"}));

    QVERIFY(rest.remove());
    WriteIniFile("/mnt/small/file", {remotePort});
    QVERIFY(Board::ReadFile("/mnt/small/file").startsWith("[vnc]\nremote_port=6001\n# xx"));
    QCOMPARE(umount("/mnt/small"), 0);
}

void IniFileTest::readOnlyDiskKeepsTheOldFile()
{
    QVERIFY(QDir().mkpath("/mnt/fixed"));
    QCOMPARE(mount("none", "/mnt/fixed", "tmpfs", 0, nullptr), 0);
    Board::WriteFile("/mnt/fixed/file", "[vnc]\nremote_port=1\n");
    QCOMPARE(mount("none", "/mnt/fixed", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);

    WriteIniFile("/mnt/fixed/file", {remotePort});

    QCOMPARE(Board::ReadFile("/mnt/fixed/file"), QByteArray("[vnc]\nremote_port=1\n"));
    QCOMPARE(umount("/mnt/fixed"), 0);
}

void IniFileTest::writingKilledHalfwayLeavesTheOldFile()
{
    const QByteArray content = "[vnc]\nremote_port=1\n# " + QByteArray(5000, 'x');
    Board::WriteFile("/etc/ini/file", content);

    const pid_t writer = fork();
    if (writer == 0) {
        // The system ends whoever writes more than that into a file.
        const rlimit limit = {1000, 1000};
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_FSIZE, &limit);
        setrlimit(RLIMIT_CORE, &noCore);
        WriteIniFile("/etc/ini/file", {remotePort});
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(writer, &status, 0), writer);

    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
    QCOMPARE(Board::ReadFile("/etc/ini/file"), content);
}

void IniFileTest::killedWritingLeavesTheOldOrTheNewFile()
{
    // Large enough for a writing to take its time.
    const QByteArray rest = "\n" + QByteArray("# of another service\n").repeated(2000) + "end\n";
    const QByteArray first = "[vnc]\nremote_port=1" + rest;
    const QByteArray second = "[vnc]\nremote_port=2" + rest;
    Board::WriteFile("/etc/ini/file", first);

    int changes = 0;
    QByteArray last = first;
    for (int i = 0; i < 40; ++i) {
        const pid_t writer = fork();
        if (writer == 0) {
            for (int n = 0;; ++n) {
                WriteIniFile("/etc/ini/file", {{"vnc", "remote_port", n % 2 != 0 ? "1" : "2"}});
            }
        }
        // Any moment will do: each round takes another.
        usleep(20000 + 17777 * i % 50000);
        kill(writer, SIGKILL);
        QCOMPARE(waitpid(writer, nullptr, 0), writer);

        const QByteArray content = Board::ReadFile("/etc/ini/file");
        QVERIFY(content == first || content == second);
        changes += content != last ? 1 : 0;
        last = content;
    }
    QVERIFY(changes > 0);
}

QTEST_GUILESS_MAIN(IniFileTest)
#include "IniFileTest.moc"
