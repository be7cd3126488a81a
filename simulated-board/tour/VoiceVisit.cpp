#include "simulated-board/tour/Processes.h"
#include "simulated-board/tour/Tour.h"
#include "simulated-board/tour/Visits.h"

#include <QThread>

#include <optional>
#include <utility>

namespace
{

/// Whether the program can play: it plays one sound in each run.
bool CanPlay()
{
    static std::optional<QList<int>> s_played;
    const QList<int> running = ProcessesOf({"MoskTest"});
    return std::exchange(s_played, running) != running;
}

} // namespace

void VisitVoice(Tour& tour)
{
    const QString files = "bodyWidget QComboBox";
    tour.Tap("bodyWidget QPushButton[0]");
    QStringList found = tour.Program().Items(files);
    QStringList expected;
    for (const BoardDescription::Sound& sound : tour.Board().sounds) {
        expected.append(QString("/mnt/%1\n").arg(sound.path));
    }
    // The page lists files in the order of the file system, which varies.
    found.sort();
    expected.sort();
    tour.Check("scan", found.join(""), expected.join(""));

    if (expected.isEmpty()) {
        tour.LeaveOut("play", "the board has no sound to play");
    } else if (!CanPlay()) {
        tour.LeaveOut("play", "the program plays one sound in each run");
    } else {
        const QString path = "/mnt/" + tour.Board().sounds.first().path;
        tour.Choose(files, path + '\n');
        tour.Tap("btnPlay");
        const auto isPlaying = [&] { return !ProcessesOf({"tinyplay", path}).isEmpty(); };
        QString shown = tour.WaitFor(isPlaying) ? "tinyplay " + path : QString("nothing");
        // A player without a sound card ends at once.
        QThread::msleep(qMin(500, 500 * tour.Board().sounds.first().seconds));
        if (!isPlaying()) {
            shown += ", ended at once";
        }
        tour.Check("play", shown, "tinyplay " + path);
    }
}
