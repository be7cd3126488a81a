#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QFile>

namespace
{

const char* const remotePort = "bodyWidget QLineEdit[2]";

/// The content of the frp client's file; empty when there is no such file.
QByteArray ClientFile()
{
    QFile file("/etc/frpc.ini");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Sets the remote port and checks the frp client's file.
void SetRemotePort(Tour& tour, const QByteArray& from, const QByteArray& to)
{
    QByteArray expected = ClientFile();
    expected.replace("remote_port = " + from, "remote_port = " + to);

    tour.Program().SetText(remotePort, to);
    tour.PutKeyboardAway();
    tour.Program().Click("bodyWidget QPushButton");
    tour.CheckText("set " + to, "QMessageBox", tour.Label("Label_1010006"));
    tour.TakePicture("remote-access-set");
    tour.Program().PressBoxButton("Ok");
    tour.Program().Idle();
    tour.Check("file of the frp client", ClientFile(), expected);
}

} // namespace

void VisitRemoteAccess(Tour& tour)
{
    tour.CheckText("server", "bodyWidget QLineEdit[0]", "203.0.113.7");
    tour.CheckText("server port", "bodyWidget QLineEdit[1]", "7000");
    tour.CheckText("remote port", remotePort, "6000");
    tour.CheckText("password", "bodyWidget QLineEdit[3]", "bench");
    SetRemotePort(tour, "6000", "6001");
    SetRemotePort(tour, "6001", "6000");
}
