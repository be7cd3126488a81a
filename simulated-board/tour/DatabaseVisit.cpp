#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

void VisitDatabase(Tour& tour)
{
    const QString test = "bodyWidget QPushButton[0]";
    const QString done = tour.Label("Label_1010001");
    tour.PressForStatus("create", test, "bodyWidget QLineEdit[1]", done, "ok");
    tour.PressForStatus("insert", test, "bodyWidget QLineEdit[2]", done, "ok");
    tour.PressForStatus("delete", test, "bodyWidget QLineEdit[3]", done, "ok");

    QStringList rows;
    const QList<QStringList> shown = tour.Program().Cells("bodyWidget QTableView");
    for (const QStringList& cells : shown) {
        rows.append(cells.join(' '));
    }
    tour.Check("query", rows.join(", "),
               QString("1 %1 96, 2 %2 98, 4 %3 94")
                   .arg(tour.Label("Label_1000407"), tour.Label("Label_1000408"),
                        tour.Label("Label_1000410")));
}
