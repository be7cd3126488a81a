#include "simulated-board/Board.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

void VisitVoice(Tour& tour)
{
    const QString files = "bodyWidget QComboBox";
    tour.Program().Click("bodyWidget QPushButton[0]");
    QStringList found = tour.Program().Items(files);
    // The page lists files in the order of the file system, which varies.
    found.sort();
    tour.Check("scan", found.join(""), "/mnt/sd/announcement.wav\n/mnt/usb/ringtone.wav\n");

    Board::ForgetCalls();
    tour.Program().Choose(files, "/mnt/usb/ringtone.wav\n");
    tour.Program().Click("btnPlay");
    tour.CheckFile("play", "/run/board/calls", "tinyplay /mnt/usb/ringtone.wav");
}
