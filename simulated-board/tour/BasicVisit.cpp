#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QDateTime>

namespace
{

const char* const timeFormat = "yyyy-MM-dd hh:mm:ss";

/// Switches the buzzer on and off, and checks what the companion controller received.
void RingTheBuzzer(Tour& tour)
{
    const QString controller = "/run/board/received/controller";
    const QString line = "bodyWidget QLineEdit[2]";
    tour.PressForStatus("buzzer on", "btnBeepTest", line, tour.Label("Label_1000016"), "ok");
    tour.CheckFile("buzzer rings", controller, "buzzer on");
    tour.PressForStatus("buzzer off", "btnBeepTest", line, tour.Label("Label_1000017"), "ok");
    tour.CheckFile("buzzer is silent", controller, "buzzer off");
}

/// Opens the touch test on the whole screen and puts a finger on its first place.
void TouchTheScreen(Tour& tour)
{
    tour.Program().Click("btnTouchTest");
    tour.Program().Click("toolTouchTest QPushButton[0]");
    tour.CheckText("touch test", "toolTouchTest QPushButton[80]", "81");
    tour.TakePicture("touch");
    tour.Program().Click("toolTouchTest QPushButton[40]");
    tour.Check("touch test left", tour.Program().Count("toolTouchTest") == 0 ? "closed" : "open",
               "closed");
}

/// Reads the system's time, sets a time, and checks what the companion controller received.
void SetTheClock(Tour& tour)
{
    tour.Program().Click("btnrRTCTest");
    const QString shown = tour.Program().Text("bodyWidget QLineEdit[5]");
    const QDateTime time = QDateTime::fromString(shown.trimmed(), timeFormat);
    const bool isNow = qAbs(time.secsTo(QDateTime::currentDateTime())) < 60;
    tour.Check("get time", shown,
               isNow ? shown : QDateTime::currentDateTime().toString(timeFormat));
    tour.Program().Click("btnwRTCTest");
    tour.CheckFile("set time", "/run/board/received/controller", "time 2022-01-01 00:00:00");
}

} // namespace

void VisitBasic(Tour& tour)
{
    const auto count = [&tour](int number, const QString& what) {
        return QString("%1 %2 %3").arg(tour.Label("Label_1000018")).arg(number).arg(what);
    };
    const QString usb = "bodyWidget QLineEdit[0]";
    const QString sdCard = "bodyWidget QLineEdit[1]";
    const QString ethernet = "bodyWidget QLineEdit[4]";
    const QString mobile = "bodyWidget QLineEdit[7]";
    const QString normal = tour.Label("Label_1000014");

    tour.Press("USB", "btnUsbTest", usb, count(1, tour.Label("Label_1000019")));
    tour.Press("SD card", "btnSdCardTest", sdCard, count(1, tour.Label("Label_1000020")));
    RingTheBuzzer(tour);
    TouchTheScreen(tour);
    tour.PressForStatus("Ethernet", "btnEmmcTest", ethernet, normal, "ok");
    SetTheClock(tour);
    tour.PressForStatus("4G", "btn4gTest", mobile, normal, "ok");
}
