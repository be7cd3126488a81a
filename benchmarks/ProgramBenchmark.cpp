// What the program costs as a whole, beside the least that a program like it can be (Floor.cpp).
// Runs on the simulated board. Processor times hold on a busy machine too; the others do not.

#include "benchmarks/Process.h"
#include "simulated-board/Board.h"
#include "simulated-board/PseudoTerminal.h"
#include "simulated-board/operator/Operator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{

const char* const program = "MoskTest";
const char* const floorProgram = "benchmarks/Floor";
const char* const style = ":/qss/style.qss";

void PrintHead(const char* what)
{
    std::printf("\n%-58s %9s %9s %9s\n", what, "this", "floor", "ratio");
}

void PrintRow(const char* what, double value, double floor)
{
    std::printf("  %-56s %9.1f %9.1f %9.2f\n", what, value, floor, value / floor);
    std::fflush(stdout);
}

template <typename Values>
double Median(Values values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

Process::Start StartOf(const char* name, const QStringList& arguments)
{
    return Process(name, arguments, "first-frame", "benchmarks/plugins").WaitForFirstFrame();
}

void CompareStarts()
{
    PrintHead("From exec to the first frame");
    std::vector<double> processor;
    std::vector<double> floorProcessor;
    std::vector<double> elapsed;
    std::vector<double> floorElapsed;
    for (int i = 0; i < 21; ++i) {
        const Process::Start floor = StartOf(floorProgram, {style});
        const Process::Start start = StartOf(program, {});
        processor.push_back(start.processorMs);
        floorProcessor.push_back(floor.processorMs);
        elapsed.push_back(start.elapsedMs);
        floorElapsed.push_back(floor.elapsedMs);
    }
    PrintRow("processor time, ms (at most 1.15)", Median(processor), Median(floorProcessor));
    PrintRow("elapsed, ms", Median(elapsed), Median(floorElapsed));
}

void CompareSizes()
{
    PrintHead("At the first page");
    const auto measure = [](const char* name, const QStringList& arguments,
                            QStringList& libraries) {
        const Process process(name, arguments);
        process.WaitUntilIdle();
        libraries = process.Libraries();
        return process.MemoryNow();
    };
    QStringList floorLibraries;
    QStringList libraries;
    const Process::Memory floor = measure(floorProgram, {style}, floorLibraries);
    const Process::Memory memory = measure(program, {}, libraries);
    PrintRow("resident memory, MB (at most 1.1)", memory.residentMb, floor.residentMb);
    PrintRow("    its share where pages are shared", memory.proportionalMb, floor.proportionalMb);
    PrintRow("libraries and plug-ins mapped", libraries.size(), floorLibraries.size());
    std::sort(libraries.begin(), libraries.end());
    for (const QString& library : qAsConst(libraries)) {
        if (!floorLibraries.contains(library)) {
            std::printf("      %s\n", qPrintable(library));
        }
    }
}

/// The share of a core that `process` takes for a port that receives `text` again and again at
/// 115200 baud, in percent.
double ShareAtLineRate(const Process& process, PseudoTerminal& port, const QByteArray& text)
{
    const double bytesPerMs = 11.52;
    const int seconds = 10;
    QByteArray rest;
    qint64 sent = 0;
    const double before = process.ProcessorMs();
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < qint64(1000) * seconds) {
        QThread::msleep(4);
        const int due = static_cast<int>(elapsed.elapsed() * bytesPerMs - sent);
        while (rest.size() < due) {
            rest += text;
        }
        port.Write(rest.left(due));
        rest.remove(0, due);
        sent += due;
    }
    return (process.ProcessorMs() - before) / elapsed.elapsed() * 100;
}

/// The program with an operator at it, on a page.
class OpenProgram : public Process
{
public:
    explicit OpenProgram(int page)
        : Process(program, {}, "operator:" + Operator::DefaultSocketPath(),
                  "simulated-board/plugins")
    {
        Operator tester;
        if (!tester.Connect() || !tester.OpenPage(page)) {
            qFatal("%s", qPrintable(tester.Error()));
        }
    }

    void Click(const QString& button)
    {
        Operator tester;
        if (!tester.Connect() || !tester.Click(button)) {
            qFatal("%s", qPrintable(tester.Error()));
        }
    }
};

void CompareStreams()
{
    PrintHead("A full 115200 baud, % of a core");
    const QByteArray lines = "[116] sunxi flash write part data block, no fail\r\n";
    const QByteArray noLineEnds = "0123456789 abcdefghijklmnopqrstuvwxyz ";
    double floor = 0;
    {
        PseudoTerminal port("/dev/ttyS2");
        const Process process(floorProgram, {style, "/dev/ttyS2"});
        process.WaitUntilIdle();
        floor = ShareAtLineRate(process, port, lines);
    }
    const auto compare = [&](const char* what, int page, const char* button,
                             const QByteArray& text) {
        // A new one each time: a program that was killed has never given up its claim on the port.
        PseudoTerminal port("/dev/ttyS2");
        OpenProgram process(page);
        if (button != nullptr) {
            process.Click(button);
        }
        process.WaitUntilIdle();
        PrintRow(what, ShareAtLineRate(process, port, text), floor);
    };
    compare("production page, detail on show (at most 4)", 5, "btnDetail", lines);
    compare("production page, summary on show (at most 2.5)", 5, nullptr, lines);
    compare("serial page, lines (at most 3.5)", 3, "btnOpenCom", lines);
    compare("serial page, no line ends (at most 8)", 3, "btnOpenCom", noLineEnds);
}

void MeasureIdle()
{
    std::printf("\n%-58s %9s\n", "Idle, % of a core (0.0)", "this");
    for (int page = 1; page <= 10; ++page) {
        const OpenProgram process(page);
        process.WaitUntilIdle();
        const int seconds = 5;
        const double before = process.ProcessorMs();
        QThread::sleep(seconds);
        std::printf("  page %-51d %9.2f\n", page, (process.ProcessorMs() - before) / seconds / 10);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Board::Become("language english\n");
    CompareStarts();
    CompareSizes();
    CompareStreams();
    MeasureIdle();
    return 0;
}
