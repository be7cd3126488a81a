#include "frame/BodyWidget.h"
#include "frame/HeadWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "frame/StartPage.h"
#include "pages/BasicTester.h"
#include "simulated-board/Board.h"
#include "tests/Operate.h"
#include "texts/MoskUtility.h"

#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QStyle>
#include <QTabBar>
#include <QToolButton>

#include <memory>

#include <qpa/qwindowsysteminterface.h>

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void windowCoversWhatPanelsLeaveOfTheScreen();
    void windowKeepsItsSizeWhateverAPageNeeds();
    void headerAndBodyHaveTheirColours();
    void logoIsShownInTheHeader();
    void selectedTabIsRedOnGrey();
    void verdictsAreGreenAndRed();
    void heldButtonIsDarker();

    void tabsAreThoseOfTheirPages();
    void tabsFitASmallScreen();
    void homePageIsOpenAtTheStart();
    void tabOpensItsPage();
    void selectedTabKeepsItsPage();
    void pageOpenedAgainByItsIdIsKept();
    void pagesAreThoseOfTheDocumentation();
    void otherIdEmptiesTheBody_data();
    void otherIdEmptiesTheBody();
    void pageFillsTheBody();

    void translateHappensOnceAfterTheSlot();
    void translateBuildsThePageAnew();
    void translateWaitsForTheCheckAtHand();
    void translateWaitsForTheBoxAtHand();
    void foreignPageOfTheMenuIsPassedOver();

private:
    QTabWidget* Menu() { return m_window->findChild<QTabWidget*>("menuTab"); }
    void ClickTab(int index);
    QColor PixelAt(const QPoint& position) { return m_window->grab().toImage().pixel(position); }

    std::unique_ptr<MoskTester> m_window;
};

void MainWindowTest::initTestCase()
{
    ApplyLook();
}

void MainWindowTest::init()
{
    Speak("english");
    m_window = std::make_unique<MoskTester>();
    m_window->resize(1024, 600);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void MainWindowTest::cleanup()
{
    m_window.reset();
}

void MainWindowTest::ClickTab(int index)
{
    QTabBar* bar = Menu()->tabBar();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
}

void MainWindowTest::windowCoversWhatPanelsLeaveOfTheScreen()
{
    QScreen* screen = QGuiApplication::primaryScreen();
    const QRect whole = screen->geometry();
    const QRect available = whole.adjusted(0, 30, -10, -40);
    QWindowSystemInterface::handleScreenGeometryChange(screen, whole, available);
    QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
    QCOMPARE(screen->availableGeometry(), available);

    MoskTester window;
    QCOMPARE(MoskUtility::GetMainWindowSize(), available.size());
    QCOMPARE(window.size(), available.size());
    QCOMPARE(window.windowFlags() & Qt::FramelessWindowHint, Qt::FramelessWindowHint);

    QWindowSystemInterface::handleScreenGeometryChange(screen, whole, whole);
    QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
}

void MainWindowTest::windowKeepsItsSizeWhateverAPageNeeds()
{
    const QSize size(480, 272);
    m_window->resize(size);
    for (const Page& page : allPages) {
        m_window->GetBody()->OpenPage(page.id);
        QCoreApplication::processEvents();
        QVERIFY2(m_window->size() == size, page.name);
    }
}

void MainWindowTest::headerAndBodyHaveTheirColours()
{
    QCOMPARE(PixelAt({85, 25}), QColor(96, 168, 239));
    QCOMPARE(PixelAt({1020, 25}), QColor(96, 168, 239));
    QCOMPARE(PixelAt({5, 595}), QColor(240, 240, 240));
    QCOMPARE(PixelAt({1000, 300}), QColor(240, 240, 240));
}

void MainWindowTest::logoIsShownInTheHeader()
{
    const QImage image = m_window->grab(QRect(0, 0, 80, 50)).toImage();
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            drawn += image.pixelColor(x, y) != QColor(96, 168, 239) ? 1 : 0;
        }
    }
    QVERIFY2(drawn > 200, qPrintable(QString::number(drawn)));
}

void MainWindowTest::selectedTabIsRedOnGrey()
{
    QTabBar* bar = Menu()->tabBar();
    for (int index = 0; index < 2; ++index) {
        ClickTab(index);
        const QRect tab(bar->mapTo(m_window.get(), bar->tabRect(index).topLeft()),
                        bar->tabRect(index).size());
        QVERIFY(tab.width() >= 100);
        QVERIFY(tab.height() >= 50);
        QCOMPARE(PixelAt(tab.topLeft() + QPoint(3, 3)), QColor(240, 240, 240));
        const QImage image = m_window->grab(tab).toImage();
        bool red = false;
        for (int i = 0; i < image.width() * image.height(); ++i) {
            red |= image.pixelColor(i % image.width(), i / image.width()) == QColor(255, 0, 0);
        }
        QVERIFY(red);
    }
}

void MainWindowTest::verdictsAreGreenAndRed()
{
    ClickTab(1);
    auto* field = m_window->findChild<BasicTester*>()->findChild<QLineEdit*>();
    const struct {
        const char* status;
        QColor colour;
    } verdicts[] = {{"ok", {12, 141, 66}}, {"error", {255, 0, 0}}, {"", {0, 0, 0}}};
    for (const auto& verdict : verdicts) {
        field->setText(QString(20, QChar(0x2588))); // full blocks, so that the ink has its colour
        field->setProperty("status", verdict.status);
        field->style()->polish(field);
        const QImage image = field->grab().toImage();
        QCOMPARE(image.pixelColor(20, image.height() / 2), verdict.colour);
    }
}

void MainWindowTest::heldButtonIsDarker()
{
    ClickTab(1);
    QCoreApplication::processEvents();
    auto* button = m_window->findChild<QPushButton*>("btnUsbTest");
    // Beside its text.
    const QPoint place = button->mapTo(m_window.get(), QPoint(5, button->height() / 2));
    QCOMPARE(PixelAt(place), QColor(96, 168, 239));
    QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, place);
    QTRY_VERIFY(button->isDown());
    QCOMPARE(PixelAt(place), QColor(44, 112, 174));
    QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, place);
    QTRY_VERIFY(!button->isDown());
    QCOMPARE(PixelAt(place), QColor(96, 168, 239));
}

void MainWindowTest::tabsAreThoseOfTheirPages()
{
    const QList<int> ids = {1, 2, 3, 6, 7, 8};
    QCOMPARE(Menu()->count(), 6);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(qobject_cast<HeadTabWidget*>(Menu()->widget(i))->GetPageId(), ids[i]);
    }
}

void MainWindowTest::tabsFitASmallScreen()
{
    m_window->resize(800, 480);
    QTabBar* bar = Menu()->tabBar();
    for (const char* language : {"english", "chinese"}) {
        Speak(language);
        m_window->TranslateUI();
        QTRY_COMPARE(bar->tabText(0), Text("Label_1000100"));
        QCoreApplication::processEvents();
        for (int i = 0; i < bar->count(); ++i) {
            QVERIFY(bar->rect().contains(bar->tabRect(i)));
            QVERIFY(bar->fontMetrics().horizontalAdvance(bar->tabText(i)) <
                    bar->tabRect(i).width());
        }
        for (const auto* scroller : bar->findChildren<QToolButton*>()) {
            QVERIFY(!scroller->isVisible());
        }
    }
}

void MainWindowTest::homePageIsOpenAtTheStart()
{
    QCOMPARE(Menu()->currentIndex(), 0);
    QVERIFY(m_window->GetBody()->findChild<StartPage*>() != nullptr);
}

void MainWindowTest::tabOpensItsPage()
{
    QPointer<StartPage> home = m_window->findChild<StartPage*>();

    ClickTab(1);

    QVERIFY(home == nullptr);
    QVERIFY(m_window->findChild<BasicTester*>() != nullptr);
}

void MainWindowTest::selectedTabKeepsItsPage()
{
    ClickTab(1);
    QPointer<BasicTester> page = m_window->findChild<BasicTester*>();
    page->findChild<QLineEdit*>()->setText("typed");

    ClickTab(1);

    QVERIFY(page != nullptr);
    QCOMPARE(page->findChild<QLineEdit*>()->text(), QString("typed"));
}

void MainWindowTest::pageOpenedAgainByItsIdIsKept()
{
    QPointer<StartPage> page = m_window->findChild<StartPage*>();

    m_window->GetBody()->OpenPage(BodyWidget::HomePage);

    QVERIFY(page != nullptr);
}

void MainWindowTest::pagesAreThoseOfTheDocumentation()
{
    const QString text = QString::fromUtf8(Board::ReadFile(SOURCE_DIR "/HACKING.md"));
    for (const Page& page : allPages) {
        const std::unique_ptr<QWidget> built(page.build(nullptr));
        const QString row =
            QString("\n| %1 | `%2` | ").arg(page.id).arg(built->metaObject()->className());
        const QString tab = page.tabKey != nullptr ? Text(page.tabKey) : "none";
        const QString line = text.mid(text.indexOf(row) + 1).section('\n', 0, 0);
        QVERIFY2(text.contains(row) && line.endsWith(QString("| %1 | `%2` |").arg(tab, page.name)),
                 qPrintable(row + line));
    }
    QCOMPARE(text.count(QRegularExpression("\n\\| \\d+ \\| `")), int(allPages.size()));
}

void MainWindowTest::otherIdEmptiesTheBody_data()
{
    QTest::addColumn<int>("id");

    QTest::newRow("none") << 0;
    QTest::newRow("beyond the last") << 11;
    QTest::newRow("negative") << -1;
}

void MainWindowTest::otherIdEmptiesTheBody()
{
    QFETCH(int, id);
    BodyWidget* body = m_window->GetBody();

    body->OpenPage(id);
    QCOMPARE(body->layout()->count(), 0);
    QVERIFY(body->findChild<StartPage*>() == nullptr);

    body->TranslateUI();
    QCOMPARE(body->layout()->count(), 0);

    body->OpenPage(BodyWidget::HomePage);
    QCOMPARE(body->layout()->count(), 1);
}

void MainWindowTest::pageFillsTheBody()
{
    ClickTab(1);
    QCoreApplication::processEvents();

    QCOMPARE(m_window->findChild<BasicTester*>()->geometry(), QRect(0, 0, 1024, 550));
}

void MainWindowTest::translateHappensOnceAfterTheSlot()
{
    QPointer<StartPage> page = m_window->findChild<StartPage*>();
    int pages = 0;
    connect(page, &QObject::destroyed, this, [&pages] { ++pages; });

    auto* timer = m_window->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(!timer->isActive());
    m_window->TranslateUI();
    m_window->TranslateUI();
    QVERIFY(page != nullptr);
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 1);

    QTRY_VERIFY(page == nullptr);
    page = m_window->findChild<StartPage*>();
    QTest::qWait(20);
    QVERIFY2(page != nullptr, "translated a second time");
    QCOMPARE(pages, 1);
}

void MainWindowTest::translateBuildsThePageAnew()
{
    ClickTab(1);
    m_window->findChild<BasicTester*>()->findChild<QLineEdit*>()->setText("typed");
    Speak("chinese");
    QCOMPARE(Menu()->tabText(1), QString("Basic"));

    m_window->TranslateUI();

    QTRY_COMPARE(Menu()->tabText(1), QString::fromUtf8("基本"));
    auto* page = m_window->findChild<BasicTester*>();
    QCOMPARE(Menu()->currentIndex(), 1);
    QCOMPARE(page->findChild<QLineEdit*>()->text(), QString::fromUtf8("此处显示检测结果！"));
}

void MainWindowTest::translateWaitsForTheCheckAtHand()
{
    ClickTab(1);
    QPointer<BasicTester> page = m_window->findChild<BasicTester*>();

    m_window->TranslateUI();
    QTest::qSleep(5); // its time has come before the check paints the page
    Press(page, "btnUsbTest");

    QVERIFY(page != nullptr);
    QCOMPARE(InGrid<QLineEdit>(page, 0, 1)->text(),
             QString("Detected that there is(are) 0 USB flash drive inserted!"));
    QTRY_VERIFY(page == nullptr);
}

void MainWindowTest::translateWaitsForTheBoxAtHand()
{
    ClickTab(1);
    QPointer<BasicTester> page = m_window->findChild<BasicTester*>();
    bool isKept = false;
    QTimer::singleShot(50, this, [&] {
        isKept = page != nullptr;
        QApplication::activeModalWidget()->close();
    });

    m_window->TranslateUI();
    Press(page, "btnTouchTest");

    QVERIFY(isKept);
    QVERIFY(page != nullptr);
    QTRY_VERIFY(page == nullptr);
    QVERIFY(m_window->findChild<BasicTester*>() != nullptr);
}

void MainWindowTest::foreignPageOfTheMenuIsPassedOver()
{
    Menu()->addTab(new QWidget, "foreign");
    QPointer<StartPage> page = m_window->findChild<StartPage*>();

    Menu()->setCurrentIndex(6);
    m_window->findChild<HeadWidget*>()->TranslateUI();

    QVERIFY(page != nullptr);
    QCOMPARE(Menu()->tabText(6), QString("foreign"));
}

QTEST_MAIN(MainWindowTest)
#include "MainWindowTest.moc"
