#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

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
    tour.PressForStatus("Ethernet", "btnEmmcTest", ethernet, normal, "ok");
    tour.PressForStatus("4G", "btn4gTest", mobile, normal, "ok");
}
