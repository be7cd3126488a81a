#include "simulated-board/Board.h"
#include "tests/Program.h"
#include "tests/VncViewer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <csignal>
#include <cstdio>

namespace
{

const QRect screen(0, 0, 1024, 600);
/// Longer than all checks of a burst take together.
const int longestWaitMs = 200000;
const int keptTaps = 40;

int SecondsToRun()
{
    return qEnvironmentVariableIsSet("RANDOM_TAPS_SECONDS")
               ? qEnvironmentVariableIntValue("RANDOM_TAPS_SECONDS")
               : 30;
}

} // namespace

/// A hasty operator taps the real program for RANDOM_TAPS_SECONDS, half a minute by default.
/// RANDOM_TAPS_SEED repeats a run, as far as the program takes the same time.
///
/// Most taps aim at what is on the screen. They come in bursts. Half of the bursts come while the
/// program stands still, as on a busy board.
class RandomTapsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void programLivesThroughRandomTaps();

private:
    int Random(int limit) { return static_cast<int>(m_random.bounded(limit)); }
    bool OneIn(int times) { return Random(times) == 0; }
    QPoint AnyPlaceIn(const QRect& area);

    bool Start();
    bool Lives();
    bool StartsAgainAfterReboot();
    void LookAround();
    void AddPlaces(const QString& window);
    void SendBurst();
    void SendTap();
    void OpenAnyPage();
    void Note(const QString& what);
    QString Story() const;

    quint32 m_seed = 0;
    QRandomGenerator m_random;
    QProcess m_program;
    Operator m_operator;
    VncViewer m_viewer;
    QByteArray m_said;
    QStringList m_taps;
    QList<QRect> m_places;
};

void RandomTapsTest::initTestCase()
{
    const QString home = QString::fromLocal8Bit(qgetenv("BOARD_HOME"));
    Board::Become(Board::ReadFile(home + "/../boards/default.board"));
    bool isGiven = false;
    m_seed = qEnvironmentVariable("RANDOM_TAPS_SEED").toUInt(&isGiven);
    if (!isGiven) {
        m_seed = QRandomGenerator::global()->generate();
    }
    m_random.seed(m_seed);
    m_operator.SetLimit(longestWaitMs);
    PutOperatorAt(m_program);
    m_program.setProcessChannelMode(QProcess::MergedChannels);
    // The keyboard's engine lasts as long as the process. A reboot ends that at any moment.
    QProcessEnvironment environment = m_program.processEnvironment();
    environment.insert("ASAN_OPTIONS", "detect_leaks=0");
    m_program.setProcessEnvironment(environment);
}

void RandomTapsTest::cleanup()
{
    if (QTest::currentTestFailed()) {
        std::fprintf(stderr, "%s\n", qPrintable(Story()));
    }
    m_program.kill();
    m_program.waitForFinished();
}

QPoint RandomTapsTest::AnyPlaceIn(const QRect& area)
{
    return area.topLeft() + QPoint(Random(area.width()), Random(area.height()));
}

void RandomTapsTest::Note(const QString& what)
{
    m_taps.append(what);
    if (m_taps.size() > keptTaps) {
        m_taps.removeFirst();
    }
}

/// What one needs to find out why the program has ended.
QString RandomTapsTest::Story() const
{
    return QString(
               "RANDOM_TAPS_SEED=%1\nThe last taps: %2\nThe program ended with %3 and said:\n%4")
        .arg(m_seed)
        .arg(m_taps.join(", "))
        .arg(m_program.exitCode())
        .arg(QString::fromLocal8Bit(m_said));
}

bool RandomTapsTest::Start()
{
    QFile::remove("/run/board/restart");
    // The buttons that it hides are to be pressed too.
    QFile::remove("/etc/qttestend");
    m_program.start(Built("MoskTest"), QStringList());
    return m_program.waitForStarted() && m_operator.Connect() && m_viewer.Connect();
}

/// Whether the program runs and has reported nothing. After a restart of the board it is started
/// again, as the firmware does.
bool RandomTapsTest::Lives()
{
    const bool isRunning = !m_program.waitForFinished(0) && m_program.state() == QProcess::Running;
    m_said += m_program.readAll();
    for (const char* report : {"Sanitizer", "runtime error:"}) {
        if (m_said.contains(report)) {
            m_program.waitForFinished(10000);
            m_said += m_program.readAll();
            return false;
        }
    }
    return isRunning || StartsAgainAfterReboot();
}

bool RandomTapsTest::StartsAgainAfterReboot()
{
    const bool endedInOrder =
        m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0;
    if (!QFile::exists("/run/board/restart") || !endedInOrder) {
        return false;
    }
    Note("restart");
    return Start();
}

/// Finds the places to tap: those of an open list or box, or else those of the page.
void RandomTapsTest::LookAround()
{
    m_places.clear();
    for (const char* window : {"QComboBoxPrivateContainer", "QMessageBox", "ToolTouchTest"}) {
        AddPlaces(window);
    }
    if (m_places.isEmpty()) {
        AddPlaces("MoskTester");
    }
}

/// Adds the places of a window's small widgets, if the window is shown. Large widgets only contain
/// others.
void RandomTapsTest::AddPlaces(const QString& window)
{
    if (!m_operator.Property(window, "visible").toBool()) {
        return;
    }
    const QPoint corner(m_operator.Property(window, "x").toInt(),
                        m_operator.Property(window, "y").toInt());
    const QJsonArray widgets = m_operator.List(window + " QWidget");
    for (const QJsonValue& entry : widgets) {
        const QJsonObject widget = entry.toObject();
        const QRect place(widget["x"].toInt(), widget["y"].toInt(), widget["width"].toInt(),
                          widget["height"].toInt());
        const QRect seen = place.translated(corner) & screen;
        if (widget["visible"].toBool() && widget["enabled"].toBool() && !seen.isEmpty() &&
            place.height() < screen.height() / 2) {
            m_places.append(seen);
        }
    }
}

void RandomTapsTest::SendTap()
{
    const QRect menu(90, 0, 600, 50);
    const QRect centre(462, 250, 100, 100);
    QPoint place = AnyPlaceIn(screen);
    if (OneIn(4)) {
        place = AnyPlaceIn(menu);
    } else if (OneIn(10)) {
        place = AnyPlaceIn(centre); // where the touch test ends
    } else if (!OneIn(10) && !m_places.isEmpty()) {
        place = AnyPlaceIn(m_places[Random(m_places.size())]);
        // What it opens may lie below.
        place.ry() += OneIn(4) ? Random(60) : 0;
    }
    Note(QString("%1,%2").arg(place.x()).arg(place.y()));
    m_viewer.Tap(place);
}

void RandomTapsTest::SendBurst()
{
    const bool isStalled = OneIn(2);
    const auto program = static_cast<pid_t>(m_program.processId());
    if (isStalled) {
        Note("stop");
        kill(program, SIGSTOP);
    }
    for (int taps = 1 + Random(6); taps > 0; --taps) {
        SendTap();
    }
    if (isStalled) {
        QThread::msleep(Random(500));
        Note("go on");
        kill(program, SIGCONT);
    }
}

/// Opens a page by its id. Some pages have no tab.
void RandomTapsTest::OpenAnyPage()
{
    const int page = 1 + Random(10);
    Note(QString("page %1").arg(page));
    m_operator.OpenPage(page);
}

void RandomTapsTest::programLivesThroughRandomTaps()
{
    qInfo("RANDOM_TAPS_SEED=%u", m_seed);
    QElapsedTimer begun;
    begun.start();
    QVERIFY2(Start(), qPrintable(m_operator.Error()));
    int bursts = 0;
    while (begun.elapsed() < qint64(SecondsToRun()) * 1000) {
        if (OneIn(8)) {
            OpenAnyPage();
        }
        LookAround();
        QVERIFY2(!m_operator.Error().startsWith("no answer"), qPrintable(m_operator.Error()));
        for (int i = Random(5); i >= 0; --i) {
            SendBurst();
            ++bursts;
            // Watches the screen for a while.
            const auto watch = [](const QImage&) { return false; };
            m_viewer.WaitForPicture(watch, Random(400));
        }
        QVERIFY2(Lives(), qPrintable(m_operator.Error()));
    }
    qInfo("%d bursts", bursts);
    QVERIFY2(m_operator.Idle() || Lives(), qPrintable(m_operator.Error()));
}

int main(int argc, char** argv)
{
    // Qt would end a test function after five minutes.
    qputenv("QTEST_FUNCTION_TIMEOUT",
            QByteArray::number(SecondsToRun() * qint64(1000) + longestWaitMs));
    QCoreApplication application(argc, argv);
    RandomTapsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "RandomTapsTest.moc"
