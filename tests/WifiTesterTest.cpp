#include "pages/WifiTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTextCodec>

#include <csignal>

namespace
{

const QColor green(12, 141, 66);
const QColor red(255, 0, 0);

enum Row { Status, Name, Passphrase, Host, Result };

const char* const resultsPath = "/tmp/wifi.ini";
const char* const scanHeader = "bssid / frequency / signal level / flags / ssid\\n";

bool IsInterfaceUp()
{
    QProcess ip;
    ip.start("ip", {"link", "show", "wlan0", "up"});
    ip.waitForFinished();
    return !ip.readAll().isEmpty();
}

} // namespace

class WifiTesterTest : public PageFixture<ToolWifiTest>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void interfaceDownLeavesTheButtonsWithoutEffect();
    void interfaceUpAtStartOffersToClose();
    void interfaceIsUpForTheWordRunning_data();
    void interfaceIsUpForTheWordRunning();
    void openSwitchesTheInterface();
    void openFlipsWhateverBecameOfTheCommand();

    void statusIsThatOfTheSupplicant_data();
    void statusIsThatOfTheSupplicant();
    void statusIsReadNoFurtherThan99Bytes();
    void statusNeverTakesTheStationForTheName();

    void scanListsTheNetworksOfAnEarlierScan();
    void scanShowsWhatTheSupplicantPrints_data();
    void scanShowsWhatTheSupplicantPrints();
    void nameIsShownAsPeopleReadIt();
    void longNameKeepsItsSignalInSight();
    void scanReplacesTheList();
    void scanIsReadAsUtf8WhateverTheLocale();
    void scanStopsAtAnEmptyLine();
    void scanWithoutAResultFileIsEmpty();
    void scanIntoAFolderIsEmpty();

    void connectSendsTheCommandsInOrder();
    void connectJoinsANetwork();
    void connectShowsThatItIsConnecting();
    void connectWithAWrongPassphraseDisconnects();
    void connectToASlowNetworkIsSeenAtRefresh();
    void connectNeedsANameAndAPassphrase_data();
    void connectNeedsANameAndAPassphrase();
    void connectJoinsANetworkOfAnyName_data();
    void connectJoinsANetworkOfAnyName();
    void connectRefusesWhatDoesNotFit_data();
    void connectRefusesWhatDoesNotFit();

    void saveWritesTheSupplicantsConfiguration();
    void pingAnswersOnlyWithAnAddress();
    void pingIsJudgedByItsText_data();
    void pingIsJudgedByItsText();
    void pingCommandIsCutAt99Bytes();
    void pingTargetNeverReachesAShell();
    void hangingPingIsGivenUp();

    void brokenToolsDoNotStopThePage_data();
    void brokenToolsDoNotStopThePage();
    void missingToolsDoNotStopThePage();

private:
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(m_page.get(), row, 1); }
    QComboBox* Networks() { return InGrid<QComboBox>(m_page.get(), Name, 1); }
    void BuildOn(const QByteArray& description);
    void PressAll();
    void ScanFor(int count);
    void Join(const QString& item, const QString& passphrase);
};

void WifiTesterTest::init()
{
    Speak("english");
}

void WifiTesterTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
    QFile::remove(resultsPath);
    QDir(resultsPath).removeRecursively();
}

/// Opens the page on a board with that description.
void WifiTesterTest::BuildOn(const QByteArray& description)
{
    Board::Become(description);
    Rebuild();
    Board::ForgetCalls();
}

void WifiTesterTest::PressAll()
{
    for (const char* button : {"btnRef", "btnScan", "btnConnect", "btnSave", "btnPing"}) {
        Press(m_page.get(), button);
    }
}

/// Scans until the list has `count` networks. A scan shows the results of the one before.
void WifiTesterTest::ScanFor(int count)
{
    QTRY_VERIFY_WITH_TIMEOUT((Press(m_page.get(), "btnScan"), Networks()->count() == count), 30000);
    QVERIFY(!QFileInfo::exists(resultsPath));
}

void WifiTesterTest::Join(const QString& item, const QString& passphrase)
{
    Networks()->clear();
    Networks()->addItem(item);
    Field(Passphrase)->setText(passphrase);
    Press(m_page.get(), "btnConnect");
}

void WifiTesterTest::interfaceDownLeavesTheButtonsWithoutEffect()
{
    BuildOn("network Bench -50 12345678\n");
    Board::PutTool("ping", ". \"$BOARD_HOME/record.sh\"\necho ttl=64");
    Networks()->addItem("Bench -50");
    Field(Passphrase)->setText("12345678");
    Field(Status)->setText("untouched");

    PressAll();

    QCOMPARE(Board::Calls(), QStringList());
    QCOMPARE(Networks()->count(), 1);
    QCOMPARE(Field(Status)->text(), QString("untouched"));
    QCOMPARE(Field(Result)->text(), QString("Failed!"));
    QCOMPARE(TextColour(Field(Result)), red);
}

void WifiTesterTest::interfaceUpAtStartOffersToClose()
{
    BuildOn("wlan0 up\n");

    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Close"));
    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
}

void WifiTesterTest::interfaceIsUpForTheWordRunning_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("toggle");

    QTest::newRow("net-tools")
        << QByteArray("echo 'wlan0: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1500'")
        << "Close";
    QTest::newRow("BusyBox")
        << QByteArray("echo 'wlan0     Link encap:Ethernet'\necho '          UP BROADCAST RUNNING'")
        << "Close";
    QTest::newRow("lower case") << QByteArray("echo running") << "Close";
    QTest::newRow("arrives late") << QByteArray("echo wlan0; sleep 1.5; echo RUNNING") << "Close";
    QTest::newRow("up, not running") << QByteArray("echo 'UP BROADCAST MULTICAST'") << "Open";
    QTest::newRow("no whole line") << QByteArray("printf RUNNING") << "Open";
    QTest::newRow("on the error channel") << QByteArray("echo RUNNING >&2") << "Open";
    QTest::newRow("nothing") << QByteArray("exit 1") << "Open";
    QTest::newRow("killed") << QByteArray("echo UP; kill -9 $$") << "Open";
    QTest::newRow("megabytes") << QByteArray("yes noise | head -c 4000000; echo RUNNING")
                               << "Close";
    QTest::newRow("one line of megabytes")
        << QByteArray("head -c 4000000 /dev/zero | tr '\\0' x; echo RUNNING") << "Close";
}

void WifiTesterTest::interfaceIsUpForTheWordRunning()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, toggle);
    Board::Become("");
    Board::PutTool("ifconfig", script);
    Rebuild();

    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), toggle);
}

void WifiTesterTest::openSwitchesTheInterface()
{
    BuildOn("");
    QVERIFY(!IsInterfaceUp());

    Press(m_page.get(), "m_btnOpenWifi");

    QVERIFY(IsInterfaceUp());
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Close"));
    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
    QCOMPARE(Board::Calls(), QStringList("wpa_cli -i wlan0 status"));

    Press(m_page.get(), "m_btnOpenWifi");

    QVERIFY(!IsInterfaceUp());
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Open"));
    QCOMPARE(Board::Calls().size(), 1);
}

void WifiTesterTest::openFlipsWhateverBecameOfTheCommand()
{
    BuildOn("");
    Board::PutTool("ifconfig", ". \"$BOARD_HOME/record.sh\"\nexit 1");

    Press(m_page.get(), "m_btnOpenWifi");
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Close"));
    Press(m_page.get(), "m_btnOpenWifi");
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Open"));

    QCOMPARE(Board::Calls().filter("ifconfig"),
             QStringList({"ifconfig wlan0 up", "ifconfig wlan0 down"}));
}

void WifiTesterTest::statusIsThatOfTheSupplicant_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QString>("shown");

    const QByteArray joined = "wpa_state=COMPLETED\nip_address=192.168.43.2\n";
    QTest::newRow("joined") << "bssid=02:00:00:00:01:00\nfreq=2412\nssid=\\xe5\\xb7\\xa5 1\n"
                               "id=0\nkey_mgmt=WPA2-PSK\n" +
                                   joined
                            << "Connected 工 1";
    QTest::newRow("scanning") << QByteArray("wpa_state=SCANNING\n") << "Disconnect";
    QTest::newRow("no supplicant")
        << QByteArray("Failed to connect to non-global ctrl_ifname: wlan0  error: No such file\n")
        << "Disconnect";
    QTest::newRow("no name") << joined << "before";
    QTest::newRow("no line end after the name within reach")
        << joined + "ssid=" + QByteArray(80, 'n') + "\n"
        << "before";
}

void WifiTesterTest::statusIsThatOfTheSupplicant()
{
    QFETCH(QByteArray, status);
    QFETCH(QString, shown);
    BuildOn("wlan0 up\n");
    Board::WriteFile("/run/board/status", status);
    Board::PutTool("wpa_cli", "cat /run/board/status");
    Field(Status)->setText("before");

    Press(m_page.get(), "btnRef");

    QCOMPARE(Field(Status)->text(), shown);
}

void WifiTesterTest::statusIsReadNoFurtherThan99Bytes()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("wpa_cli", "cat /run/board/status");
    const QByteArray rest = "\nwpa_state=COMPLETED\nip_address";
    const QByteArray fitting(99 - 5 - rest.size(), 'n');

    Board::WriteFile("/run/board/status", "ssid=" + fitting + rest + "=192.168.43.2\n");
    Press(m_page.get(), "btnRef");
    QCOMPARE(Field(Status)->text(), "Connected " + QString(fitting));

    Board::WriteFile("/run/board/status", "ssid=" + fitting + "n" + rest + "=192.168.43.2\n");
    Press(m_page.get(), "btnRef");
    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
}

void WifiTesterTest::statusNeverTakesTheStationForTheName()
{
    BuildOn("wlan0 up\n");
    Board::WriteFile("/run/board/status", "bssid=02:00:00:00:01:00\nwpa_state=COMPLETED\n"
                                          "ip_address=192.168.43.2\nssid=Bench\n");
    Board::PutTool("wpa_cli", "cat /run/board/status");

    Press(m_page.get(), "btnRef");

    QCOMPARE(Field(Status)->text(), QString("Connected Bench"));
}

void WifiTesterTest::scanListsTheNetworksOfAnEarlierScan()
{
    const QByteArray air = "network Bench -50 12345678\nnetwork \\xe5\\xb7\\xa5 -61 12345678\n"
                           "network My\\x20Bench -70 12345678\n"
                           "network Secret -75 12345678 hidden\nnetwork Guests -80 -\n";
    BuildOn("wlan0 up\nscan-time 3600\n" + air);
    Press(m_page.get(), "btnScan");
    QCOMPARE(Networks()->count(), 0);
    QVERIFY(!QFileInfo::exists(resultsPath));
    QCOMPARE(Board::Calls(),
             QStringList({"wpa_cli -i wlan0 scan", "wpa_cli -i wlan0 scan_results"}));

    // The scan has ended.
    Board::WriteFile("/run/board/description", "scan-time 0\n" + air);
    Press(m_page.get(), "btnScan");

    QCOMPARE(Networks()->count(), 5);
    QCOMPARE(Networks()->itemText(0), QString("Bench -50"));
    QCOMPARE(Networks()->itemText(1), QString("\\xe5\\xb7\\xa5 -61"));
    QCOMPARE(Networks()->itemText(2), QString("My -70"));
    QCOMPARE(Networks()->itemText(3), QString(" -75"));
    QCOMPARE(Networks()->itemText(4), QString("Guests -80"));
    QVERIFY(!QFileInfo::exists(resultsPath));
}

void WifiTesterTest::scanShowsWhatTheSupplicantPrints_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QStringList>("items");

    const QByteArray header = scanHeader;
    const QByteArray station = "02:00:00:00:01:00\\t2412\\t-50\\t[ESS]\\t";
    QTest::newRow("header only") << header << QStringList();
    QTest::newRow("header without line end") << header.chopped(2) << QStringList();
    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("one") << header + station + "Bench\\n" << QStringList("Bench -50");
    QTest::newRow("no line end") << header + station + "Bench" << QStringList("Bench -50");
    QTest::newRow("twice the same") << header + station + "Bench\\n" + station + "Bench\\n"
                                    << QStringList{"Bench -50", "Bench -50"};
    QTest::newRow("leading dash") << header + station + "-n\\n" << QStringList("-n -50");
    QTest::newRow("in UTF-8") << header + station + "工厂\\n" << QStringList("工厂 -50");
    QTest::newRow("no supplicant")
        << QByteArray("Failed to connect to non-global ctrl_ifname\\n") << QStringList();
    // More than the real client prints: its replies end at 4 kB.
    QTest::newRow("200") << header + (station + "Bench\\n").repeated(200)
                         << QStringList(QVector<QString>(200, "Bench -50").toList());
}

void WifiTesterTest::scanShowsWhatTheSupplicantPrints()
{
    QFETCH(QByteArray, output);
    QFETCH(QStringList, items);
    BuildOn("wlan0 up\n");
    Board::PutTool("wpa_cli", "[ $3 != scan_results ] || printf '%b' '" + output + "'");

    Press(m_page.get(), "btnScan");

    QCOMPARE(Networks()->count(), items.size());
    for (int i = 0; i < items.size(); ++i) {
        QCOMPARE(Networks()->itemText(i), items[i]);
    }
    QVERIFY(!QFileInfo::exists(resultsPath));
}

void WifiTesterTest::nameIsShownAsPeopleReadIt()
{
    const QString item = R"(\xe5\xb7\xa5\xe5\x8e\x82 -61)";
    const QString shown = "工厂" + QString(QChar(0x200e)) + " -61";
    BuildOn("");
    auto* list = qobject_cast<QStyledItemDelegate*>(Networks()->view()->itemDelegate());
    QVERIFY(list != nullptr);

    Networks()->addItem(item);
    const QImage closed = Networks()->grab().toImage();

    QCOMPARE(Networks()->currentText(), item);
    QCOMPARE(list->displayText(item, QLocale()), shown);
    // The closed box shows it as a list without escapes would.
    QComboBox plain;
    plain.addItem(shown);
    plain.resize(Networks()->size());
    plain.setEnabled(Networks()->isEnabled());
    QCOMPARE(closed, plain.grab().toImage());
}

void WifiTesterTest::longNameKeepsItsSignalInSight()
{
    BuildOn("");
    Networks()->setFixedWidth(200);
    QImage shown[2];

    for (const int signal : {0, 1}) {
        Networks()->clear();
        Networks()->addItem(QString(32, 'n') + QString(" -5%1").arg(signal));
        shown[signal] = Networks()->grab().toImage();
    }

    QVERIFY(shown[0] != shown[1]);
    QCOMPARE(Networks()->view()->textElideMode(), Qt::ElideMiddle);
}

void WifiTesterTest::scanReplacesTheList()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\n");
    Networks()->addItems({"old", "older"});

    ScanFor(1);

    QCOMPARE(Networks()->currentText(), QString("Bench -50"));
}

void WifiTesterTest::scanIsReadAsUtf8WhateverTheLocale()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("awk", "cat >/dev/null; printf 'header\\n网络 -50\\n'");

    // A service has no language of its own.
    QTextCodec* before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    Press(m_page.get(), "btnScan");
    QTextCodec::setCodecForLocale(before);

    QCOMPARE(Networks()->itemText(0), QString::fromUtf8("网络 -50"));
}

void WifiTesterTest::scanStopsAtAnEmptyLine()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("awk", "cat >/dev/null; printf 'header\\nBench -50\\n\\nAnnex -60\\n'");

    Press(m_page.get(), "btnScan");

    QCOMPARE(Networks()->count(), 1);
}

void WifiTesterTest::scanWithoutAResultFileIsEmpty()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("awk", "rm /tmp/wifi.ini");
    Networks()->addItem("old");

    Press(m_page.get(), "btnScan");

    QCOMPARE(Networks()->count(), 0);
}

void WifiTesterTest::scanIntoAFolderIsEmpty()
{
    BuildOn("wlan0 up\n");
    QVERIFY(QDir().mkpath(QString(resultsPath) + "/inside"));
    Networks()->addItem("old");

    Press(m_page.get(), "btnScan");

    QCOMPARE(Networks()->count(), 0);
    QVERIFY(QFileInfo::exists(QString(resultsPath) + "/inside"));
}

void WifiTesterTest::connectSendsTheCommandsInOrder()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\n");

    Join("Bench -50", "12345678");

    QCOMPARE(Board::Calls(), QStringList({
                                 "wpa_cli -i wlan0 remove_network all",
                                 "wpa_cli -i wlan0 add_network",
                                 "wpa_cli -i wlan0 set_network 0 ssid \\\"Bench\\\"",
                                 "wpa_cli -i wlan0 set_network 0 psk \\\"12345678\\\"",
                                 "wpa_cli -i wlan0 enable_network 0",
                                 "udhcpc -i wlan0 -b",
                                 "wpa_cli -i wlan0 status",
                             }));
}

void WifiTesterTest::connectJoinsANetwork()
{
    BuildOn(
        "network Annex -70 87654321\nnetwork Bench -50 12345678\nhost dns.alidns.com 223.5.5.5\n");
    Press(m_page.get(), "m_btnOpenWifi");
    ScanFor(2);
    Networks()->setCurrentIndex(1);
    QTest::keyClicks(Field(Passphrase), "12345678");

    Press(m_page.get(), "btnConnect");

    QCOMPARE(Field(Status)->text(), QString("Connected Bench"));
    Press(m_page.get(), "btnPing");
    QCOMPARE(Field(Result)->text(), QString("Succeeded!"));
    QCOMPARE(TextColour(Field(Result)), green);
    // A page opened anew finds it so.
    Rebuild();
    QCOMPARE(Field(Status)->text(), QString("Connected Bench"));
}

void WifiTesterTest::connectShowsThatItIsConnecting()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\n");
    QStringList shown;
    connect(Field(Status), &QLineEdit::textChanged, this, [&shown](const QString& text) {
        shown += text;
        // Before anything blocks.
        QVERIFY(shown.size() > 1 || Board::Calls().isEmpty());
    });

    Join("Bench -50", "12345678");

    QCOMPARE(shown, QStringList({"Connecting", "Connected Bench"}));
}

void WifiTesterTest::connectWithAWrongPassphraseDisconnects()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\nhost dns.alidns.com 223.5.5.5\n");
    Join("Bench -50", "12345678");
    QCOMPARE(Field(Status)->text(), QString("Connected Bench"));

    Join("Bench -50", "123456789");

    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
    Press(m_page.get(), "btnPing");
    QCOMPARE(Field(Result)->text(), QString("Failed!"));
    QCOMPARE(TextColour(Field(Result)), red);
}

void WifiTesterTest::connectToASlowNetworkIsSeenAtRefresh()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678 slow\n");

    Join("Bench -50", "12345678");

    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
    QTRY_VERIFY_WITH_TIMEOUT(
        (Press(m_page.get(), "btnRef"), Field(Status)->text() == QString("Connected Bench")),
        30000);
}

void WifiTesterTest::connectNeedsANameAndAPassphrase_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("passphrase");

    QTest::newRow("no passphrase") << "Bench -50"
                                   << "";
    QTest::newRow("hidden network") << " -50"
                                    << "12345678";
    QTest::newRow("empty item") << ""
                                << "12345678";
    QTest::newRow("neither") << ""
                             << "";
}

void WifiTesterTest::connectNeedsANameAndAPassphrase()
{
    QFETCH(QString, item);
    QFETCH(QString, passphrase);
    BuildOn("wlan0 up\n");
    Field(Status)->setText("before");

    Join(item, passphrase);
    QCOMPARE(Field(Status)->text(), QString("before"));
    Networks()->clear();
    Press(m_page.get(), "btnConnect");

    QCOMPARE(Field(Status)->text(), QString("before"));
    QCOMPARE(Board::Calls(), QStringList());
}

void WifiTesterTest::connectJoinsANetworkOfAnyName_data()
{
    QTest::addColumn<QByteArray>("name");

    for (const char* name : {"a';reboot;'", "工厂", "\xff\xfe\x80"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void WifiTesterTest::connectJoinsANetworkOfAnyName()
{
    QFETCH(QByteArray, name);
    QByteArray described;
    for (const char c : name) {
        described += "\\x" + QByteArray(1, c).toHex();
    }
    BuildOn("wlan0 up\nscan-time 0\nnetwork Other -40 12345678\nnetwork " + described +
            " -50 12345678\n");
    ScanFor(2);
    Networks()->setCurrentIndex(1);
    Field(Passphrase)->setText("12345678");
    Board::ForgetCalls();

    Press(m_page.get(), "btnConnect");

    QProcess ssid;
    ssid.start("wpa_cli", {"-i", "wlan0", "get_network", "0", "ssid"});
    QVERIFY(ssid.waitForFinished());
    const QByteArray held = ssid.readAll();
    QVERIFY2(held == '"' + name + '"' || held == name.toHex(), held.constData());
    QCOMPARE(Board::Calls().filter(QRegularExpression("^(?!wpa_cli|udhcpc)")), QStringList());
    QProcess status;
    status.start("wpa_cli", {"-i", "wlan0", "status"});
    QVERIFY(status.waitForFinished());
    QVERIFY(status.readAll().contains("wpa_state=COMPLETED\nip_address="));
}

void WifiTesterTest::connectRefusesWhatDoesNotFit_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("passphrase");
    QTest::addColumn<bool>("fits");

    QTest::newRow("all") << QString(59, 'n') << QString(60, 'p') << true;
    QTest::newRow("passphrase too long") << "Bench" << QString(61, 'p') << false;
    QTest::newRow("name too long") << QString(60, 'n') << "12345678" << false;
}

void WifiTesterTest::connectRefusesWhatDoesNotFit()
{
    QFETCH(QString, name);
    QFETCH(QString, passphrase);
    QFETCH(bool, fits);
    BuildOn("wlan0 up\n");
    Board::PutTool("udhcpc", ". \"$BOARD_HOME/record.sh\"");
    QStringList shown;
    connect(Field(Status), &QLineEdit::textChanged, this,
            [&shown](const QString& text) { shown += text; });

    Join(name + " -50", passphrase);

    QCOMPARE(shown.contains("Failed!"), !fits);
    QCOMPARE(shown.contains("Connecting"), fits);
    QCOMPARE(Board::Calls().isEmpty(), !fits);
    QCOMPARE(Networks()->currentText(), name + " -50");
}

void WifiTesterTest::saveWritesTheSupplicantsConfiguration()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\n");
    Join("Bench -50", "12345678");
    QVERIFY(!QFile::exists("/etc/wpa_supplicant.conf"));
    Board::ForgetCalls();

    Press(m_page.get(), "btnSave");

    QCOMPARE(Board::Calls(), QStringList("wpa_cli -i wlan0 save_config"));
    QVERIFY(Board::ReadFile("/etc/wpa_supplicant.conf")
                .contains("network={\n\tssid=\"Bench\"\n\tpsk=\"12345678\"\n}\n"));
    QCOMPARE(Field(Status)->text(), QString("Connected Bench"));
}

void WifiTesterTest::pingAnswersOnlyWithAnAddress()
{
    BuildOn("wlan0 up\nnetwork Bench -50 12345678\nhost dns.alidns.com 223.5.5.5\n");
    Press(m_page.get(), "btnPing");
    QCOMPARE(Field(Result)->text(), QString("Failed!"));

    Join("Bench -50", "12345678");
    Field(Host)->setText("192.168.43.1");
    Press(m_page.get(), "btnPing");

    QCOMPARE(Field(Result)->text(), QString("Succeeded!"));
    QCOMPARE(Field(Host)->text(), QString("192.168.43.1"));
}

void WifiTesterTest::pingIsJudgedByItsText_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<bool>("good");

    QTest::newRow("answer") << QByteArray("Reply: bytes=32 TTL=128") << true;
    QTest::newRow("no text at all") << QByteArray("\\377\\376\\001") << false;
}

void WifiTesterTest::pingIsJudgedByItsText()
{
    QFETCH(QByteArray, output);
    QFETCH(bool, good);
    BuildOn("wlan0 up\n");
    Board::PutTool("ping", ". \"$BOARD_HOME/record.sh\"\nprintf '%b' '" + output + "'\nexit 1");

    Press(m_page.get(), "btnPing");

    QCOMPARE(Field(Result)->text(), QString(good ? "Succeeded!" : "Failed!"));
    QCOMPARE(TextColour(Field(Result)), good ? green : red);
    QCOMPARE(Board::Calls(), QStringList("ping -I wlan0 dns.alidns.com -w 2 -c 2"));
}

void WifiTesterTest::pingCommandIsCutAt99Bytes()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("ping", ". \"$BOARD_HOME/record.sh\"");

    Field(Host)->setText(QString(1000, 'h'));
    Press(m_page.get(), "btnPing");
    QCOMPARE(Board::Calls(), QStringList("ping -I wlan0 " + QString(99 - 14, 'h')));

    // A character cut in two is shown as such, not read beyond.
    Board::ForgetCalls();
    Field(Host)->setText(QString(99 - 14 - 1, 'h') + "工厂");
    Press(m_page.get(), "btnPing");
    QCOMPARE(Board::Calls().size(), 1);
    QCOMPARE(Field(Result)->text(), QString("Failed!"));
}

void WifiTesterTest::pingTargetNeverReachesAShell()
{
    BuildOn("wlan0 up\n");
    Field(Host)->setText("1.2.3.4;touch${IFS}/tmp/ran;$(touch /tmp/ran)`touch /tmp/ran`");

    Press(m_page.get(), "btnPing");

    QCOMPARE(Field(Result)->text(), QString("Failed!"));
    QVERIFY(!QFile::exists("/tmp/ran"));
}

void WifiTesterTest::hangingPingIsGivenUp()
{
    BuildOn("wlan0 up\n");
    Board::PutTool("ping", "echo $$ >/tmp/ping-id; exec sleep 120");

    Press(m_page.get(), "btnPing");

    QCOMPARE(Field(Result)->text(), QString("Failed!"));
    // It does not outlive the check.
    const pid_t ping = Board::ReadFile("/tmp/ping-id").trimmed().toInt();
    QVERIFY(ping > 0 && kill(ping, 0) != 0);
}

void WifiTesterTest::brokenToolsDoNotStopThePage_data()
{
    QTest::addColumn<QByteArray>("script");

    QTest::newRow("prints megabytes") << QByteArray("yes 'a b c d e f' | head -c 4000000");
    QTest::newRow("prints one line of megabytes")
        << QByteArray("head -c 4000000 /dev/zero | tr '\\0' x; echo");
    QTest::newRow("prints names of megabytes") << QByteArray(
        "echo; echo; printf 'a b c d '; head -c 4000000 /dev/zero | tr '\\0' x; echo");
    QTest::newRow("prints zeros") << QByteArray("head -c 100000 /dev/zero");
    QTest::newRow("prints anything") << QByteArray("seq 20000 | gzip -c");
}

void WifiTesterTest::brokenToolsDoNotStopThePage()
{
    QFETCH(QByteArray, script);
    Board::Become("");
    Board::PutTool("ifconfig", script);
    Board::PutTool("ping", script);
    // What nobody reads goes to the console, which here is the test log.
    Board::PutTool("udhcpc", "exec >/dev/null\n" + script);
    Board::PutTool("wpa_cli",
                   "case $3 in status | scan_results) ;; *) exec >/dev/null ;; esac\n" + script);
    Rebuild();
    Press(m_page.get(), "m_btnOpenWifi");
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Close"));

    PressAll();
    Join("Bench -50", "12345678");

    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
    QCOMPARE(Field(Result)->text(), QString("Failed!"));
}

void WifiTesterTest::missingToolsDoNotStopThePage()
{
    Board::Become("");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");

    Rebuild();
    QCOMPARE(m_page->findChild<QPushButton*>("m_btnOpenWifi")->text(), QString("Open"));
    Press(m_page.get(), "m_btnOpenWifi");
    PressAll();
    Join("Bench -50", "12345678");
    qputenv("PATH", path);

    QCOMPARE(Field(Status)->text(), QString("Disconnect"));
    QCOMPARE(Field(Result)->text(), QString("Failed!"));
    QCOMPARE(Networks()->count(), 1);
}

QTEST_MAIN(WifiTesterTest)
#include "WifiTesterTest.moc"
