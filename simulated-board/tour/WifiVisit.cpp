#include "simulated-board/Board.h"
#include "simulated-board/Escapes.h"
#include "simulated-board/tour/Processes.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QNetworkInterface>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <csignal>

namespace
{

using Network = BoardDescription::Network;

const char* const status = "bodyWidget QLineEdit[0]";
const char* const passphrase = "bodyWidget QLineEdit[1]";
const char* const host = "bodyWidget QLineEdit[2]";
const char* const result = "bodyWidget QLineEdit[3]";
const char* const networks = "bodyWidget QComboBox";

bool IsUp()
{
    return QNetworkInterface::interfaceFromName("wlan0").flags().testFlag(QNetworkInterface::IsUp);
}

/// Puts the wireless interface back as it was, when this object goes: up or down, and with the
/// networks that the supplicant has on file.
class KeptWifi
{
public:
    KeptWifi() = default;
    ~KeptWifi()
    {
        const QList<int> clients = ProcessesOf(client);
        for (const int process : clients) {
            if (!m_clients.contains(process)) {
                kill(process, SIGTERM);
            }
        }
        QProcess supplicant;
        supplicant.start("wpa_cli", {"-i", "wlan0", "reconfigure"});
        supplicant.waitForFinished();
        QProcess::execute("ifconfig", {"wlan0", m_isUp ? "up" : "down"});
    }
    KeptWifi(const KeptWifi&) = delete;
    KeptWifi& operator=(const KeptWifi&) = delete;

private:
    const QStringList client{"udhcpc", "-i", "wlan0", "-b"};
    bool m_isUp = IsUp();
    QList<int> m_clients = ProcessesOf(client);
};

/// A network's name as the page lists it. The page shows the first word of what the supplicant
/// prints.
QString ListedName(const Network& network)
{
    return network.isHidden ? QString()
                            : QString::fromUtf8(Printed(network.name)).section(' ', 0, 0);
}

/// The networks that must be listed: all but those that a real radio hides.
QList<Network> NetworksToHear(const Tour& tour)
{
    QList<Network> wanted;
    for (const Network& network : tour.Board().networks) {
        if (!network.isHidden || !network.signal.isEmpty()) {
            wanted.append(network);
        }
    }
    return wanted;
}

QStringList ListedNames(const QStringList& items)
{
    QStringList names;
    for (const QString& item : items) {
        names.append(item.section(' ', 0, 0));
    }
    return names;
}

/// Checks that the described networks are listed. If the signal of one is not known, the radio is a
/// real one and may hear others too: then only the missing ones count.
void CheckNetworks(Tour& tour)
{
    const QStringList items = tour.Program().Items(networks);
    const QStringList heard = ListedNames(items);
    QStringList expected;
    QStringList shown;
    bool isReal = false;
    const QList<Network> wanted = NetworksToHear(tour);
    for (const Network& network : wanted) {
        const QString name = ListedName(network);
        isReal = isReal || network.signal.isEmpty();
        expected.append(network.signal.isEmpty() ? name : name + ' ' + network.signal);
        if (heard.contains(name)) {
            shown.append(expected.last());
        }
    }
    tour.Check("scan", (isReal ? shown : items).join(", "), expected.join(", "));
}

/// Scans until the list has every described network, or for half a minute: the page shows the
/// results of the scan before.
void Scan(Tour& tour)
{
    const QList<Network> wanted = NetworksToHear(tour);
    tour.WaitFor([&] {
        tour.Program().Click("btnScan");
        QThread::msleep(100);
        const QStringList heard = ListedNames(tour.Program().Items(networks));
        return std::all_of(wanted.begin(), wanted.end(), [&](const Network& network) {
            return heard.contains(ListedName(network));
        });
    });
    CheckNetworks(tour);
}

/// The network to join: a usual one, with a name and a passphrase.
const Network* NetworkToJoin(const Tour& tour)
{
    for (const Network& network : tour.Board().networks) {
        if (!network.isHidden && !network.isSlow && !network.passphrase.isEmpty()) {
            return &network;
        }
    }
    return nullptr;
}

void Join(Tour& tour, const Network& network)
{
    const QString disconnected = tour.Label("Label_1000709");
    const QString connected = tour.Label("Label_1000710") + ' ' + ListedName(network);
    const QStringList heard = ListedNames(tour.Program().Items(networks));
    tour.Choose(networks, heard.indexOf(ListedName(network)));
    tour.Expect("passphrase", tour.Program().SetText(passphrase, "wrong passphrase"));
    tour.Press("wrong passphrase", "btnConnect", status, disconnected);
    tour.Expect("passphrase", tour.Program().SetText(passphrase, network.passphrase));
    tour.Tap("btnConnect");
    // A slow board is joined only after the page has looked.
    tour.WaitFor([&] {
        return tour.Program().Text(status) == connected || !tour.Program().Click("btnRef");
    });
    // No picture may show the passphrase.
    tour.Type(passphrase, "");
    tour.CheckText("connect", status, connected);
    tour.Press("refresh", "btnRef", status, connected);
}

/// Pings the field's host, or the host behind the network if that is the one that answers.
void PingThrough(Tour& tour, const Network& network)
{
    const QString target = tour.Program().Text(host);
    if (tour.Board().hosts.contains(target)) {
        tour.PressForStatus("ping", "btnPing", result, tour.Label("Label_1010001"), "ok");
    } else if (!network.far.isEmpty()) {
        tour.Type(host, network.far);
        tour.PressForStatus("ping", "btnPing", result, tour.Label("Label_1010001"), "ok");
    } else {
        tour.PressForStatus("ping", "btnPing", result, tour.Label("Label_1010002"), "error",
                            "nothing is known to answer behind the network");
    }
}

void Save(Tour& tour)
{
    if (!Tour::IsSimulated()) {
        tour.LeaveOut("save", "it would change the networks that the board has on file");
        return;
    }
    Board::ForgetCalls();
    tour.Tap("btnSave");
    tour.Program().Idle();
    tour.Check("save", Board::Calls().join(", "), "wpa_cli -i wlan0 save_config");
}

} // namespace

void VisitWifi(Tour& tour)
{
    const KeptWifi kept;
    // The interface may be up already.
    if (tour.Program().Text("m_btnOpenWifi") == tour.Label("Label_1000713")) {
        tour.Tap("m_btnOpenWifi");
    }
    tour.PressForStatus("ping without Wi-Fi", "btnPing", result, tour.Label("Label_1010002"),
                        "error");
    tour.Press("open", "m_btnOpenWifi", "m_btnOpenWifi", tour.Label("Label_1000713"));
    Scan(tour);
    const Network* network = NetworkToJoin(tour);
    if (network == nullptr) {
        for (const char* check : {"connect", "ping", "save"}) {
            tour.LeaveOut(check, "there is no network with a passphrase");
        }
        return;
    }
    Join(tour, *network);
    PingThrough(tour, *network);
    Save(tour);
}
