#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

namespace
{

QString Result(const Tour& tour, const QString& key)
{
    return "******** " + tour.Label(key) + "\n";
}

} // namespace

// The board is put on the bench when the page has opened its port.
void VisitProduction(Tour& tour)
{
    const QString summary = "bodyWidget QTextEdit";
    const QString opened = QString("******** %1 [/dev/ttyS2]\n").arg(tour.Label("Label_1000501"));
    QString burnt = opened;
    for (const char* key :
         {"Label_1000515", "Label_1000516", "Label_1000505", "Label_1000504", "Label_1000502",
          "Label_1000507", "Label_1000509", "Label_1000511", "Label_1000503"}) {
        burnt += Result(tour, key);
    }
    const auto isTried = [](const QString& text) { return text.contains('\n'); };
    tour.Program().WaitForText(summary, isTried);
    if (tour.Program().Text(summary).startsWith(opened)) {
        tour.Program().WaitForText(summary, burnt, 40000);
    }
    tour.CheckText("burnt", summary, burnt);
    tour.TakePicture("production-summary");

    tour.Program().Click("btnDetail");
    const QString detail = tour.Program().Text("bodyWidget QTextEdit");
    tour.Check("detail", detail.contains("sprite success") ? "the log" : detail, "the log");
}
