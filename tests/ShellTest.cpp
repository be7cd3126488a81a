#include "instruments/Shell.h"
#include "simulated-board/Board.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>

#include <sys/resource.h>

namespace
{

const char* const signalsPath = "/tmp/signals";
const char* const showSignals = "grep SigIgn /proc/self/status";

/// Whether a command that printed its line of /proc/self/status was started with SIGPIPE ignored.
bool IgnoresSigPipe(const QByteArray& status)
{
    bool isNumber = false;
    const qulonglong mask =
        status.mid(status.indexOf(':') + 1).trimmed().toULongLong(&isNumber, 16);
    return !isNumber || (mask >> (SIGPIPE - 1) & 1) != 0;
}

bool IgnoresSigPipe()
{
    struct sigaction action = {};
    sigaction(SIGPIPE, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace

class ShellTest : public QObject
{
    Q_OBJECT

private slots:
    void commandIsRunToItsEnd();
    void firstBytesOfTheOutputAreRead();
    void readWaitsForWhatAToolStillSays();
    void linesAreTakenAsTheyCome();
    void commandThatCannotBeStartedIsLoggedWithoutItsArguments();

    void commandsMeetTheDefaultSignals_data();
    void commandsMeetTheDefaultSignals();
    void pipelineEndsWithItsReader();
};

void ShellTest::commandIsRunToItsEnd()
{
    RunShell("sleep 0.1; echo done > /tmp/done");
    QCOMPARE(Board::ReadFile("/tmp/done"), QByteArray("done\n"));
}

void ShellTest::firstBytesOfTheOutputAreRead()
{
    QCOMPARE(ReadShell("printf 12345", 3), std::optional<QByteArray>("123"));
    QCOMPARE(ReadShell("printf 12345", 30), std::optional<QByteArray>("12345"));
    QCOMPARE(ReadShell("false", 30), std::optional<QByteArray>(""));
}

void ShellTest::readWaitsForWhatAToolStillSays()
{
    QCOMPARE(ReadShell("printf 12; sleep 0.2; printf 345", 30), std::optional<QByteArray>("12345"));
}

void ShellTest::linesAreTakenAsTheyCome()
{
    QFile::remove("/tmp/over");
    QList<QByteArray> lines;
    ReadLines("sh", {"-c", "printf ha; sleep 0.2; echo lf; sleep 0.2; touch /tmp/over; echo last"},
              [&lines](const QByteArray& line) {
                  lines.append(line + (QFile::exists("/tmp/over") ? "late" : "at once"));
              });
    QCOMPARE(lines, QList<QByteArray>({"half\nat once", "last\nlate"}));
}

void ShellTest::commandThatCannotBeStartedIsLoggedWithoutItsArguments()
{
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none = {3, limit.rlim_max};
    QTest::ignoreMessage(QtWarningMsg, "Cannot run wpa_cli: Too many open files");

    QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto read = ReadShell("wpa_cli -i wlan0 set_network 0 psk secret", 30);
    QTest::ignoreMessage(QtWarningMsg, "Cannot run sync: Too many open files");
    const auto readWithout = ReadShell("sync", 30);
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);

    QVERIFY(!read && !readWithout);
}

void ShellTest::commandsMeetTheDefaultSignals_data()
{
    QTest::addColumn<bool>("isIgnored");
    QTest::newRow("default here") << false;
    QTest::newRow("ignored here") << true;
}

void ShellTest::commandsMeetTheDefaultSignals()
{
    QFETCH(bool, isIgnored);
    std::signal(SIGPIPE, isIgnored ? SIG_IGN : SIG_DFL);

    RunShell(QByteArray(showSignals) + " > " + signalsPath);
    const QByteArray run = Board::ReadFile(signalsPath);
    QVERIFY2(!IgnoresSigPipe(run), run.constData());
    const auto read = ReadShell(showSignals, 100);
    QVERIFY2(read && !IgnoresSigPipe(*read), read->constData());
    // This program stays as it was.
    QCOMPARE(IgnoresSigPipe(), isIgnored);

    // Once a process was written to, Qt ignores the signal here.
    QProcess process;
    process.start("sh", {"-c", QString("cat; ") + showSignals});
    process.write("\n");
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    const QByteArray started = process.readAll();
    QVERIFY2(!IgnoresSigPipe(started), started.constData());
    QVERIFY2(!IgnoresSigPipe(*ReadShell(showSignals, 100)), "after a QProcess");
}

void ShellTest::pipelineEndsWithItsReader()
{
    std::signal(SIGPIPE, SIG_IGN);
    QCOMPARE(ReadShell("(yes; echo $? > /tmp/yes) | head -n 1", 10),
             std::optional<QByteArray>("y\n"));
    QTRY_COMPARE(Board::ReadFile("/tmp/yes"), QByteArray::number(128 + SIGPIPE) + "\n");
}

QTEST_GUILESS_MAIN(ShellTest)
#include "ShellTest.moc"
