// Measures the receive views and, in the same run and with the same text, a plain QTextEdit.

#include "instruments/ReceiveView.h"
#include "pages/CanTester.h"
#include "pages/ProductionTester.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextEdit>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

#include <malloc.h>

namespace
{

const char* const frame = "id:291,len:8,data:1122334455667788";
const double wireRate = 11520; // 115200 baud, 8N1

/// The processor time of this thread in milliseconds. This is the GUI thread; time spent waiting
/// does not count.
double SpentMs()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

/// Memory in use in MB, without the caches of the allocator.
double UsedMb()
{
    const auto info = mallinfo2();
    return (info.uordblks + info.hblkhd) / 1048576.0;
}

using Feed = std::function<void(const QString&)>;

/// The text goes to a plain QTextEdit, as on a page without ReceiveView.
Feed Into(QTextEdit& view)
{
    return [&view](const QString& text) {
        view.moveCursor(QTextCursor::End);
        view.insertPlainText(text);
    };
}

Feed Into(ReceiveView& view)
{
    return [&view](const QString& text) { view.AddText(text); };
}

Feed Into(CanTester& page)
{
    return [&page](const QString& text) {
        QMetaObject::invokeMethod(&page, "OnMessage", Q_ARG(QString, text));
    };
}

template <typename Widget>
Widget& Shown(Widget& widget)
{
    widget.resize(1024, 500);
    widget.show();
    QApplication::processEvents();
    return widget;
}

struct Run {
    double msPerFrame = 0;
    double longestStallMs = 0;
};

/// Feeds frames as fast as the page takes them, one a turn of the event loop.
Run FeedFrames(const Feed& feed, int count)
{
    Run run;
    const double before = SpentMs();
    for (int i = 0; i < count; ++i) {
        QElapsedTimer turn;
        turn.start();
        feed(frame);
        QApplication::processEvents();
        run.longestStallMs = std::max(run.longestStallMs, turn.nsecsElapsed() / 1e6);
    }
    run.msPerFrame = (SpentMs() - before) / count;
    return run;
}

/// The processor time that one frame costs at 100 frames a second.
double PacedFrameMs(const Feed& feed, int count)
{
    const double before = SpentMs();
    for (int i = 0; i < count; ++i) {
        QElapsedTimer turn;
        turn.start();
        feed(frame);
        while (turn.elapsed() < 10) {
            QApplication::processEvents();
            QThread::usleep(500);
        }
    }
    return (SpentMs() - before) / count;
}

void CompareFrames()
{
    std::puts("\nCAN page, frames one a turn of the event loop");
    // As fast as taken, three thousand are shown together.
    const int burst = 50000;
    CanTester page(nullptr);
    Shown(page);
    const Feed toPage = Into(page);
    const double usedBefore = UsedMb();
    FeedFrames(toPage, 1000);
    const double pagedEarly = PacedFrameMs(toPage, 300);
    const Run early = FeedFrames(toPage, burst);
    const Run firstHalf = FeedFrames(toPage, 50000);
    const double usedAtHalf = UsedMb();
    const Run secondHalf = FeedFrames(toPage, 50000);
    const double usedAtEnd = UsedMb();
    const Run late = FeedFrames(toPage, burst);
    const double pagedLate = PacedFrameMs(toPage, 300);

    QTextEdit plain;
    Shown(plain);
    const Feed toPlain = Into(plain);
    const Run plainFirst = FeedFrames(toPlain, 1000);
    const double plainEarly = PacedFrameMs(toPlain, 50);
    plain.setPlainText(QString(frame).repeated(100000));
    const double plainLate = PacedFrameMs(toPlain, 3);

    std::printf("  %-58s %9s %9s\n", "", "this", "plain");
    std::printf("  %-58s %9.3f %9.3f\n", "ms a frame after 1,000, at 100 a second", pagedEarly,
                plainEarly);
    std::printf("  %-58s %9.3f %9.3f\n", "ms a frame after 100,000, at 100 a second", pagedLate,
                plainLate);
    std::printf("  %-58s %9.2f %9.2f\n", "    ratio (at most 1.5)", pagedLate / pagedEarly,
                plainLate / plainEarly);
    std::printf("  %-58s %9.4f %9.4f\n", "ms a frame after 1,000, as fast as taken",
                early.msPerFrame, plainFirst.msPerFrame);
    std::printf("  %-58s %9.4f\n", "ms a frame after 100,000, as fast as taken", late.msPerFrame);
    std::printf("  %-58s %9.2f\n", "    ratio (at most 1.5)", late.msPerFrame / early.msPerFrame);
    std::printf("  %-58s %9.1f %9.1f\n", "longest stall in 100,000 frames, ms (at most 100)",
                std::max(firstHalf.longestStallMs, secondHalf.longestStallMs), plainLate);
    std::printf("  %-58s %9.1f\n", "memory growth over 100,000 frames, MB (under 48)",
                usedAtEnd - usedBefore);
    std::printf("  %-58s %9.1f\n", "    of it in the second half (flat)", usedAtEnd - usedAtHalf);
}

struct Stream {
    double kbPerSecond = 0;
    double longestLagMs = 0;
};

/// Kilobytes of a stream in a second of processor time, in chunks as a busy port gives them.
double FreeRate(const Feed& feed, const QString& line, int bytes)
{
    const QString chunk = line.repeated(4096 / line.size());
    const double before = SpentMs();
    for (int done = 0; done < bytes; done += chunk.size()) {
        feed(chunk);
        QApplication::processEvents();
    }
    return bytes / (SpentMs() - before);
}

/// The longest time that new text waited to be shown, and the share of time spent, at 20 times the
/// rate of a serial line.
Run PacedStream(QTextEdit& view, const Feed& feed, const QString& line, int seconds)
{
    const int perTurn = static_cast<int>(20 * wireRate / 100);
    const QString chunk = line.repeated(perTurn / line.size() + 1).left(perTurn);
    Run run;
    QElapsedTimer all;
    QElapsedTimer sinceUnshown;
    const double spentBefore = SpentMs();
    all.start();
    int turns = 0;
    int lastRevision = view.document()->revision();
    for (; all.elapsed() < qint64(seconds) * 1000 || turns < 100 * seconds; ++turns) {
        feed(chunk);
        if (!sinceUnshown.isValid()) {
            sinceUnshown.start();
        }
        do {
            QElapsedTimer turn;
            turn.start();
            QApplication::processEvents();
            if (view.document()->revision() != lastRevision) {
                lastRevision = view.document()->revision();
                run.longestStallMs =
                    std::max(run.longestStallMs, sinceUnshown.nsecsElapsed() / 1e6);
                sinceUnshown.invalidate();
            }
            QThread::usleep(200);
        } while (all.elapsed() < qint64(10) * turns);
        if (all.elapsed() > qint64(5000) * seconds) {
            break;
        }
    }
    run.msPerFrame = (SpentMs() - spentBefore) / all.elapsed();
    return run;
}

void CompareStreams(const char* name, const QString& line)
{
    std::printf("\nSerial view, %s, in chunks of 4 kB\n", name);
    ReceiveView view(nullptr);
    Shown(view);
    const double rate = FreeRate(Into(view), line, 20000000);
    const Run paced = PacedStream(view, Into(view), line, 5);

    QTextEdit plain;
    Shown(plain);
    const double plainRate = FreeRate(Into(plain), line, 300000);

    std::printf("  %-58s %9s %9s\n", "", "this", "plain");
    std::printf("  %-58s %9.0f %9.0f\n", "kB/s as fast as taken (at least 230)", rate, plainRate);
    std::printf("  %-58s %9.0f %9.0f\n", "    times 115200 baud (at least 20)",
                rate * 1e3 / wireRate, plainRate * 1e3 / wireRate);
    std::printf("  %-58s %9.0f\n", "longest wait for text at 230 kB/s, ms (at most 100)",
                paced.longestStallMs);
    std::printf("  %-58s %9.0f\n", "    processor share meanwhile, %", paced.msPerFrame * 100);
}

/// A line of a flashing log. Every thousandth line holds a marker.
QByteArray LogLine(int number)
{
    if (number % 1000 == 999) {
        return "[      5.344] successed in downloading uboot\r\n";
    }
    return "[" + QByteArray::number(number) + "] sunxi flash write part data block, no fail\r\n";
}

void CompareLogs()
{
    std::puts("\nProduction page, a flashing log, in chunks of 4 kB");
    ToolProductionTest page(nullptr);
    Shown(page);
    const int lines = 1000000;
    double tenth[10] = {};
    double longest = 0;
    qint64 bytes = 0;
    const double before = SpentMs();
    for (int part = 0; part < 10; ++part) {
        const double beforePart = SpentMs();
        QByteArray chunk;
        for (int i = 0; i < lines / 10; ++i) {
            chunk += LogLine(part * (lines / 10) + i);
            if (chunk.size() >= 4096) {
                QElapsedTimer turn;
                turn.start();
                bytes += chunk.size();
                page.ProcessData(chunk);
                chunk.clear();
                QApplication::processEvents();
                longest = std::max(longest, turn.nsecsElapsed() / 1e6);
            }
        }
        page.ProcessData(chunk);
        bytes += chunk.size();
        tenth[part] = SpentMs() - beforePart;
    }
    const double rate = bytes / (SpentMs() - before);
    auto* tabs = page.findChild<QTabWidget*>();
    auto* summary = qobject_cast<ReceiveView*>(tabs->widget(0));
    auto* detail = qobject_cast<ReceiveView*>(tabs->widget(1));
    summary->ShowGathered();
    detail->ShowGathered();
    const int posted = summary->toPlainText().count("********");

    QTextEdit plain;
    Shown(plain);
    const double beforePlain = SpentMs();
    const Feed toPlain = Into(plain);
    for (int i = 0; i < 20000; ++i) {
        toPlain(LogLine(i));
        if (i % 80 == 0) {
            QApplication::processEvents();
        }
    }
    const double plainRate = 20000 * 57 / (SpentMs() - beforePlain);

    std::printf("  %-58s %9s %9s\n", "", "this", "plain");
    std::printf("  %-58s %9.0f %9.0f\n", "kB/s, 1,000,000 lines (at least 10,000)", rate,
                plainRate);
    std::printf("  %-58s %9.2f\n", "    last tenth beside the second (flat)", tenth[9] / tenth[1]);
    std::printf("  %-58s %9.0f\n", "    longest stall, ms", longest);
    std::printf("  %-58s %9d\n", "    markers posted, of 1000 and the open port's", posted);
    std::printf("  %-58s %9d\n", "    lines kept (at least 20,000)",
                detail->document()->blockCount());
}

/// A letter with very many accents, as a broken stream may hold.
void CompareAccents()
{
    const QString letter = 'x' + QString(100000, QChar(0x301));
    const auto spent = [&letter](const Feed& feed) {
        const double before = SpentMs();
        feed(letter);
        QApplication::processEvents();
        return SpentMs() - before;
    };
    ReceiveView view(nullptr);
    const double here = spent(Into(Shown(view)));
    QTextEdit plain;
    const double there = spent(Into(Shown(plain)));
    std::printf("\n  %-58s %9s %9s\n", "", "this", "plain");
    std::printf("  %-58s %9.0f %9.0f\n", "a letter with 100,000 accents, ms (at most 200)", here,
                there);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    CompareFrames();
    CompareStreams("no line ends", "0123456789 abcdefghijklmnopqrstuvwxyz");
    CompareStreams("with line ends", "0123456789 abcdefghijklmnopqrstuvwxyz 0123456789 abcdef\n");
    CompareLogs();
    CompareAccents();
    return 0;
}
