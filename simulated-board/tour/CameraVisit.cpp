#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QImage>

namespace
{

const char* const black = "#000000";
const char* const somePicture = "a picture";

/// The colour in the middle of the screen. For a camera whose picture is not known, whether any of
/// some places has a colour other than black.
QString Picture(Tour& tour, const QString& wanted)
{
    const QImage screen = QImage::fromData(tour.Program().Screenshot());
    if (wanted != somePicture) {
        return screen.pixelColor(screen.rect().center()).name();
    }
    for (int i = 3; i <= 6; ++i) {
        const QPoint place(screen.width() * i / 9, screen.height() * i / 9);
        if (screen.pixelColor(place).name() != black) {
            return wanted;
        }
    }
    return black;
}

void CheckPicture(Tour& tour, const QString& check, const QString& expected,
                  const QString& note = {})
{
    QString shown;
    tour.WaitFor([&] {
        shown = Picture(tour, expected);
        return shown == expected || !tour.Program().IsThere();
    });
    tour.Check(check, shown, expected, note);
}

void Close(Tour& tour)
{
    tour.Tap("btnclose");
    CheckPicture(tour, "closed", black);
}

void Watch(Tour& tour, const BoardDescription::Camera& camera)
{
    if (!tour.Program().Choose("bodyWidget QComboBox", camera.name)) {
        tour.Check(camera.name, "not in the list", "in the list");
        return;
    }
    tour.Tap("btnopen");
    if (camera.colour == "busy") {
        CheckPicture(tour, camera.name, black, "the camera is busy");
    } else {
        CheckPicture(tour, camera.name, camera.colour == "any" ? somePicture : camera.colour);
    }
}

} // namespace

void VisitCamera(Tour& tour)
{
    const QList<BoardDescription::Camera>& cameras = tour.Board().cameras;
    if (cameras.isEmpty()) {
        tour.LeaveOut("picture", "the board has no camera");
        return;
    }
    for (const BoardDescription::Camera& camera : cameras) {
        Watch(tour, camera);
    }
    Close(tour);
    Watch(tour, cameras.first());
}
