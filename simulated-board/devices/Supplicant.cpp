#include "simulated-board/devices/Supplicant.h"

#include "simulated-board/BoardDescription.h"
#include "simulated-board/Escapes.h"

#include <QNetworkInterface>
#include <QSaveFile>

#include <algorithm>
#include <cstdlib>

namespace
{

const char done[] = "OK\n";
const char failed[] = "FAIL\n";
const char resultsHeader[] = "bssid / frequency / signal level / flags / ssid\n";
/// The longest reply in bytes. Networks that do not fit are left out.
const int longestReply = 4095;

/// How long it takes to join a slow network, in ms.
const int slowJoinTime = 5000;

QNetworkInterface Wlan0()
{
    return QNetworkInterface::interfaceFromName("wlan0");
}

bool IsUp()
{
    return Wlan0().flags().testFlag(QNetworkInterface::IsUp);
}

QByteArray Bssid(int place)
{
    return "02:00:00:00:01:" + QByteArray(1, static_cast<char>(place)).toHex();
}

QByteArray Frequency(int place)
{
    return QByteArray::number(2412 + 5 * (place % 13));
}

/// The networks as a scan lists them. A hidden network is listed without its name.
QByteArray ListTheAir()
{
    QByteArray list;
    const QList<BoardDescription::Network> air = OwnDescription().networks;
    for (int i = 0; i < air.size(); ++i) {
        const QByteArray signal = air[i].signal.isEmpty() ? "-50" : air[i].signal.toLatin1();
        const bool isOpen = air[i].passphrase.isEmpty();
        const QByteArray flags = isOpen ? "[ESS]" : "[WPA2-PSK-CCMP][ESS]";
        const QByteArray name = air[i].isHidden ? QByteArray() : Printed(air[i].name);
        const QByteArray line =
            QByteArrayList{Bssid(i), Frequency(i), signal, flags, name}.join('\t') + '\n';
        if (int(qstrlen(resultsHeader)) + list.size() + line.size() > longestReply) {
            break;
        }
        list += line;
    }
    return list;
}

/// The bytes of a name that a client sets. A client writes a name literally between double quotes,
/// or in hexadecimal digits. Nothing when it is neither.
QByteArray NameOf(const QByteArray& value)
{
    if (value.startsWith('"')) {
        return value.size() > 1 && value.endsWith('"') ? value.mid(1, value.size() - 2) : "";
    }
    const QByteArray name = QByteArray::fromHex(value);
    return name.toHex() == value.toLower() ? name : "";
}

/// A name as the supplicant stores it: in hexadecimal digits when not all of it is printable.
QByteArray KeptName(const QByteArray& name)
{
    const bool isPrintable =
        std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isPrintable ? '"' + name + '"' : name.toHex();
}

/// Whether the supplicant accepts the value for the variable.
bool IsValue(const QByteArray& variable, const QByteArray& value)
{
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 0x7f; };
    if (variable == "ssid") {
        return !NameOf(value).isEmpty() && NameOf(value).size() <= 32;
    }
    if (variable == "psk") {
        return value.size() >= 10 && value.size() <= 65 && value.startsWith('"') &&
               value.endsWith('"') && std::none_of(value.begin(), value.end(), isControl);
    }
    return variable == "scan_ssid" || variable == "key_mgmt";
}

} // namespace

QByteArray Supplicant::Answer(const QByteArray& request)
{
    using Command = QByteArray (Supplicant::*)();
    static const QMap<QByteArray, Command> s_commands = {
        {"STATUS", &Supplicant::Status},
        {"SCAN", &Supplicant::Scan},
        {"SCAN_RESULTS", &Supplicant::ScanResults},
        {"ADD_NETWORK", &Supplicant::AddNetwork},
        {"REMOVE_NETWORK all", &Supplicant::RemoveNetworks},
        {"SAVE_CONFIG", &Supplicant::SaveConfiguration},
        {"TERMINATE", &Supplicant::Terminate},
    };
    if (s_commands.contains(request)) {
        return (this->*s_commands[request])();
    }
    if (request.contains("_NETWORK ")) {
        return AnswerAboutNetwork(request.split(' '));
    }
    // A client may subscribe to events, but this supplicant sends none.
    const bool isAboutEvents = request == "ATTACH" || request == "DETACH";
    return request == "PING" ? "PONG\n" : isAboutEvents ? done : "UNKNOWN COMMAND\n";
}

QByteArray Supplicant::AnswerAboutNetwork(const QByteArrayList& words)
{
    const QByteArray& command = words[0];
    const int id = words[1].toInt();
    const QByteArray variable = words.value(2);
    const QByteArray value = words.mid(3).join(' ');
    if (!m_networks.contains(id)) {
        return failed;
    }
    Network& network = m_networks[id];
    if (command == "GET_NETWORK" && network.contains(variable)) {
        return variable == "psk" ? "*" : network[variable];
    }
    if (command == "SET_NETWORK" && IsValue(variable, value)) {
        network[variable] = variable == "ssid" ? KeptName(NameOf(value)) : value;
        return done;
    }
    if (command == "ENABLE_NETWORK") {
        network["disabled"] = "0";
        m_enabled.start();
        return done;
    }
    return command == "REMOVE_NETWORK" && m_networks.remove(id) > 0 ? done : failed;
}

void Supplicant::Settle()
{
    const bool isJoined = Now().state == "COMPLETED";
    if (isJoined == m_isLetIn) {
        return;
    }
    const QByteArray change = isJoined ? "replace 192.168.43.1/24" : "flush";
    const QByteArray command =
        "nsenter -t $(cat /run/board/far/wlan0) -n ip addr " + change + " dev far-wlan0";
    if (std::system(command.constData()) != 0) {
        qWarning("The far end of wlan0 does not do as it should");
    }
    m_isLetIn = isJoined;
}

Supplicant::Association Supplicant::Now() const
{
    if (!IsUp()) {
        return {"INTERFACE_DISABLED", {}};
    }
    for (auto network = m_networks.begin(); network != m_networks.end(); ++network) {
        if (network->value("disabled") == "0") {
            return Join(network.key(), *network);
        }
    }
    return {"INACTIVE", {}};
}

Supplicant::Association Supplicant::Join(int id, const Network& network) const
{
    const QList<BoardDescription::Network> air = OwnDescription().networks;
    for (int i = 0; i < air.size(); ++i) {
        const bool isHeard = !air[i].isHidden || network["scan_ssid"] == "1";
        const bool isOpen = network["key_mgmt"] == "NONE";
        const bool hasKey = isOpen || network["psk"] == '"' + air[i].passphrase.toUtf8() + '"';
        if (isHeard && hasKey && isOpen == air[i].passphrase.isEmpty() &&
            network["ssid"] == KeptName(air[i].name)) {
            const bool isOnTheWay = air[i].isSlow && !m_enabled.hasExpired(slowJoinTime);
            return {isOnTheWay ? "ASSOCIATING" : "COMPLETED",
                    "bssid=" + Bssid(i) + "\nfreq=" + Frequency(i) +
                        "\nssid=" + Printed(air[i].name) + "\nid=" + QByteArray::number(id) +
                        "\nmode=station\nkey_mgmt=" + (isOpen ? "NONE" : "WPA2-PSK") + '\n'};
        }
    }
    return {"SCANNING", {}};
}

QByteArray Supplicant::Status()
{
    const Association now = Now();
    QByteArray status = now.description + "wpa_state=" + now.state + '\n';
    const QList<QNetworkAddressEntry> addresses = Wlan0().addressEntries();
    for (const QNetworkAddressEntry& entry : addresses) {
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol) {
            status += "ip_address=" + entry.ip().toString().toLatin1() + '\n';
        }
    }
    return status;
}

QByteArray Supplicant::Scan()
{
    if (!IsUp()) {
        return failed;
    }
    TakeScanOver();
    if (m_scan.isValid()) {
        return "FAIL-BUSY\n";
    }
    m_scan.start();
    return done;
}

QByteArray Supplicant::ScanResults()
{
    TakeScanOver();
    return resultsHeader + m_results;
}

/// Takes over the results of a scan whose time is over. Until then the older results are listed.
void Supplicant::TakeScanOver()
{
    if (m_scan.isValid() && m_scan.elapsed() >= OwnDescription().scanSeconds * 1000) {
        m_results = ListTheAir();
        m_scan.invalidate();
    }
}

QByteArray Supplicant::AddNetwork()
{
    const int id = m_networks.isEmpty() ? 0 : m_networks.lastKey() + 1;
    m_networks[id]["disabled"] = "1";
    return QByteArray::number(id) + '\n';
}

QByteArray Supplicant::RemoveNetworks()
{
    m_networks.clear();
    return done;
}

QByteArray Supplicant::SaveConfiguration()
{
    QSaveFile file("/etc/wpa_supplicant.conf");
    file.open(QIODevice::WriteOnly);
    file.write("ctrl_interface=/var/run/wpa_supplicant\nupdate_config=1\n");
    for (const Network& network : qAsConst(m_networks)) {
        file.write("\nnetwork={\n");
        for (const char* variable : {"ssid", "scan_ssid", "psk", "key_mgmt", "disabled"}) {
            const bool isDefault = network[variable] == "0" || !network.contains(variable);
            file.write(isDefault ? ""
                                 : '\t' + QByteArray(variable) + '=' + network[variable] + '\n');
        }
        file.write("}\n");
    }
    return file.commit() ? done : failed;
}

QByteArray Supplicant::Terminate()
{
    m_isTerminated = true;
    return done;
}
