#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

namespace
{

const char* const summary = "bodyWidget QTextEdit";

QString Result(const Tour& tour, const QString& key)
{
    return "******** " + tour.Label(key) + "\n";
}

/// The results that the log of a board holds, by the log's name in the description.
QStringList ResultsOf(const QString& log)
{
    QStringList burnt{"Label_1000515", "Label_1000516"};
    if (log != "no-rootfs") {
        burnt.append("Label_1000505");
    }
    if (log == "stuck") {
        return burnt;
    }
    if (log != "no-uboot") {
        burnt.append("Label_1000504");
    }
    burnt.append(log == "no-rootfs" || log == "no-uboot" ? "Label_1000506" : "Label_1000502");
    const QStringList tested = log == "bad"
                                   ? QStringList{"Label_1000508", "Label_1000510", "Label_1000512"}
                                   : QStringList{"Label_1000507", "Label_1000509", "Label_1000511"};
    return burnt + tested + QStringList{"Label_1000503"};
}

/// What the summary must show in the end, from the device that is plugged into the port.
QString SummaryOf(const Tour& tour)
{
    const QString role = tour.Board().RoleOf("ttyS2");
    QString text = QString("******** %1 [/dev/ttyS2]\n")
                       .arg(tour.Label(role.isEmpty() ? "Label_1000500" : "Label_1000501"));
    if (role == "log") {
        for (const BoardDescription::Port& port : tour.Board().ports) {
            if (port.name == "ttyS2") {
                const QStringList results = ResultsOf(port.arguments.value(0, "good"));
                for (const QString& key : results) {
                    text += Result(tour, key);
                }
            }
        }
    }
    return text;
}

} // namespace

// The board is put on the bench when the page has opened its port.
void VisitProduction(Tour& tour)
{
    const QString expected = SummaryOf(tour);
    const QString first = expected.section('\n', 0, 0) + '\n';
    tour.Program().WaitForText(
        summary, [](const QString& text) { return text.contains('\n'); }, tour.Patience());
    // A log takes minutes, but once a line is wrong nothing mends it.
    const auto isDecided = [&](const QString& text) {
        return text == expected || !expected.startsWith(text);
    };
    if (tour.Program().Text(summary).startsWith(first)) {
        tour.Program().WaitForText(summary, isDecided, 6 * tour.Patience());
    }
    tour.CheckText("burnt", summary, expected);
    tour.Tap("btnDetail");
    tour.TakePicture("production-detail");
    if (tour.Board().RoleOf("ttyS2") == "log") {
        const QString detail = tour.Program().Text("bodyWidget QTextEdit");
        tour.Check("detail", detail.contains("begin to erase flash") ? "the log" : detail,
                   "the log");
    }
    tour.Tap("btnSummary");
}
