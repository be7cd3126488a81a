#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QDateTime>

namespace
{

const char* const timeFormat = "yyyy-MM-dd hh:mm:ss";
const char* const controllerState = "/run/board/received/controller";

QString CountText(const Tour& tour, int number, const char* whatKey)
{
    return QString("%1 %2 %3")
        .arg(tour.Label("Label_1000018"))
        .arg(number)
        .arg(tour.Label(whatKey));
}

/// Switches the buzzer on and off, and checks what the companion controller received.
void RingTheBuzzer(Tour& tour)
{
    const QString line = "bodyWidget QLineEdit[2]";
    const QString role = tour.Board().RoleOf("ttyS5");
    if (role.isEmpty()) {
        tour.PressForStatus("buzzer", "btnBeepTest", line, tour.Label("Label_1010002"), "error",
                            "the board has no port ttyS5");
        return;
    }
    tour.PressForStatus("buzzer on", "btnBeepTest", line, tour.Label("Label_1000016"), "ok");
    if (role == "controller") {
        tour.CheckFile("buzzer rings", controllerState, "buzzer on");
    }
    tour.PressForStatus("buzzer off", "btnBeepTest", line, tour.Label("Label_1000017"), "ok");
    if (role == "controller") {
        tour.CheckFile("buzzer is silent", controllerState, "buzzer off");
    }
}

/// Opens the touch test on the whole screen and puts a finger on its first place.
void TouchTheScreen(Tour& tour)
{
    tour.Tap("btnTouchTest");
    tour.Tap("toolTouchTest QPushButton[0]");
    tour.CheckText("touch test", "toolTouchTest QPushButton[80]", "81");
    tour.TakePicture("touch");
    tour.Tap("toolTouchTest QPushButton[40]");
    tour.Check("touch test left", tour.Program().Count("toolTouchTest") == 0 ? "closed" : "open",
               "closed");
}

/// Reads the clock: the system's time, to the minute.
void ReadTheClock(Tour& tour, const QString& check)
{
    tour.Tap("btnrRTCTest");
    const QString shown = tour.Program().Text("bodyWidget QLineEdit[5]");
    const QDateTime now = QDateTime::currentDateTime();
    const bool isNow = qAbs(QDateTime::fromString(shown.trimmed(), timeFormat).secsTo(now)) < 60;
    tour.Check(check, shown, isNow ? shown : now.toString(timeFormat));
}

/// Sets the clock to the time that it has anyway, and checks what the companion controller
/// received.
void SetTheClock(Tour& tour)
{
    const QString now = QDateTime::currentDateTime().toString(timeFormat);
    tour.Type("bodyWidget QLineEdit[6]", now);
    tour.Tap("btnwRTCTest");
    ReadTheClock(tour, "set time");
    if (tour.Board().RoleOf("ttyS5") == "controller") {
        tour.CheckFile("controller's time", controllerState, "time " + now);
    }
}

/// Pings the field's host through an interface. If the description does not say that the host
/// answers there, but that another one does, it is typed in place of the host.
void PingThrough(Tour& tour, const QString& interface, const QString& check, const QString& button,
                 const QString& field)
{
    const QString host = tour.Program().Text(field);
    const auto link = tour.Board().links.value(interface);
    const QString address = tour.Board().hosts.value(host, link.far);
    if (!tour.Board().links.contains(interface)) {
        tour.PressForStatus(check, button, field, tour.Label("Label_1000015"), "error",
                            QString("nothing is connected to %1").arg(interface));
        return;
    }
    if (!tour.Board().hosts.contains(host) && host != link.far) {
        tour.Type(field, link.far);
    }
    if (tour.Board().silent[interface].contains(address)) {
        tour.PressForStatus(check, button, field, tour.Label("Label_1000015"), "error",
                            QString("%1 does not answer").arg(address));
    } else {
        tour.PressForStatus(check, button, field, tour.Label("Label_1000014"), "ok");
    }
}

} // namespace

void VisitBasic(Tour& tour)
{
    const QList<int>& mmc = tour.Board().mmc;
    // Number 0 is the board's own eMMC.
    const int cards = mmc.size() - mmc.count(0);
    tour.Press("USB", "btnUsbTest", "bodyWidget QLineEdit[0]",
               CountText(tour, tour.Board().sticks.size(), "Label_1000019"));
    tour.Press("SD card", "btnSdCardTest", "bodyWidget QLineEdit[1]",
               CountText(tour, cards, "Label_1000020"));
    RingTheBuzzer(tour);
    TouchTheScreen(tour);
    PingThrough(tour, "eth0", "Ethernet", "btnEmmcTest", "bodyWidget QLineEdit[4]");
    ReadTheClock(tour, "get time");
    SetTheClock(tour);
    PingThrough(tour, "usb0", "4G", "btn4gTest", "bodyWidget QLineEdit[7]");
}
