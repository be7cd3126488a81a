#include "simulated-board/Board.h"
#include "tests/Program.h"
#include "tests/VncViewer.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>
#include <QThread>

#include <csignal>

namespace
{

/// The combo box of the page shown, and a place where no page has anything.
const char* const list = "bodyWidget QComboBox";
const QPoint beside(700, 500);
const QRect screen(0, 0, 1024, 600);

/// X's code for the key.
const quint32 upKey = 0xff52;

/// A tool of the board that waits until the test lets it work.
const QByteArray waitForTheTest = "while [ ! -e /run/board/go ]; do sleep 0.02; done\n";

} // namespace

/// The real program and a finger: what the screen shows, and the effect of quick taps. The taps of
/// a burst are sent while the program stands still, as on a busy board.
class TapsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void screenShowsThatACheckHasBegun_data();
    void screenShowsThatACheckHasBegun();
    void whatIsPressedDuringACheckWaitsForItsEnd();

    void tabTappedAsAListCloses_data();
    void tabTappedAsAListCloses();
    void pageOpenedFromOutsideWhileAListIsOpen();

    void tabTappedAsABoxCloses();

    void languageChosenAndABoxOpened_data();
    void languageChosenAndABoxOpened();

    void listAndBoxTapped_data();
    void listAndBoxTapped();

private:
    QRect Place(const QString& widget);
    void Tap(const QString& widget) { m_viewer.Tap(Place(widget).center()); }
    QPoint Tab(int index) const { return {90 + 50 + 100 * index, 25}; }
    void Stall() const { kill(static_cast<pid_t>(m_program.processId()), SIGSTOP); }
    void GoOn() const { kill(static_cast<pid_t>(m_program.processId()), SIGCONT); }
    void OpenList(const QString& widget);
    bool IsListOpen();
    QImage See(const QRect& place);
    bool ScreenChanges(const QRect& place, const QImage& from);

    QProcess m_program;
    Operator m_operator;
    VncViewer m_viewer;
};

void TapsTest::init()
{
    Board::Become("language english\nlink usb0 10.64.64.2 10.64.64.1\nmmc 0 1\nwlan0 up\n"
                  "usb-storage\nnetwork MoskBench -47 12345678\n");
    QFile::remove("/run/board/go");
    PutOperatorAt(m_program);
    LookForNoLeaks(m_program);
    m_program.start(Built("MoskTest"), QStringList());
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
    QVERIFY2(m_viewer.Connect(), qPrintable(m_viewer.Error()));
}

void TapsTest::cleanup()
{
    Board::RemoveTools();
    m_viewer.Disconnect();
    const bool isIdle = m_operator.Idle();
    QVERIFY2(EndInOrder(m_program) && isIdle, "the program has not ended in order");
}

/// The place of a widget in the main window.
QRect TapsTest::Place(const QString& widget)
{
    const QJsonObject found = m_operator.List(widget).first().toObject();
    return {found["x"].toInt(), found["y"].toInt(), found["width"].toInt(),
            found["height"].toInt()};
}

/// Taps a combo box and waits until the program has opened its list.
void TapsTest::OpenList(const QString& widget)
{
    QVERIFY(!IsListOpen());
    Tap(widget);
    QTRY_VERIFY(IsListOpen());
}

bool TapsTest::IsListOpen()
{
    return m_operator.Property("QComboBoxListView", "visible").toBool();
}

/// The picture at a place of the screen, when all that the program has painted there has reached
/// it.
QImage TapsTest::See(const QRect& place)
{
    const QImage painted = QImage::fromData(m_operator.Screenshot()).copy(place);
    const auto isThere = [&](const QImage& picture) { return picture.copy(place) == painted; };
    if (!m_viewer.WaitForPicture(isThere)) {
        QTest::qFail(qPrintable(m_viewer.Error()), __FILE__, __LINE__);
    }
    return painted;
}

/// Waits until the picture at a place of the screen changes.
bool TapsTest::ScreenChanges(const QRect& place, const QImage& from)
{
    return m_viewer.WaitForPicture(
        [&](const QImage& picture) { return picture.copy(place) != from; });
}

void TapsTest::screenShowsThatACheckHasBegun_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("tool");

    QTest::newRow("Detecting...") << 1 << "btnUsbTest"
                                  << "bodyWidget QLineEdit[0]"
                                  << "wc";
    QTest::newRow("Connecting") << 3 << "btnConnect"
                                << "bodyWidget QLineEdit[0]"
                                << "wpa_cli";
}

void TapsTest::screenShowsThatACheckHasBegun()
{
    QFETCH(int, tab);
    QFETCH(QString, button);
    QFETCH(QString, field);
    QFETCH(QString, tool);
    QVERIFY(m_operator.ClickTab("menuTab", tab));
    if (tool == "wpa_cli") {
        // Until a scan is over there are no results.
        QTRY_VERIFY(m_operator.Click("btnScan") &&
                    !m_operator.Items("bodyWidget QComboBox").isEmpty());
        QVERIFY(m_operator.SetText("bodyWidget QLineEdit[1]", "12345678"));
        QVERIFY(m_operator.ClickTab("menuTab", tab));
    }
    const QRect place = Place(field);
    const QRect buttonPlace = Place(button);
    const QImage atRest = See(buttonPlace);
    m_viewer.Press(buttonPlace.center());
    QVERIFY(ScreenChanges(buttonPlace, atRest));
    const QImage before = See(place);
    Board::PutTool(tool, waitForTheTest + "echo 1");

    m_viewer.Release(buttonPlace.center());

    QVERIFY2(ScreenChanges(place, before), "the screen does not show that the check has begun");
    const QImage during = m_viewer.Picture().copy(place);
    Board::WriteFile("/run/board/go", {});
    QVERIFY(ScreenChanges(place, during));
}

void TapsTest::whatIsPressedDuringACheckWaitsForItsEnd()
{
    QVERIFY(m_operator.ClickTab("menuTab", 1));
    Board::PutTool("wc", "echo check >>/run/board/calls\n" + waitForTheTest + "echo 1");
    const QPoint usb = Place("btnUsbTest").center();
    const QPoint sdCard = Place("btnSdCardTest").center();

    Stall();
    m_viewer.Tap(usb);
    m_viewer.Tap(sdCard);
    m_viewer.Tap(usb);
    m_viewer.Tap(Tab(0));
    GoOn();

    QTRY_COMPARE(Board::Calls().count("check"), 1);
    Board::WriteFile("/run/board/go", {});
    QVERIFY2(m_operator.Idle(), qPrintable(m_operator.Error()));
    QCOMPARE(Board::Calls().count("check"), 2);
    QCOMPARE(m_operator.Count("btnReboot"), 1);
}

void TapsTest::tabTappedAsAListCloses_data()
{
    QTest::addColumn<bool>("choose");

    QTest::newRow("item chosen") << true;
    QTest::newRow("tapped beside") << false;
}

void TapsTest::tabTappedAsAListCloses()
{
    QFETCH(bool, choose);
    for (int i = 0; i < 3; ++i) {
        OpenList(list);
        const QPoint first = choose ? Place(list).center() + QPoint(0, 49) : beside;

        Stall();
        m_viewer.Tap(first);
        m_viewer.Tap(Tab(1));
        m_viewer.Tap(Tab(5));
        GoOn();

        QVERIFY2(m_operator.WaitForText("menuTab", "CAN"), qPrintable(m_operator.Error()));
        QTRY_COMPARE(m_operator.Count("CanTester"), 1);
        QCOMPARE(m_operator.Count("StartPage"), 0);
        // The next list is none that hangs on the page deleted.
        OpenList(list);
        m_viewer.Tap(beside);
        QTRY_VERIFY(!IsListOpen());
        QVERIFY2(m_operator.ClickTab("menuTab", 0), qPrintable(m_operator.Error()));
    }
}

void TapsTest::pageOpenedFromOutsideWhileAListIsOpen()
{
    OpenList(list);

    QVERIFY(m_operator.OpenPage("production"));

    QTRY_COMPARE(m_operator.Count("ToolProductionTest"), 1);
    QVERIFY(!IsListOpen());
    m_viewer.Tap(Tab(1));
    QTRY_COMPARE(m_operator.Count("BasicTester"), 1);
}

void TapsTest::tabTappedAsABoxCloses()
{
    Tap("btnTestEnd");
    QTRY_COMPARE(m_operator.Count("QMessageBox"), 1);
    const QPoint box(m_operator.Property("QMessageBox", "x").toInt(),
                     m_operator.Property("QMessageBox", "y").toInt());
    const QPoint yes = Place("QMessageBox QPushButton[0]").center();

    Stall();
    m_viewer.Tap(box + yes);
    m_viewer.Tap(Tab(1));
    GoOn();

    QTRY_COMPARE(m_operator.Count("BasicTester"), 1);
    QVERIFY(QFile::exists("/etc/qttestend"));
    QCOMPARE(m_operator.Count("QMessageBox"), 0);
}

void TapsTest::languageChosenAndABoxOpened_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("byKey");

    QTest::newRow("switch") << "btnSwitchHMI" << false;
    QTest::newRow("finished") << "btnTestEnd" << false;
    QTest::newRow("by key, switch") << "btnSwitchHMI" << true;
    QTest::newRow("by key, finished") << "btnTestEnd" << true;
}

void TapsTest::languageChosenAndABoxOpened()
{
    QFETCH(QString, button);
    QFETCH(bool, byKey);
    const QPoint finger = Place(button).center();
    OpenList(list);
    const QPoint chinese = Place(list).center() + QPoint(0, 27);
    if (byKey) {
        m_viewer.Tap(beside);
        QTRY_VERIFY(!IsListOpen());
    }

    Stall();
    if (byKey) {
        m_viewer.StrikeKey(upKey);
    } else {
        m_viewer.Tap(chinese);
    }
    m_viewer.Tap(finger);
    GoOn();

    QTRY_COMPARE(m_operator.Count("QMessageBox"), 1);
    QVERIFY(m_operator.Idle());
    QCOMPARE(m_operator.Text("btnReboot"), QString("Reboot"));
    QVERIFY(m_operator.PressBoxButton("No"));
    QVERIFY(m_operator.WaitForText("btnReboot", QString::fromUtf8("立即重启")));
    QCOMPARE(m_operator.Items("menuTab").value(0), QString::fromUtf8("首页"));
    QCOMPARE(m_operator.Count("QMessageBox"), 0);
}

void TapsTest::listAndBoxTapped_data()
{
    QTest::addColumn<int>("gap");

    for (const int gap : {0, 100, 400}) {
        QTest::addRow("%d ms apart", gap) << gap;
    }
}

void TapsTest::listAndBoxTapped()
{
    QFETCH(int, gap);
    const QPoint language = Place(list).center();
    const QPoint button = Place("btnSwitchHMI").center();

    Stall();
    m_viewer.Tap(language);
    QThread::msleep(static_cast<unsigned long>(gap));
    m_viewer.Tap(button);
    GoOn();

    QTRY_VERIFY(IsListOpen() || m_operator.Count("QMessageBox") == 1);
    QVERIFY(m_operator.Idle());
    const bool isBoxOpen = m_operator.Count("QMessageBox") == 1;
    QVERIFY(IsListOpen() != isBoxOpen);
    // The screen shows all windows that the program takes for open, and all of each.
    See(screen);
    // The page goes on as usual.
    if (!isBoxOpen) {
        m_viewer.Tap(beside);
        QTRY_VERIFY(!IsListOpen());
        m_viewer.Tap(button);
        QTRY_COMPARE(m_operator.Count("QMessageBox"), 1);
    }
    QVERIFY(m_operator.PressBoxButton("No"));
    QTRY_COMPARE(m_operator.Count("QMessageBox"), 0);
    QVERIFY(!IsListOpen());
}

QTEST_GUILESS_MAIN(TapsTest)
#include "TapsTest.moc"
