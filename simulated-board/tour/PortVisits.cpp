#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

namespace
{

/// What a device in the port answers to a line; nothing when its answer is not known.
std::optional<QString> AnswerOf(const QString& role, const QString& line)
{
    if (role == "loopback") {
        return line;
    }
    if (role == "echo") {
        return "echo: " + line;
    }
    return role == "nothing" ? std::optional<QString>("") : std::nullopt;
}

/// Opens a port, sends a line and closes the port. The page has one view for all ports; `view` is
/// what it shows before and after.
void TalkTo(Tour& tour, int port, const QString& answer, QString& view)
{
    const QString com = QString("COM%1 ").arg(port);
    tour.Choose("bodyWidget QComboBox", port);
    tour.Tap("btnOpenCom");
    if (tour.Program().Count("QMessageBox") > 0) {
        tour.Check(com + "open", tour.Program().Text("QMessageBox"), "");
        tour.Expect(com + "box", tour.Program().PressBoxButton("Ok"));
        return;
    }
    tour.CheckText(com + "open", "btnOpenCom", tour.Label("Label_1000305"));
    view += answer;
    tour.Press(com + "send", "btnSendCom", "bodyWidget QTextEdit", view, tour.Patience());
    tour.Tap("btnOpenCom");
    tour.CheckText(com + "close", "btnOpenCom", tour.Label("Label_1000301"));
}

} // namespace

void VisitSerial(Tour& tour)
{
    QString view;
    QStringList unknown;
    for (int port = 0; port <= 9; ++port) {
        const QString role = tour.Board().RoleOf(QString("ttyS%1").arg(port));
        const auto answer = AnswerOf(role, "Hello MOSK!\n");
        if (answer) {
            TalkTo(tour, port, *answer, view);
        } else if (!role.isEmpty()) {
            tour.LeaveOut(QString("COM%1").arg(port),
                          QString("the port belongs to the %1").arg(role));
        } else {
            unknown.append(QString("COM%1").arg(port));
        }
    }
    if (!unknown.isEmpty()) {
        tour.LeaveOut(unknown.join(", "), "nothing is known about these ports");
    }
}

// On a bus without a partner, or on a kernel without CAN, the page receives nothing, but its button
// still works.
void VisitCan(Tour& tour)
{
    const QString view = "bodyWidget QTextEdit";
    tour.CheckText("closed", "btnOpenCom", tour.Label("Label_1000901"));
    tour.Press("open", "btnOpenCom", "btnOpenCom", tour.Label("Label_1000905"));
    tour.Tap("btnSendCom");
    if (tour.Board().buses.contains("can0")) {
        tour.Program().WaitForText(
            view, [](const QString& text) { return !text.isEmpty(); }, tour.Patience());
        tour.Check("receive", tour.Program().Text(view).isEmpty() ? "nothing" : "frames", "frames");
    } else {
        tour.CheckText("send", view, "", "nobody sends on the bus");
    }
}
