#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

// COM0 has a loop-back plug, COM1 a partner that echoes. The page has one view for both.
void VisitSerial(Tour& tour)
{
    const QString view = "bodyWidget QTextEdit";
    for (const int port : {0, 1}) {
        const QString com = QString("COM%1 ").arg(port);
        tour.Program().Choose("bodyWidget QComboBox", port);
        tour.Program().Click("btnOpenCom");
        tour.CheckText(com + "open", "btnOpenCom", tour.Label("Label_1000305"));
        const QString shown = port == 0 ? "Hello MOSK!\n" : "Hello MOSK!\necho: Hello MOSK!\n";
        tour.Press(com + "send", "btnSendCom", view, shown, 5000);
        tour.Program().Click("btnOpenCom");
        tour.CheckText(com + "close", "btnOpenCom", tour.Label("Label_1000301"));
    }
}

// If the kernel has no CAN, the page receives nothing, but its button still works.
void VisitCan(Tour& tour)
{
    tour.CheckText("closed", "btnOpenCom", tour.Label("Label_1000901"));
    tour.Press("open", "btnOpenCom", "btnOpenCom", tour.Label("Label_1000905"));
    tour.Program().Click("btnSendCom");
    tour.CheckText("send", "bodyWidget QTextEdit", "");
}
