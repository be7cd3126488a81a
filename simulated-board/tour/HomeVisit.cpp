#include "simulated-board/Board.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QFile>

namespace
{

/// The kernel's build stamp: the last six words of /proc/version.
QString BuildStamp()
{
    return QString::fromUtf8(Board::ReadFile("/proc/version")).trimmed().section(' ', -6);
}

/// Restarts the board. This ends the program. The board starts it again in the chosen language.
void Reboot(Tour& tour)
{
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
    tour.CheckText("version", "bodyWidget QLabel[2]", BuildStamp());
    tour.CheckText("website", "bodyWidget QLabel[4]", tour.Label("Label_1000202"));
    tour.PressAndCancel("switch to HMI", "btnSwitchHMI", tour.Label("Label_1000206"));
    tour.PressAndCancel("test finished", "btnTestEnd", tour.Label("Label_1000208"));
    const bool isMarked = QFile::exists("/etc/sw2hmi") || QFile::exists("/etc/qttestend");
    tour.Check("markers", isMarked ? "left" : "none", "none");
    Reboot(tour);
}
