#include "frame/Pages.h"
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

/// X's codes for keys.
const quint32 shift = 0xffe1;
const quint32 control = 0xffe3;
const quint32 alt = 0xffe9;
const quint32 f4 = 0xffc1;
const quint32 f10 = 0xffc7;
const quint32 keys[] = {0xff08, 0xff09, 0xff0d, 0xff1b, 0xff52, 0xff54, ' ', 'a', '7', f4, f10};

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
/// Most gestures are taps at what is on the screen, the on-screen keyboard included. Others are
/// right clicks, drags, keys, and the wheel of a mouse. They come in bursts. Half of the bursts
/// come while the program stands still, as on a busy board. Between bursts pages are opened by
/// their ids.
class RandomTapsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void programLivesThroughRandomTaps();

private:
    int Random(int limit) { return m_random.bounded(limit); }
    bool OneIn(int times) { return Random(times) == 0; }
    QPoint AnyPlaceIn(const QRect& area);

    bool Start();
    bool Lives();
    bool StartsAgainAfterReboot();
    void LookAround();
    void AddPlaces(const QString& window);
    void SendBurst();
    QPoint AnyPlace();
    void SendGesture();
    void StrikeAnyKey();
    void TurnWheelAnywhere();
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
    int m_gestures = 0;
    QList<QRect> m_places;
    QRect m_keyboard;
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
    LookForNoLeaks(m_program);
    m_program.setProcessChannelMode(QProcess::MergedChannels);
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

/// Finds the places to tap: those of an open list or box, or else those of the page, and the keys.
void RandomTapsTest::LookAround()
{
    m_places.clear();
    for (const char* window : {"QComboBoxPrivateContainer", "QMessageBox", "ToolTouchTest"}) {
        AddPlaces(window);
    }
    if (m_places.isEmpty()) {
        AddPlaces("MoskTester");
    }
    m_keyboard = {};
    if (m_operator.Property("keyboardPanel", "visible").toBool()) {
        const int top = m_operator.Property("keyboardPanel", "y").toInt();
        m_keyboard = screen.adjusted(0, top, 0, 0);
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

QPoint RandomTapsTest::AnyPlace()
{
    const QRect menu(90, 0, 600, 50);
    const QRect centre(462, 250, 100, 100);
    if (OneIn(4)) {
        return AnyPlaceIn(menu);
    }
    if (OneIn(10)) {
        return AnyPlaceIn(centre); // where the touch test ends
    }
    if (!m_keyboard.isEmpty() && OneIn(3)) {
        return AnyPlaceIn(m_keyboard);
    }
    if (OneIn(10) || m_places.isEmpty()) {
        return AnyPlaceIn(screen);
    }
    // What a tap opens may lie below.
    const QPoint below(0, OneIn(4) ? Random(60) : 0);
    return AnyPlaceIn(m_places[Random(m_places.size())]) + below;
}

void RandomTapsTest::SendGesture()
{
    ++m_gestures;
    const QPoint place = AnyPlace();
    const QString noted = QString("%1,%2").arg(place.x()).arg(place.y());
    if (OneIn(10)) {
        Note("right " + noted);
        m_viewer.Tap(place, VncViewer::RightButton);
    } else if (OneIn(10)) {
        // Two taps select the word that is dragged then.
        const QPoint to = OneIn(2) ? AnyPlaceIn(screen) : place + QPoint(Random(100), 0);
        const bool selects = OneIn(2);
        Note(QString("%1 %2 to %3,%4")
                 .arg(selects ? "select and drag" : "drag", noted)
                 .arg(to.x())
                 .arg(to.y()));
        if (selects) {
            m_viewer.Tap(place);
            m_viewer.Tap(place);
        }
        m_viewer.Drag(place, to);
    } else if (OneIn(10)) {
        StrikeAnyKey();
    } else {
        Note(noted);
        m_viewer.Tap(place);
    }
}

void RandomTapsTest::StrikeAnyKey()
{
    const quint32 modifiers[] = {0, 0, shift, control, alt};
    const quint32 key = keys[Random(std::size(keys))];
    const quint32 modifier = modifiers[Random(std::size(modifiers))];
    Note(QString("key %1 with %2").arg(key, 0, 16).arg(modifier, 0, 16));
    m_viewer.StrikeKey(key, modifier);
}

void RandomTapsTest::SendBurst()
{
    const bool isStalled = OneIn(2);
    const auto program = static_cast<pid_t>(m_program.processId());
    if (isStalled) {
        Note("stop");
        kill(program, SIGSTOP);
    }
    for (int gestures = 1 + Random(6); gestures > 0; --gestures) {
        SendGesture();
    }
    if (isStalled) {
        QThread::msleep(Random(500));
        Note("go on");
        kill(program, SIGCONT);
    }
}

/// Turns the wheel or presses the menu key. The screen's protocol has neither.
void RandomTapsTest::TurnWheelAnywhere()
{
    ++m_gestures;
    if (OneIn(2)) {
        Note("menu key");
        m_operator.PressKey("Menu");
        return;
    }
    const char* const kinds[] = {"QComboBox", "QTextEdit", "QComboBoxListView", "menuTab"};
    const QString widget = kinds[Random(std::size(kinds))];
    Note("wheel over " + widget);
    m_operator.TurnWheel(widget, Random(7) - 3);
}

/// Opens a page by its id. Some pages have no tab.
void RandomTapsTest::OpenAnyPage()
{
    const Page& page = allPages[Random(allPages.size())];
    Note(QString("page %1").arg(page.name));
    m_operator.OpenPage(page.id);
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
        if (OneIn(4)) {
            TurnWheelAnywhere();
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
    qInfo("%d gestures in %d bursts", m_gestures, bursts);
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
