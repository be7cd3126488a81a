#include "simulated-board/Board.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QDeadlineTimer>
#include <QThread>

namespace
{

const char* const status = "bodyWidget QLineEdit[0]";
const char* const passphrase = "bodyWidget QLineEdit[1]";
const char* const result = "bodyWidget QLineEdit[3]";
const char* const networks = "bodyWidget QComboBox";

/// Scans until the list has results: the page shows the results of the scan before.
void Scan(Tour& tour)
{
    const QDeadlineTimer limit(5000);
    do {
        tour.Program().Click("btnScan");
        QThread::msleep(100);
    } while (tour.Program().Items(networks).isEmpty() && !limit.hasExpired());
}

} // namespace

void VisitWifi(Tour& tour)
{
    const QString disconnected = tour.Label("Label_1000709");
    const QString connected = tour.Label("Label_1000710") + " MoskBench";

    // The interface may still be up from the walk in the other language.
    if (tour.Program().Text("m_btnOpenWifi") == tour.Label("Label_1000713")) {
        tour.Program().Click("m_btnOpenWifi");
    }
    tour.PressForStatus("ping without Wi-Fi", "btnPing", result, tour.Label("Label_1010002"),
                        "error");
    tour.Press("open", "m_btnOpenWifi", "m_btnOpenWifi", tour.Label("Label_1000713"));
    Scan(tour);
    tour.Check(
        "scan", tour.Program().Items(networks).join(", "),
        "MoskBench -47, \\xe5\\xb7\\xa5\\xe5\\x8e\\x82 -58, Guests -63,  -71, Warehouse -82");

    tour.Program().Choose(networks, 0);
    tour.Program().SetText(passphrase, "wrong passphrase");
    tour.Press("wrong passphrase", "btnConnect", status, disconnected);
    tour.Program().SetText(passphrase, "12345678");
    tour.Press("connect", "btnConnect", status, connected);
    tour.Press("refresh", "btnRef", status, connected);
    tour.PressForStatus("ping", "btnPing", result, tour.Label("Label_1010001"), "ok");

    Board::ForgetCalls();
    tour.Program().Click("btnSave");
    tour.Program().Idle();
    tour.Check("save", Board::Calls().join(", "), "wpa_cli -i wlan0 save_config");
}
