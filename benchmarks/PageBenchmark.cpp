// What one page costs: opening it, and the CAN page while frames come. Runs on the simulated board.
// All figures are processor time, so what commands of a page's own take is not in them.

#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "pages/CanTester.h"
#include "simulated-board/Board.h"
#include "tests/CanBus.h"
#include "texts/MoskTranslator.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <memory>
#include <thread>

namespace
{

double SpentMs(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Runs the event loop until the screen shows what there is to show.
void Paint()
{
    for (int i = 0; i < 3; ++i) {
        QApplication::processEvents();
    }
}

/// Milliseconds of the GUI thread from the tap to the page on the screen.
double OpeningMs(BodyWidget* body, int page)
{
    const double before = SpentMs(CLOCK_THREAD_CPUTIME_ID);
    body->OpenPage(page);
    Paint();
    return SpentMs(CLOCK_THREAD_CPUTIME_ID) - before;
}

void MeasureOpening()
{
    std::printf("\n%-58s %9s %9s\n", "Opening a page, ms (at most 10)", "first", "later");
    MoskTester window;
    g_mainwnd = &window;
    window.show();
    Paint();
    for (const Page& page : allPages) {
        window.GetBody()->OpenPage(BodyWidget::NoPage);
        Paint();
        const double first = OpeningMs(window.GetBody(), page.id);
        std::array<double, 9> later = {};
        for (double& value : later) {
            window.GetBody()->OpenPage(BodyWidget::NoPage);
            Paint();
            value = OpeningMs(window.GetBody(), page.id);
        }
        std::sort(later.begin(), later.end());
        std::printf("  %-56s %9.1f %9.1f\n", page.name, first, later[later.size() / 2]);
        std::fflush(stdout);
    }
    g_mainwnd = nullptr;
}

/// The share of a core that this process takes for `seconds`, in percent.
double ShareOfCore(int seconds)
{
    const double before = SpentMs(CLOCK_PROCESS_CPUTIME_ID);
    QElapsedTimer elapsed;
    elapsed.start();
    QEventLoop loop;
    QTimer::singleShot(1000 * seconds, &loop, &QEventLoop::quit);
    loop.exec();
    return (SpentMs(CLOCK_PROCESS_CPUTIME_ID) - before) / elapsed.elapsed() * 100;
}

void MeasureCan()
{
    CanBus bus;
    std::printf("\n%-58s %9s\n", "CAN page, % of a core", "this");
    CanTester page(nullptr);
    page.resize(QGuiApplication::primaryScreen()->availableSize());
    page.show();
    page.findChild<QAbstractButton*>("btnOpenCom")->click();
    Paint();
    std::printf("  %-56s %9.2f\n", "open, on a silent bus", ShareOfCore(5));

    // A bus that is never empty: the page takes a frame every 10 ms, what comes between waits.
    std::atomic<bool> isTalking = true;
    double talkingMs = 0;
    std::thread partner([&] {
        while (isTalking) {
            bus.Send("123#1122334455667788");
        }
        talkingMs = SpentMs(CLOCK_THREAD_CPUTIME_ID);
    });
    const int seconds = 10;
    const double share = ShareOfCore(seconds);
    isTalking = false;
    partner.join();
    std::printf("  %-56s %9.2f\n", "open, on a busy bus (at most 4)",
                share - talkingMs / seconds / 10);
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    Board::Become("language english\n");
    ApplyLook();
    MeasureOpening();
    MeasureCan();
    return 0;
}
