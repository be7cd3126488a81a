#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSysInfo>

#include <csignal>
#include <cstdio>

namespace
{

const QMap<QString, Tour::Visit> visits{
    {"home", VisitHome},
    {"basic", VisitBasic},
    {"serial", VisitSerial},
    {"database", VisitDatabase},
    {"production", VisitProduction},
    {"wifi", VisitWifi},
    {"voice", VisitVoice},
    {"can", VisitCan},
    {"remote-access", VisitRemoteAccess},
    {"camera", VisitCamera},
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
    options.addOption({"page", "Visits this page only; may be given several times.", "NAME"});
    options.addOption({"patience", "How long to wait for what a check must show (30).", "SECONDS"});
    options.process(application);
    if (!options.isSet("board") || !options.isSet("report") ||
        !options.positionalArguments().isEmpty()) {
        return Refuse("it takes --board FILE --report DIR");
    }
    const QStringList chosen = options.values("page");
    for (const QString& name : chosen) {
        if (!visits.contains(name)) {
            return Refuse(QString("there is no page \"%1\"").arg(name));
        }
    }
    bool isNumber = true;
    const int patience =
        options.isSet("patience") ? options.value("patience").toInt(&isNumber) : 30;
    if (!isNumber || patience < 1) {
        return Refuse(QString("\"%1\" is no number of seconds").arg(options.value("patience")));
    }
    QString error;
    const auto board = ReadBoardDescription(options.value("board"), &error);
    if (!board) {
        return Refuse(error);
    }
    std::signal(SIGINT, Stop);
    std::signal(SIGTERM, Stop);
    Tour tour(*board, options.value("report"), [] { return s_isStopped != 0; });
    tour.SetPatience(1000 * patience);
    tour.Introduce(QString("%1, %2").arg(QSysInfo::machineHostName(), options.value("board")),
                   "MoskTest " MOSK_VERSION);
    return tour.Walk(visits, chosen) ? 0 : 1;
}
