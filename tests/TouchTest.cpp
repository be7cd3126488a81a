#include "frame/BodyWidget.h"
#include "frame/MoskTester.h"
#include "pages/BasicTester.h"
#include "pages/TouchTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <QScreen>

#include <functional>

#include <qpa/qwindowsysteminterface.h>

namespace
{

const char* const calibrationFile = "/var/setting/system/pointercal";
const QColor red(255, 1, 4);
const QColor blue(96, 168, 239);

enum Row { Calibration = 2, Touch = 4 };
const int places = 81;
const int centre = 41;

void GiveTheScreen(const QSize& size)
{
    const QRect geometry({0, 0}, size);
    QWindowSystemInterface::handleScreenGeometryChange(QGuiApplication::primaryScreen(), geometry,
                                                       geometry);
    QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
}

/// The button with a number, counted in reading order. The button in the centre shows a text
/// instead.
QPushButton* Place(const ToolTouchTest& test, int number)
{
    auto* layout = qobject_cast<QGridLayout*>(test.layout());
    QLayoutItem* item = layout->itemAtPosition((number - 1) / 9, (number - 1) % 9);
    return item != nullptr ? qobject_cast<QPushButton*>(item->widget()) : nullptr;
}

/// The background of a button, beside its text.
QColor ColourOf(const ToolTouchTest& test, int number)
{
    return Place(test, number)->grab().toImage().pixelColor(4, 4);
}

/// The numbers of the places that are red on the screen.
QList<int> LitPlaces(ToolTouchTest& test)
{
    const QImage screen = test.grab().toImage();
    QList<int> lit;
    for (int number = 1; number <= places; ++number) {
        if (screen.pixelColor(Place(test, number)->pos() + QPoint(4, 4)) == red) {
            lit += number;
        }
    }
    return lit;
}

} // namespace

class TouchTest : public PageFixture<BasicTester>
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void rotationIsThatOfTheCalibrationsFirstLine();
    void rotationIsNoneWhereAFolderStands();
    void rotationIsReadAnewByEachPage();
    void rotationIsReadAgainOnDemand();

    void calibrationCannotBeStartedByTheOperator();
    void calibrationRunsTheToolAndRestartsTheBoard_data();
    void calibrationRunsTheToolAndRestartsTheBoard();
    void calibrationWithoutItsToolStillRestarts();
    void calibrationPaintsTheWindowAnew();

    void testCoversTheScreen_data();
    void testCoversTheScreen();
    void testNumbersItsPlaces_data();
    void testNumbersItsPlaces();
    void testLightsUpUnderTheFinger();
    void testLightsUpUnderTheMouse();
    void testFollowsASlidingFinger_data();
    void testFollowsASlidingFinger();
    void testFollowsAMouseThatIsHeld();
    void testLightsUpUnderTheMouseAfterAFinger();
    void testIsNotLeftByAFingerThatSlides();
    void testIsLeftByTheCentreOnly();
    void testHoldsThePageBack();
    void testLeavesNothingBehind();

private:
    int Rotation() { return InGrid<QComboBox>(m_page.get(), Calibration, 1)->currentIndex(); }

    /// Opens the touch test with a tap, calls `look`, and leaves the test with a tap on its centre.
    void DuringTheTest(const std::function<void(ToolTouchTest&)>& look);
    void PutFingerOn(QWidget* widget) { ReportFinger(CentreOf(widget), Qt::TouchPointPressed); }
    void SlideFingerTo(QWidget* widget) { ReportFinger(CentreOf(widget), Qt::TouchPointMoved); }
    void LiftFingerFrom(QWidget* widget) { ReportFinger(CentreOf(widget), Qt::TouchPointReleased); }
    static QPoint CentreOf(QWidget* widget) { return widget->mapToGlobal(widget->rect().center()); }
    void ReportFinger(const QPoint& place, Qt::TouchPointState state);

    QTouchDevice* m_screen = nullptr;
};

void TouchTest::initTestCase()
{
    m_screen = QTest::createTouchDevice();
}

void TouchTest::init()
{
    Board::Become("language english\n");
    Board::ForgetCalls();
    Speak("english");
    GiveTheScreen({1024, 600});
    Rebuild();
}

void TouchTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
}

void TouchTest::DuringTheTest(const std::function<void(ToolTouchTest&)>& look)
{
    bool seen = false;
    QTimer opened;
    connect(&opened, &QTimer::timeout, this, [this, look, &opened, &seen] {
        auto* test = qobject_cast<ToolTouchTest*>(QApplication::activeModalWidget());
        if (test == nullptr) {
            return;
        }
        opened.stop();
        seen = true;
        look(*test);
        PutFingerOn(Place(*test, centre));
        LiftFingerFrom(Place(*test, centre));
    });
    opened.start();
    auto* button = m_page->findChild<QPushButton*>("btnTouchTest");
    PutFingerOn(button);
    LiftFingerFrom(button);
    QVERIFY(seen);
}

/// Reports a finger as the touch screen's driver does.
void TouchTest::ReportFinger(const QPoint& place, Qt::TouchPointState state)
{
    QWindowSystemInterface::TouchPoint finger;
    finger.id = 1;
    finger.state = state;
    finger.pressure = state == Qt::TouchPointReleased ? 0 : 1;
    finger.area.moveCenter(place);
    QWindowSystemInterface::handleTouchEvent(nullptr, m_screen, {finger});
    QCoreApplication::processEvents();
}

void TouchTest::rotationIsThatOfTheCalibrationsFirstLine()
{
    const QByteArray nine = "1028 -4 -6520 7 617 -5292 65536 1024 600";
    Board::WriteFile(calibrationFile, nine + " 2\n" + nine + " 1\n");

    Rebuild();

    QCOMPARE(Rotation(), 2);
}

void TouchTest::rotationIsNoneWhereAFolderStands()
{
    QVERIFY(QDir().mkpath(calibrationFile));

    Rebuild();

    QCOMPARE(Rotation(), 0);
}

void TouchTest::rotationIsReadAnewByEachPage()
{
    Board::WriteFile(calibrationFile, "1 2 3 4 5 6 7 8 9 2\n");
    Rebuild();
    QCOMPARE(Rotation(), 2);
    QCOMPARE(InGrid<QComboBox>(m_page.get(), Calibration, 1)->currentText(), QString("Rotation 2"));

    QVERIFY(QFile::remove(calibrationFile));
    Rebuild();

    QCOMPARE(Rotation(), 0);
}

void TouchTest::rotationIsReadAgainOnDemand()
{
    Board::WriteFile(calibrationFile, "1 2 3 4 5 6 7 8 9 3\n");
    m_page->InitCurrentRotate();
    QCOMPARE(Rotation(), 3);

    QVERIFY(QFile::remove(calibrationFile));
    m_page->InitCurrentRotate();

    QCOMPARE(Rotation(), 0);
}

void TouchTest::calibrationCannotBeStartedByTheOperator()
{
    Press(m_page.get(), "btnTouchCalc");

    QCOMPARE(Board::Calls(), QStringList());
    QVERIFY(!InGrid<QComboBox>(m_page.get(), Calibration, 1)->isEnabled());
}

void TouchTest::calibrationRunsTheToolAndRestartsTheBoard_data()
{
    QTest::addColumn<int>("rotation");
    for (int rotation = 0; rotation <= 3; ++rotation) {
        QTest::newRow(QByteArray::number(rotation)) << rotation;
    }
}

void TouchTest::calibrationRunsTheToolAndRestartsTheBoard()
{
    QFETCH(int, rotation);
    InGrid<QComboBox>(m_page.get(), Calibration, 1)->setCurrentIndex(rotation);

    m_page->findChild<QPushButton*>("btnTouchCalc")->setEnabled(true);
    Press(m_page.get(), "btnTouchCalc");

    QCOMPARE(Board::Calls(),
             QStringList({QString("ts_calibrate -r %1").arg(rotation), QString("reboot")}));
    QCOMPARE(Board::ReadFile(calibrationFile).split(' ').size(), 10);
    Rebuild();
    QCOMPARE(Rotation(), rotation);
}

void TouchTest::calibrationWithoutItsToolStillRestarts()
{
    Board::PutTool("ts_calibrate", "exit 127");

    m_page->findChild<QPushButton*>("btnTouchCalc")->setEnabled(true);
    Press(m_page.get(), "btnTouchCalc");

    QCOMPARE(Board::Calls(), QStringList("reboot"));
    QVERIFY(!QFile::exists(calibrationFile));
}

void TouchTest::calibrationPaintsTheWindowAnew()
{
    struct Paints : QObject {
        int count = 0;
        bool eventFilter(QObject* /*watched*/, QEvent* event) override
        {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } paints;
    MoskTester window;
    window.GetBody()->OpenPage(BodyWidget::BasicPage);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    window.installEventFilter(&paints);

    window.findChild<QPushButton*>("btnTouchCalc")->setEnabled(true);
    Press(&window, "btnTouchCalc");

    QTRY_VERIFY(paints.count > 0);
}

void TouchTest::testCoversTheScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::newRow("1024x600") << QSize(1024, 600);
    QTest::newRow("800x480") << QSize(800, 480);
}

void TouchTest::testCoversTheScreen()
{
    QFETCH(QSize, screen);
    GiveTheScreen(screen);
    m_page->resize(screen);

    DuringTheTest([screen](ToolTouchTest& test) {
        QCOMPARE(test.objectName(), QString("toolTouchTest"));
        QVERIFY(test.windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(test.windowModality(), Qt::ApplicationModal);
        QVERIFY(test.isWindow());
        QCOMPARE(test.geometry(), QRect(QPoint(0, 0), screen));
        QCOMPARE(test.layout()->contentsMargins(), QMargins(2, 2, 2, 2));
        QCOMPARE(qobject_cast<QGridLayout*>(test.layout())->horizontalSpacing(), 2);
        QCOMPARE(qobject_cast<QGridLayout*>(test.layout())->verticalSpacing(), 2);

        QCOMPARE(Place(test, 1)->geometry().topLeft(), QPoint(2, 2));
        QCOMPARE(Place(test, places)->geometry().bottomRight(),
                 QPoint(screen.width() - 3, screen.height() - 3));
        for (int number = 2; number <= places; ++number) {
            const QSize difference = Place(test, number)->size() - Place(test, 1)->size();
            QVERIFY(qAbs(difference.width()) <= 1);
            QVERIFY(qAbs(difference.height()) <= 1);
        }
    });
}

void TouchTest::testNumbersItsPlaces_data()
{
    QTest::addColumn<QString>("exit");
    QTest::newRow("english") << "Exit";
    QTest::newRow("chinese") << "退出";
}

void TouchTest::testNumbersItsPlaces()
{
    QFETCH(QString, exit);
    Speak(QTest::currentDataTag());

    DuringTheTest([exit](ToolTouchTest& test) {
        QCOMPARE(test.findChildren<QPushButton*>().size(), places);
        for (int number = 1; number <= places; ++number) {
            QVERIFY(Place(test, number) != nullptr);
            QCOMPARE(Place(test, number)->text(),
                     number == centre ? exit : QString::number(number));
        }
    });
}

void TouchTest::testLightsUpUnderTheFinger()
{
    DuringTheTest([this](ToolTouchTest& test) {
        for (int number = 1; number <= places; ++number) {
            if (number == centre) {
                continue;
            }
            PutFingerOn(Place(test, number));
            QCOMPARE(ColourOf(test, number), red);
            LiftFingerFrom(Place(test, number));
            if (number > 1 && number - 1 != centre) {
                QCOMPARE(ColourOf(test, number - 1), blue);
            }
        }
    });
}

void TouchTest::testLightsUpUnderTheMouse()
{
    DuringTheTest([](ToolTouchTest& test) {
        QTest::mouseMove(test.windowHandle(), Place(test, 14)->geometry().center());
        QCoreApplication::processEvents();
        QCOMPARE(ColourOf(test, 14), red);

        QTest::mouseMove(test.windowHandle(), Place(test, 15)->geometry().center());
        QCoreApplication::processEvents();
        QCOMPARE(ColourOf(test, 15), red);
        QCOMPARE(ColourOf(test, 14), blue);
    });
}

void TouchTest::testFollowsASlidingFinger_data()
{
    QTest::addColumn<QPoint>("put");
    QTest::newRow("put on a place") << QPoint(20, 20);
    QTest::newRow("put on the edge of the screen") << QPoint(0, 20);
}

void TouchTest::testFollowsASlidingFinger()
{
    QFETCH(QPoint, put);
    DuringTheTest([this, put](ToolTouchTest& test) {
        ReportFinger(put, Qt::TouchPointPressed);
        // A row, the way down, and the centre on the way back.
        for (const int number : {1, 2, 3, 4, 5, 14, 23, 32, centre, 40, 39, 49, 81}) {
            SlideFingerTo(Place(test, number));
            QCOMPARE(LitPlaces(test), QList<int>({number}));
        }

        LiftFingerFrom(Place(test, places));

        QCOMPARE(LitPlaces(test), QList<int>());
        PutFingerOn(Place(test, 7));
        QCOMPARE(LitPlaces(test), QList<int>({7}));
        LiftFingerFrom(Place(test, 7));
        QCOMPARE(LitPlaces(test), QList<int>());
    });
}

void TouchTest::testFollowsAMouseThatIsHeld()
{
    DuringTheTest([](ToolTouchTest& test) {
        const auto at = [&test](int number) { return Place(test, number)->geometry().center(); };
        QTest::mousePress(test.windowHandle(), Qt::LeftButton, {}, at(1));
        for (const int number : {2, 12, 22, centre, 42, 1}) {
            QTest::mouseMove(test.windowHandle(), at(number));
            QCoreApplication::processEvents();
            QCOMPARE(LitPlaces(test), QList<int>({number}));
        }

        QTest::mouseRelease(test.windowHandle(), Qt::LeftButton, {}, at(3));

        // The mouse is still there.
        QCOMPARE(LitPlaces(test), QList<int>({3}));
    });
}

void TouchTest::testLightsUpUnderTheMouseAfterAFinger()
{
    DuringTheTest([this](ToolTouchTest& test) {
        PutFingerOn(Place(test, 1));
        SlideFingerTo(Place(test, 2));
        LiftFingerFrom(Place(test, 2));

        for (const int number : {3, 4}) {
            QTest::mouseMove(test.windowHandle(), Place(test, number)->geometry().center());
            QCoreApplication::processEvents();
            QCOMPARE(LitPlaces(test), QList<int>({number}));
        }
    });
}

void TouchTest::testIsNotLeftByAFingerThatSlides()
{
    DuringTheTest([this](ToolTouchTest& test) {
        PutFingerOn(Place(test, 1));
        SlideFingerTo(Place(test, centre));
        LiftFingerFrom(Place(test, centre));
        QVERIFY(test.isVisible());

        PutFingerOn(Place(test, centre));
        SlideFingerTo(Place(test, 1));
        QCOMPARE(LitPlaces(test), QList<int>({1}));
        LiftFingerFrom(Place(test, 1));
        QVERIFY(test.isVisible());
    });
}

void TouchTest::testIsLeftByTheCentreOnly()
{
    DuringTheTest([](ToolTouchTest& test) {
        for (int number = 1; number <= places; ++number) {
            if (number != centre) {
                QTest::mouseClick(Place(test, number), Qt::LeftButton);
            }
        }
        QVERIFY(test.isVisible());
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Back}) {
            QTest::keyClick(test.windowHandle(), key);
            QVERIFY(test.isVisible());
        }
    });
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void TouchTest::testHoldsThePageBack()
{
    auto* buzzer = InGrid<QLineEdit>(m_page.get(), 3, 1);
    const QString before = buzzer->text();

    DuringTheTest([this](ToolTouchTest& /*test*/) {
        QTest::mouseClick(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          m_page->findChild<QPushButton*>("btnBeepTest")->geometry().center());
    });

    QCOMPARE(buzzer->text(), before);
    QCOMPARE(InGrid<QLineEdit>(m_page.get(), Touch, 1)->text(), Text("Label_1000009"));
}

void TouchTest::testLeavesNothingBehind()
{
    const int widgets = QApplication::allWidgets().size();

    for (int i = 0; i < 20; ++i) {
        DuringTheTest([](ToolTouchTest& /*test*/) {});
    }

    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

QTEST_MAIN(TouchTest)
#include "TouchTest.moc"
