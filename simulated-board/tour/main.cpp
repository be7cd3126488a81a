#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QCoreApplication>

namespace
{

const int noTab = -1;

// The pages in the order of the menu. Those without a tab come last.
const QList<Tour::Page> pages{
    {"home", 1, 0, VisitHome},
    {"basic", 2, 1, VisitBasic},
    {"serial", 3, 2, VisitSerial},
    {"wifi", 6, 3, VisitWifi},
    {"voice", 7, 4, VisitVoice},
    {"can", 8, 5, VisitCan},
    {"database", 4, noTab, VisitDatabase},
    {"production", 5, noTab, VisitProduction},
    {"remote-access", 9, noTab, VisitRemoteAccess},
    {"camera", 10, noTab, VisitCamera},
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        qWarning("Usage: tour PICTURES");
        return 2;
    }
    return Tour(QString::fromLocal8Bit(argv[1])).Walk(pages) ? 0 : 1;
}
