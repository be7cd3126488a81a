#include "pages/WifiTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QComboBox>
#include <QFileInfo>
#include <QProcess>

#include <algorithm>

namespace
{

const char* const supplicantPath = "/usr/sbin/wpa_supplicant";
const char* const clientPath = "/usr/sbin/wpa_cli";
const char* const configurationPath = "/etc/wpa_supplicant.conf";

QByteArray Ask(const QStringList& question)
{
    QProcess client;
    client.start(clientPath, QStringList{"-i", "wlan0"} + question);
    client.waitForFinished();
    return client.readAll();
}

bool IsPrintable(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// A name as the client prints it after a scan.
QByteArray Escaped(const QByteArray& name)
{
    QByteArray text;
    for (const char c : name) {
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (c == '\033') {
            text += "\\e";
        } else if (c == '\t') {
            text += "\\t";
        } else if (IsPrintable({1, c})) {
            text += c;
        } else {
            text += "\\x" + QByteArray(1, c).toHex();
        }
    }
    return text;
}

} // namespace

/// Gives the page's commands to the real supplicant through its real client, and to the simulated
/// board's supplicant, which must react in the same way.
class WpaSupplicantTest : public PageFixture<ToolWifiTest>
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void namesAreHeldAsTheyAre_data();
    void namesAreHeldAsTheyAre();
    void passphrasesAreHeldAsTheyAre_data();
    void passphrasesAreHeldAsTheyAre();
    void statusOfTheRealOneIsUnderstood();
    void simulatedOneJoinsWhatItHasTheKeyOf_data();
    void simulatedOneJoinsWhatItHasTheKeyOf();

private:
    void Start(const QString& driver);
    void StartTheRealOne(const QString& driver);
    void Join(const QByteArray& name, const QString& passphrase);

    QProcess* m_supplicant = nullptr;
};

void WpaSupplicantTest::initTestCase()
{
    QVERIFY2(QFileInfo(supplicantPath).isExecutable() && QFileInfo(clientPath).isExecutable(),
             "packaging/install-packages installs wpasupplicant");
}

void WpaSupplicantTest::init()
{
    Speak("english");
    Board::Become("wlan0 up\n");
    Board::PutTool("udhcpc", "exit 0");
    Board::WriteFile(configurationPath, "ctrl_interface=/var/run/wpa_supplicant\n"
                                        "update_config=1\n");
}

void WpaSupplicantTest::cleanup()
{
    m_page.reset();
    if (m_supplicant != nullptr) {
        m_supplicant->terminate();
        QVERIFY(m_supplicant->waitForFinished());
        delete m_supplicant;
        m_supplicant = nullptr;
    }
    Board::RemoveTools();
}

void WpaSupplicantTest::Start(const QString& driver)
{
    if (driver != "simulated") {
        StartTheRealOne(driver);
    }
    Rebuild();
}

/// Stops the board's own supplicant and starts the real one.
void WpaSupplicantTest::StartTheRealOne(const QString& driver)
{
    QCOMPARE(Ask({"terminate"}), QByteArray("OK\n"));
    m_supplicant = new QProcess;
    m_supplicant->setProcessChannelMode(QProcess::MergedChannels);
    m_supplicant->start(supplicantPath, {"-i", "wlan0", "-D", driver, "-c", configurationPath});
    QTRY_VERIFY2(Ask({"ping"}) == "PONG\n", m_supplicant->peek(10000).constData());
}

void WpaSupplicantTest::Join(const QByteArray& name, const QString& passphrase)
{
    auto* networks = m_page->findChild<QComboBox*>();
    networks->clear();
    networks->addItem(QString(Escaped(name)) + " -50");
    InGrid<QLineEdit>(m_page.get(), 2, 1)->setText(passphrase);
    Press(m_page.get(), "btnConnect");
}

void WpaSupplicantTest::namesAreHeldAsTheyAre_data()
{
    QTest::addColumn<QString>("driver");

    QTest::newRow("real") << "wired";
    QTest::newRow("simulated") << "simulated";
}

void WpaSupplicantTest::namesAreHeldAsTheyAre()
{
    QFETCH(QString, driver);
    Start(driver);
    const char* const names[] = {"Bench",
                                 "a'b",
                                 "a';reboot;'",
                                 "a\"b",
                                 "\"quoted\"",
                                 "a\\b",
                                 "\\x41",
                                 "end\\",
                                 "x=1",
                                 "-n",
                                 "$HOME",
                                 "`reboot`",
                                 "a&b|c",
                                 "#",
                                 "!*?~",
                                 "%s%n",
                                 "工厂",
                                 "Caf\xc3\xa9",
                                 "\xff\xfe\x80",
                                 "\x01\x1b\x7f",
                                 "a\tb",
                                 "0123456789abcdef0123456789abcdef",
                                 "一二三四五六七八九十ab"};
    for (const char* const text : names) {
        const QByteArray name = text;
        Join(name, "12345678");

        const QByteArray expected = IsPrintable(name) ? '"' + name + '"' : name.toHex();
        QCOMPARE(Ask({"get_network", "0", "ssid"}), expected);
        QCOMPARE(Ask({"get_network", "1", "ssid"}), QByteArray("FAIL\n"));
        QCOMPARE(Ask({"get_network", "0", "disabled"}), QByteArray("0"));
    }
    QVERIFY(!Board::Calls().contains("reboot"));
}

void WpaSupplicantTest::passphrasesAreHeldAsTheyAre_data()
{
    namesAreHeldAsTheyAre_data();
}

void WpaSupplicantTest::passphrasesAreHeldAsTheyAre()
{
    QFETCH(QString, driver);
    Start(driver);
    const QString passphrases[] = {
        "12345678",    "it's a bench", "';reboot;'x",        "say \"hello\"", "\"quoted\"",
        "back\\slash", "ends in \\",   "$(reboot) `reboot`", "  blanks  ",    "a;b&c|d>e#f",
        "密码密码",    "%s%s%s%s",     QString(60, 'p')};
    for (const QString& passphrase : passphrases) {
        Join("Bench", passphrase);
        // The client does not show passphrases; the saved configuration does.
        Press(m_page.get(), "btnSave");

        QCOMPARE(Ask({"get_network", "0", "psk"}), QByteArray("*"));
        const QByteArray configuration = Board::ReadFile(configurationPath);
        QVERIFY2(configuration.contains("\n\tpsk=\"" + passphrase.toUtf8() + "\"\n"),
                 configuration.constData());
    }
    QVERIFY(!Board::Calls().contains("reboot"));
}

void WpaSupplicantTest::statusOfTheRealOneIsUnderstood()
{
    Board::Become("link wlan0 10.9.9.2 10.9.9.1\n");
    // With this driver and these settings it connects to a cable, without a radio.
    Board::WriteFile(configurationPath, "ctrl_interface=/var/run/wpa_supplicant\nap_scan=0\n");
    Start("wired");
    const auto* status = InGrid<QLineEdit>(m_page.get(), 0, 1);
    QCOMPARE(Ask({"add_network"}), QByteArray("0\n"));
    QCOMPARE(Ask({"set_network", "0", "ssid", "\"Bench\""}), QByteArray("OK\n"));
    QCOMPARE(Ask({"set_network", "0", "key_mgmt", "NONE"}), QByteArray("OK\n"));
    QCOMPARE(Ask({"enable_network", "0"}), QByteArray("OK\n"));
    QTRY_VERIFY2(Ask({"status"}).contains("wpa_state=COMPLETED"), Ask({"status"}).constData());

    Press(m_page.get(), "btnRef");
    QCOMPARE(status->text(), QString("Connected Bench"));

    QCOMPARE(Ask({"disconnect"}), QByteArray("OK\n"));
    QTRY_VERIFY2(!Ask({"status"}).contains("wpa_state=COMPLETED"), Ask({"status"}).constData());
    Press(m_page.get(), "btnRef");
    QCOMPARE(status->text(), QString("Disconnect"));
}

void WpaSupplicantTest::simulatedOneJoinsWhatItHasTheKeyOf_data()
{
    QTest::addColumn<QByteArray>("network");
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<QByteArray>("state");

    const QString key = "psk=\"12345678\"";
    QTest::newRow("passphrase") << QByteArray("12345678") << QStringList{key}
                                << QByteArray("COMPLETED");
    QTest::newRow("wrong passphrase")
        << QByteArray("87654321") << QStringList{key} << QByteArray("SCANNING");
    QTest::newRow("no passphrase")
        << QByteArray("12345678") << QStringList() << QByteArray("SCANNING");
    QTest::newRow("open") << QByteArray("-") << QStringList{"key_mgmt=NONE"}
                          << QByteArray("COMPLETED");
    QTest::newRow("open, with a passphrase")
        << QByteArray("-") << QStringList{key} << QByteArray("SCANNING");
    QTest::newRow("hidden") << QByteArray("12345678 hidden") << QStringList{key}
                            << QByteArray("SCANNING");
    QTest::newRow("hidden, by its name")
        << QByteArray("12345678 hidden") << QStringList{key, "scan_ssid=1"}
        << QByteArray("COMPLETED");
    QTest::newRow("slow") << QByteArray("12345678 slow") << QStringList{key}
                          << QByteArray("ASSOCIATING");
}

void WpaSupplicantTest::simulatedOneJoinsWhatItHasTheKeyOf()
{
    QFETCH(QByteArray, network);
    QFETCH(QStringList, variables);
    QFETCH(QByteArray, state);
    Board::Become("wlan0 up\nnetwork Bench -50 " + network + "\n");

    QCOMPARE(Ask({"add_network"}), QByteArray("0\n"));
    for (const QString& variable : QStringList("ssid=\"Bench\"") + variables) {
        const QStringList set = {"set_network", "0", variable.section('=', 0, 0),
                                 variable.section('=', 1)};
        QCOMPARE(Ask(set), QByteArray("OK\n"));
    }
    QCOMPARE(Ask({"enable_network", "0"}), QByteArray("OK\n"));

    const QByteArray status = Ask({"status"});
    QVERIFY2(status.contains("wpa_state=" + state + "\n"), status.constData());
}

QTEST_MAIN(WpaSupplicantTest)
#include "WpaSupplicantTest.moc"
