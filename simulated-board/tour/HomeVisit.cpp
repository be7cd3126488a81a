#include "simulated-board/Board.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QFile>

namespace
{

const char* const switchMarker = "/etc/sw2hmi";
const char* const testEndMarker = "/etc/qttestend";

/// The kernel's build stamp: the last six words of its line in /proc/version.
QString BuildStamp(const Tour& tour)
{
    QFile file("/proc/version");
    const bool isOpen = tour.Board().version.isEmpty() && file.open(QIODevice::ReadOnly);
    const QString line = isOpen ? QString::fromUtf8(file.readAll()) : tour.Board().version;
    return line.trimmed().section(' ', -6);
}

/// The markers for the board's other software that `isThere` finds.
QString Markers(const std::function<bool(const QString&)>& isThere)
{
    QStringList markers;
    for (const char* marker : {switchMarker, testEndMarker}) {
        if (isThere(marker)) {
            markers.append(marker);
        }
    }
    return markers.isEmpty() ? QString("none") : markers.join(", ");
}

/// Asks for both markers, and answers No.
void AskForMarkers(Tour& tour)
{
    if (tour.Board().files.contains(testEndMarker)) {
        tour.LeaveOut("switch to HMI", "the board's test has been finished");
        tour.LeaveOut("test finished", "the board's test has been finished");
    } else {
        tour.PressAndCancel("switch to HMI", "btnSwitchHMI", tour.Label("Label_1000206"));
        tour.PressAndCancel("test finished", "btnTestEnd", tour.Label("Label_1000208"));
    }
    tour.Check("markers", Markers([](const QString& path) { return QFile::exists(path); }),
               Markers([&](const QString& path) { return tour.Board().files.contains(path); }));
}

/// Restarts the board. This ends the program. The board starts it again in the chosen language.
void Reboot(Tour& tour)
{
    if (!Tour::IsSimulated()) {
        tour.LeaveOut("reboot", "it would restart this board");
        return;
    }
    Board::ForgetCalls();
    tour.Program().Click("btnReboot");
    tour.Program().Idle(); // fails, as the program ends
    tour.Program().Connect();
    tour.Check("reboot", Board::Calls().join(", "), "sync, reboot");
    tour.CheckText("started again", "btnReboot", tour.Label("Label_1000203"));
}

} // namespace

void VisitHome(Tour& tour)
{
    QStringList tabs;
    for (const char* key : {"Label_1000100", "Label_1000101", "Label_1000102", "Label_1000105",
                            "Label_1000106", "Label_1000107"}) {
        tabs.append(tour.Label(key));
    }
    tour.Check("menu", tour.Program().Items("menuTab").join(", "), tabs.join(", "));
    tour.CheckText("version", "bodyWidget QLabel[2]", BuildStamp(tour));
    tour.CheckText("website", "bodyWidget QLabel[4]", tour.Label("Label_1000202"));
    AskForMarkers(tour);
    Reboot(tour);
}
