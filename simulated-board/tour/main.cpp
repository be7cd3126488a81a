#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSysInfo>

#include <csignal>
#include <cstdio>

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

volatile std::sig_atomic_t s_isStopped = 0;

/// The tour notices it soon, puts back what it has changed, and writes an incomplete report.
void Stop(int /*signal*/)
{
    s_isStopped = 1;
}

/// Says why the tour does not begin, on one line.
int Refuse(const QString& reason)
{
    std::fprintf(stderr, "tour: %s\n", qPrintable(reason));
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(MOSK_VERSION);
    QCommandLineParser options;
    options.setApplicationDescription("Presses every check of the running program.");
    options.addHelpOption();
    options.addVersionOption();
    options.addOption({"board", "What the board is like (docs/simulated-board.md).", "FILE"});
    options.addOption({"report", "Where report.html, report.xml and the pictures go.", "DIR"});
    options.process(application);
    if (!options.isSet("board") || !options.isSet("report") ||
        !options.positionalArguments().isEmpty()) {
        return Refuse("it takes --board FILE --report DIR");
    }
    QString error;
    const auto board = ReadBoardDescription(options.value("board"), &error);
    if (!board) {
        return Refuse(error);
    }
    std::signal(SIGINT, Stop);
    std::signal(SIGTERM, Stop);
    Tour tour(*board, options.value("report"), [] { return s_isStopped != 0; });
    tour.Introduce(QString("%1, %2").arg(QSysInfo::machineHostName(), options.value("board")),
                   "MoskTest " MOSK_VERSION);
    return tour.Walk(pages) ? 0 : 1;
}
