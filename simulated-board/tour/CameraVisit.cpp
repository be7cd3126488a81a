#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QElapsedTimer>
#include <QImage>
#include <QThread>

namespace
{

/// Waits up to 5 s for the wanted colour in the middle of the screen. Returns the last colour seen.
QString Picture(Tour& tour, const QString& wanted)
{
    QElapsedTimer timer;
    timer.start();
    QString colour;
    do {
        const QImage screen = QImage::fromData(tour.Program().Screenshot());
        colour = screen.pixelColor(screen.rect().center()).name();
        if (colour == wanted) {
            break;
        }
        QThread::msleep(10);
    } while (timer.elapsed() < 5000);
    return colour;
}

void Watch(Tour& tour, const QString& camera, const QString& colour)
{
    tour.Program().Choose("bodyWidget QComboBox", camera);
    tour.Program().Click("btnopen");
    tour.Check(camera, Picture(tour, colour), colour);
}

} // namespace

void VisitCamera(Tour& tour)
{
    Watch(tour, "Front camera", "#2060c0");
    Watch(tour, "Rear camera", "#c06020");
    tour.Program().Click("btnclose");
    tour.Check("closed", Picture(tour, "#000000"), "#000000");
    Watch(tour, "Front camera", "#2060c0");
}
