#include "pages/WifiTester.h"

#include "instruments/NameSelector.h"
#include "instruments/Ping.h"
#include "instruments/ResultField.h"
#include "instruments/Rows.h"
#include "instruments/Shell.h"
#include "protocols/BoardTexts.h"
#include "protocols/Supplicant.h"
#include "texts/MoskTranslator.h"

#include <QFile>
#include <QGridLayout>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTextStream>

#include <cstdio>

namespace
{

/// The same in both languages. The translator returns a text that is no key unchanged.
const char* const pingTitle = "Ping:";

} // namespace

ToolWifiTest::ToolWifiTest(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(40, 20, 40, 20);
    layout->setSpacing(20);

    m_lineStatus = new QLineEdit(this);
    m_comboSsid = new NameSelector(ShownNetwork, this);
    m_linePassword = new QLineEdit(this);
    m_linePingHost = new QLineEdit(publicPingTarget, this);
    m_lineResult = new QLineEdit(this);

    m_isWifiEnabled = IsWifiEnable();
    const char* const switchKey = m_isWifiEnabled ? "Label_1000713" : "Label_1000712";
    const QSize size(100, 30);
    // The member's name is the object name too: the button is found by it from outside.
    m_btnOpenWifi = AddRow(layout, 0, size,
                           {"Label_1000700", m_lineStatus, {switchKey, Name("m_btnOpenWifi")}});
    QPushButton* scan =
        AddRow(layout, 1, size, {"Label_1000701", m_comboSsid, {"Label_1000702", Name("btnScan")}});
    m_comboSsid->setFixedHeight(30);
    m_comboSsid->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QPushButton* connectNetwork = AddRow(
        layout, 2, size, {"Label_1000703", m_linePassword, {"Label_1000704", Name("btnConnect")}});
    QPushButton* ping =
        AddRow(layout, 3, size, {pingTitle, m_linePingHost, {"Label_1000705", Name("btnPing")}});
    QPushButton* save = AddRow(layout, 4, size,
                               {"Label_1000707", m_lineResult, {"Label_1000706", Name("btnSave")}});
    QPushButton* refresh = NewButton({"Label_1000714", Name("btnRef")}, size, this);
    layout->addWidget(refresh, 5, 2);
    AddFiller(layout, 8);

    connect(m_btnOpenWifi, &QPushButton::clicked, this, &ToolWifiTest::OnBtnOpenClicked);
    connect(scan, &QPushButton::clicked, this, &ToolWifiTest::OnBtnScanClicked);
    connect(connectNetwork, &QPushButton::clicked, this, &ToolWifiTest::OnBtnConnectClicked);
    connect(ping, &QPushButton::clicked, this, &ToolWifiTest::OnBtnPingClicked);
    connect(save, &QPushButton::clicked, this, &ToolWifiTest::OnBtnSaveClicked);
    connect(refresh, &QPushButton::clicked, this, &ToolWifiTest::OnBtnRefreshClicked);

    OnLabelStatusRefreshed();
}

bool ToolWifiTest::IsWifiEnable()
{
    bool isRunning = false;
    ReadLines("ifconfig", {"wlan0"}, [&isRunning](const QByteArray& line) {
        const QString text = QString::fromLocal8Bit(line);
        isRunning = isRunning || text.contains("RUNNING", Qt::CaseInsensitive);
    });
    return isRunning;
}

/// Reads the state of the connection and shows it in the status field. Not a slot, in spite of its
/// name: other functions call it.
void ToolWifiTest::OnLabelStatusRefreshed()
{
    if (!m_isWifiEnabled) {
        m_lineStatus->setText(MoskTranslator::Translate("Label_1000709"));
        return;
    }
    const auto output =
        ReadShell("wpa_cli -i wlan0 status | grep 'wpa_state\\|ssid\\|ip_address' -w", 100);
    if (!output) {
        return;
    }
    // A text of 100 bytes has room for 99 and a NUL. An earlier NUL ends it, too.
    const QByteArray status(output->left(99).constData());
    if (const auto link = ReadLinkStatus(status)) {
        m_lineStatus->setText(link->isConnected
                                  ? MoskTranslator::Translate("Label_1000710") + ' ' + link->network
                                  : MoskTranslator::Translate("Label_1000709"));
    }
}

void ToolWifiTest::OnBtnOpenClicked(bool /*checked*/)
{
    RunShell(m_isWifiEnabled ? "ifconfig wlan0 down" : "ifconfig wlan0 up");
    m_isWifiEnabled = !m_isWifiEnabled;
    m_btnOpenWifi->setText(
        MoskTranslator::Translate(m_isWifiEnabled ? "Label_1000713" : "Label_1000712"));
    OnLabelStatusRefreshed();
    PaintPage();
}

void ToolWifiTest::OnBtnScanClicked(bool /*checked*/)
{
    if (!m_isWifiEnabled) {
        return;
    }
    m_comboSsid->clear();
    // This does not wait for the scan to end: it lists what the supplicant knows by now.
    RunShell("wpa_cli -i wlan0 scan");
    RunShell("wpa_cli -i wlan0 scan_results | awk '{print $5,$3}' > /tmp/wifi.ini");
    QFile results("/tmp/wifi.ini");
    if (results.open(QIODevice::ReadOnly) && results.size() != 0) {
        QTextStream stream(&results);
        stream.setCodec("UTF-8");
        stream.readLine();
        for (QString line = stream.readLine(); !line.isEmpty(); line = stream.readLine()) {
            m_comboSsid->insertItem(m_comboSsid->count(), QIcon(), line);
        }
    }
    results.close();
    RunShell("rm /tmp/wifi.ini");
}

void ToolWifiTest::OnBtnConnectClicked(bool /*checked*/)
{
    if (!m_isWifiEnabled) {
        return;
    }
    const QString ssid = m_comboSsid->currentText().section(' ', 0, 0);
    const QString passphrase = m_linePassword->text();
    if (ssid.isEmpty() || passphrase.isEmpty()) {
        return;
    }
    // A truncated name or passphrase would never connect, and nobody would know why.
    const auto setSsid = SetNetworkCommand("ssid", SsidBytes(ssid.toUtf8()));
    const auto setPassphrase = SetNetworkCommand("psk", passphrase.toUtf8());
    if (!setSsid || !setPassphrase) {
        m_lineStatus->setText(MoskTranslator::Translate("Label_1010002"));
        return;
    }
    m_lineStatus->setText(MoskTranslator::Translate("Label_1000711"));
    PaintPage();
    RunShell("wpa_cli -i wlan0 remove_network all");
    RunShell("wpa_cli -i wlan0 add_network");
    RunShell(*setSsid);
    RunShell(*setPassphrase);
    RunShell("wpa_cli -i wlan0 enable_network 0");
    RunShell("udhcpc -i wlan0 -b");
    OnLabelStatusRefreshed();
}

void ToolWifiTest::OnBtnSaveClicked(bool /*checked*/)
{
    if (m_isWifiEnabled) {
        RunShell("wpa_cli -i wlan0 save_config");
    }
}

void ToolWifiTest::OnBtnPingClicked(bool /*checked*/)
{
    bool answered = false;
    if (m_isWifiEnabled) {
        char command[100];
        std::snprintf(command, sizeof command, "ping -I wlan0 %s -w 2 -c 2",
                      m_linePingHost->text().toUtf8().constData());
        QProcess process;
        const QByteArray output = RunPing(&process, QString::fromUtf8(command));
        answered = PingAnswered(QString::fromUtf8(output));
    }
    ShowVerdict(m_lineResult,
                MoskTranslator::Translate(answered ? "Label_1010001" : "Label_1010002"), answered);
    PaintPage();
}

void ToolWifiTest::OnBtnRefreshClicked(bool /*checked*/)
{
    if (m_isWifiEnabled) {
        OnLabelStatusRefreshed();
    }
}
