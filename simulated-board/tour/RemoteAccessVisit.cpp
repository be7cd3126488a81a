#include "simulated-board/tour/KeptFile.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

namespace
{

const char* const serverFile = "/etc/vnclinuxfb.conf";
const char* const clientFile = "/etc/frpc.ini";
const char* const remotePort = "bodyWidget QLineEdit[2]";

/// What a service finds in its file as the value of a key; empty when it is not there. The keys
/// before the first section belong to the section "".
QString ValueIn(const QByteArray& content, const QString& section, const QString& key)
{
    QString current;
    const QStringList lines = QString::fromUtf8(content).split('\n');
    for (const QString& each : lines) {
        const QString line = each.trimmed();
        if (line.startsWith('[') && line.endsWith(']')) {
            current = line.mid(1, line.size() - 2);
        } else if (current == section && line.section('=', 0, 0).trimmed() == key) {
            return line.section('=', 1).trimmed();
        }
    }
    return {};
}

/// The lines that differ from those of the content before.
QString Changes(const QByteArray& before, const QByteArray& after)
{
    const QList<QByteArray> old = before.split('\n');
    const QList<QByteArray> lines = after.split('\n');
    QByteArrayList changes;
    for (int i = 0; i < qMax(old.size(), lines.size()); ++i) {
        if (old.value(i) != lines.value(i)) {
            changes.append(lines.value(i));
        }
    }
    return QString::fromUtf8(changes.join('\n'));
}

/// Sets the remote port and checks that nothing else changes in the frp client's file.
void SetRemotePort(Tour& tour, const KeptFile& client, const QString& port)
{
    const QByteArray before = client.Content();
    tour.Type(remotePort, port);
    tour.Tap("bodyWidget QPushButton");
    tour.CheckText("set " + port, "QMessageBox", tour.Label("Label_1010006"));
    tour.TakePicture("remote-access-set-" + port);
    tour.Expect("set closed", tour.Program().PressBoxButton("Ok"));
    tour.Program().Idle();
    const QString shown = Changes(before, client.Content());
    tour.Check("file of the frp client", shown.simplified().remove(' '), "remote_port=" + port,
               "nothing else changes in the file");
}

} // namespace

void VisitRemoteAccess(Tour& tour)
{
    const KeptFile server(serverFile);
    const KeptFile client(clientFile);
    // A description without these files leaves them to the board.
    const QByteArray serverText = tour.Board().files.value(serverFile, server.Content());
    const QByteArray clientText = tour.Board().files.value(clientFile, client.Content());
    const QString port = ValueIn(clientText, "vnc", "remote_port");

    tour.CheckText("server", "bodyWidget QLineEdit[0]",
                   ValueIn(clientText, "common", "server_addr"));
    tour.CheckText("server port", "bodyWidget QLineEdit[1]",
                   ValueIn(clientText, "common", "server_port"));
    tour.CheckText("remote port", remotePort, port);
    tour.CheckText("password", "bodyWidget QLineEdit[3]", ValueIn(serverText, "", "password"));
    if (port.isEmpty()) {
        tour.LeaveOut("set", QString("%1 has no remote port").arg(clientFile));
        return;
    }
    const QString other = port == "6001" ? "6002" : "6001";
    SetRemotePort(tour, client, other);
    SetRemotePort(tour, client, port);
}
