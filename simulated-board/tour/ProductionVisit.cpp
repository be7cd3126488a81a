#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

namespace
{

QString Result(const Tour& tour, const QString& key)
{
    return "******** " + tour.Label(key) + "\n";
}

} // namespace

// The board at the port may be in the middle of being flashed: then the next one is waited for.
void VisitProduction(Tour& tour)
{
    const QString summary = "bodyWidget QTextEdit";
    const QString burnt = Result(tour, "Label_1000502") + Result(tour, "Label_1000507") +
                          Result(tour, "Label_1000509") + Result(tour, "Label_1000511") +
                          Result(tour, "Label_1000503");
    const auto isBurnt = [&burnt](const QString& text) { return text.contains(burnt); };
    const auto isTried = [](const QString& text) { return text.contains('\n'); };
    tour.Program().WaitForText(summary, isTried);
    const QString opened = QString("******** %1 [/dev/ttyS2]").arg(tour.Label("Label_1000501"));
    QString shown = tour.Program().Text(summary);
    tour.Check("port", shown.section('\n', 0, 0), opened);
    if (shown.startsWith(opened)) {
        tour.Program().WaitForText(summary, isBurnt, 40000);
        shown = tour.Program().Text(summary);
    }
    tour.Check("burnt", isBurnt(shown) ? burnt : shown, burnt);
    tour.TakePicture("production-summary");

    tour.Program().Click("btnDetail");
    const QString detail = tour.Program().Text("bodyWidget QTextEdit");
    tour.Check("detail", detail.contains("sprite success") ? "the log" : detail, "the log");
}
