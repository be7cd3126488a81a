#include "simulated-board/Board.h"

#include "simulated-board/BoardDescription.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QProcess>
#include <QThread>

namespace
{

const char* const callsPath = "/run/board/calls";
const char* const toolsPath = "/run/board/tools";
const char* const devicesPath = "/run/board/devices";

/// Ends the devices of the description before, and makes a board with nothing plugged in.
const char* const clearScript = R"script(
while read -r process file; do
    kill "$process" 2>/dev/null || true
    rm -f "$file"
done <"$devices"
: >"$devices"
[ ! -e /run/board/wifi/udhcpc.pid ] || kill "$(cat /run/board/wifi/udhcpc.pid)" 2>/dev/null || true
find /mnt -mindepth 1 -delete
rm -rf /proc/scsi /etc/sw2hmi /etc/qttestend /etc/mosk.ini /var/setting/system/* \
    /run/board/tools/* /run/board/received /run/board/wifi /etc/wpa_supplicant.conf \
    /etc/vnclinuxfb.conf /etc/frpc.ini /dev/mmcblk* /dev/ttyUSB1
mkdir -p /run/board/received /run/board/wifi
)script";

const char* const kernel = "Linux version 3.10.65 (builder@host) (gcc version 4.6.3) "
                           "#5 SMP PREEMPT Tue Oct 18 10:21:07 CST 2022";

/// These functions write to /etc and /dev, so they must never run on a real machine.
void CheckWeAreOnTheBoard()
{
    if (!QFileInfo("/run/host/etc").isDir()) {
        qFatal("This works on the simulated board only: see simulated-board/board");
    }
}

/// The script that gives the interfaces and what answers behind them their addresses.
QString NetworkScript(const BoardDescription& board)
{
    QString here;
    QMap<QString, QString> behind;
    for (const QString interface : {"eth0", "usb0", "wlan0"}) {
        here += QString("link set %1 down\naddr flush dev %1\nneigh flush dev %1 nud all\n")
                    .arg(interface);
        behind[interface] = "addr flush dev lo\naddr flush dev far-" + interface + '\n';
    }
    for (auto link = board.links.begin(); link != board.links.end(); ++link) {
        behind[link.key()] += QString("addr add %1/24 dev far-%2\n").arg(link->far, link.key());
        here += QString("addr add %1/24 dev %2\nlink set %2 up\n").arg(link->address, link.key());
        // Pings name their interface, so the order of the default routes does not matter.
        if (link.key() != "eth0") {
            here += QString("route add default via %1 dev %2 metric %3\n")
                        .arg(link->far, link.key(), link.key() == "usb0" ? "100" : "200");
        }
    }
    here += board.isWlanUp ? "link set wlan0 up\n" : "";
    for (auto hosts = board.silent.begin(); hosts != board.silent.end(); ++hosts) {
        for (const QString& address : *hosts) {
            here += QString("neigh replace %1 lladdr 02:00:00:00:00:01 nud permanent dev %2\n")
                        .arg(address, hosts.key());
        }
    }
    for (const QString& address : board.hosts) {
        behind["usb0"] += QString("addr replace %1/32 dev lo\n").arg(address);
        behind["wlan0"] += QString("addr replace %1/32 dev lo\n").arg(address);
    }
    for (const BoardDescription::Network& network : board.networks) {
        if (!network.far.isEmpty()) {
            behind["wlan0"] += QString("addr replace %1/32 dev lo\n").arg(network.far);
        }
    }
    QString script = "ip -batch - <<END\n" + here + "END\n";
    for (auto lines = behind.begin(); lines != behind.end(); ++lines) {
        script += QString("nsenter -t $(cat /run/board/far/%1) -n ip -batch - <<END\n%2END\n")
                      .arg(lines.key(), *lines);
    }
    return script;
}

/// Whether an interface has begun to carry packets. The kernel may take a second to see to that.
bool IsRunning(const QString& interface)
{
    return QNetworkInterface::interfaceFromName(interface).flags().testFlag(
        QNetworkInterface::IsRunning);
}

/// The script that starts a device, which makes a file and runs until the next description.
QString StartScript(const QString& file, const QString& command)
{
    return QString("%1 </dev/null >/dev/null &\necho $! '%2' >>\"$devices\"\n").arg(command, file);
}

/// The sticks as the kernel lists them.
QByteArray ListOf(const QList<BoardDescription::Stick>& sticks)
{
    QString list = sticks.isEmpty() ? "Attached devices: none\n" : "Attached devices:\n";
    for (int i = 0; i < sticks.size(); ++i) {
        list += QString("Host: scsi%1 Channel: 00 Id: 00 Lun: 00\n"
                        "  Vendor: %2 Model: %3 Rev: 1.00\n"
                        "  Type:   Direct-Access                    ANSI  SCSI revision: 06\n")
                    .arg(i)
                    .arg(sticks[i].vendor, -8)
                    .arg(sticks[i].model, -16);
    }
    return list.toUtf8();
}

QByteArray LittleEndian(int number, int bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes; ++i) {
        text += static_cast<char>(number >> 8 * i);
    }
    return text;
}

/// A WAV file of silence with 8,000 samples a second, each of a byte.
QByteArray Silence(int seconds)
{
    const int rate = 8000;
    const int samples = seconds * rate;
    return "RIFF" + LittleEndian(samples + 36, 4) + "WAVEfmt " + LittleEndian(16, 4) +
           LittleEndian(1, 2) + LittleEndian(1, 2) + LittleEndian(rate, 4) + LittleEndian(rate, 4) +
           LittleEndian(1, 2) + LittleEndian(8, 2) + "data" + LittleEndian(samples, 4) +
           QByteArray(samples, '\x80');
}

void WriteFiles(const BoardDescription& board)
{
    const QByteArray version = board.version.toUtf8();
    Board::WriteFile("/proc/version", (version.isEmpty() ? QByteArray(kernel) : version) + '\n');
    QByteArray hosts = "127.0.0.1 localhost board\n";
    for (auto host = board.hosts.begin(); host != board.hosts.end(); ++host) {
        hosts += (*host + ' ' + host.key() + '\n').toUtf8();
    }
    Board::WriteFile("/etc/hosts", hosts);
    if (board.hasUsbStorage || !board.sticks.isEmpty()) {
        QDir().mkpath("/proc/scsi/usb-storage");
        Board::WriteFile("/proc/scsi/scsi", ListOf(board.sticks));
    }
    for (const int number : board.mmc) {
        Board::WriteFile(QString("/dev/mmcblk%1").arg(number), {});
    }
    for (const BoardDescription::Sound& sound : board.sounds) {
        Board::WriteFile("/mnt/" + sound.path, Silence(sound.seconds));
    }
    if (!board.language.isEmpty()) {
        Board::WriteFile("/etc/mosk.ini", "[sys]\nLanguage=" + board.language.toUtf8() + '\n');
    }
    for (auto file = board.files.begin(); file != board.files.end(); ++file) {
        Board::WriteFile(file.key(), *file);
    }
}

} // namespace

void Board::Become(const QByteArray& description)
{
    CheckWeAreOnTheBoard();
    WriteFile(ownDescriptionPath, description);
    QString error;
    const auto board = ReadBoardDescription(ownDescriptionPath, &error);
    if (!board || !board->buses.isEmpty()) {
        qFatal("%s", board ? "The simulated board has no CAN bus" : qPrintable(error));
    }
    // One shell for everything: a test is a large process, and slow to fork.
    QStringList devices{"/run/wpa_supplicant/wlan0"};
    QString script = QString("devices=%1").arg(devicesPath) + clearScript +
                     StartScript(devices[0], "board-supplicant");
    for (const BoardDescription::Port& port : board->ports) {
        devices.append("/dev/" + port.name);
        script += StartScript(devices.last(),
                              QString("board-port '%1' %2 %3")
                                  .arg(devices.last(), port.role, port.arguments.join(' ')));
    }
    if (QProcess::execute("sh", {"-ec", script + NetworkScript(*board)}) != 0) {
        qFatal("The board cannot become this");
    }
    WriteFiles(*board);
    QStringList interfaces = board->links.keys();
    if (board->isWlanUp) {
        interfaces.append("wlan0");
    }
    const QDeadlineTimer limit(30000);
    const auto waitFor = [&limit](const QString& name, const auto& hasComeUp) {
        while (!hasComeUp(name)) {
            if (limit.hasExpired()) {
                qFatal("%s did not come up", qPrintable(name));
            }
            QThread::msleep(1);
        }
    };
    for (const QString& device : qAsConst(devices)) {
        waitFor(device, [](const QString& path) { return QFile::exists(path); });
    }
    for (const QString& interface : qAsConst(interfaces)) {
        waitFor(interface, IsRunning);
    }
}

QStringList Board::Calls()
{
    QStringList calls = QString::fromUtf8(ReadFile(callsPath)).split('\n');
    calls.removeAll("");
    return calls;
}

void Board::ForgetCalls()
{
    WriteFile(callsPath, {});
}

void Board::PutTool(const QString& name, const QByteArray& script)
{
    const QString path = QString(toolsPath) + '/' + name;
    WriteFile(path, "#!/bin/bash\n" + script + "\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void Board::RemoveTools()
{
    QDir tools(toolsPath);
    const QStringList names = tools.entryList(QDir::Files);
    for (const QString& name : names) {
        tools.remove(name);
    }
}

void Board::WriteFile(const QString& path, const QByteArray& content)
{
    CheckWeAreOnTheBoard();
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
}

QByteArray Board::ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("Cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
    return file.readAll();
}
