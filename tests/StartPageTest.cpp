#include "frame/StartPage.h"
#include "frame/BodyWidget.h"
#include "frame/HeadWidget.h"
#include "frame/MoskTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"
#include "texts/MoskSettings.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>

#include <memory>

namespace
{

const QString builtInVersion = "V1.1 Build 2022-10-18";

/// The board's touch, which also records its call, as the stand-in tools do.
const char* const recordedTouch = ". \"$BOARD_HOME/record.sh\"\nexec /usr/bin/touch \"$@\"";

} // namespace

class StartPageTest : public PageFixture<StartPage>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void languageShowsTheSetting_data();
    void languageShowsTheSetting();
    void choosingALanguageWritesItAndTranslates();
    void versionIsTheEndOfTheKernels_data();
    void versionIsTheEndOfTheKernels();
    void versionWithoutTheFileIsBuiltIn();

    void rebootFlushesThenReboots();
    void finishedTestLeavesOnlyTheRebootButton();
    void folderOfTheMarkersNameIsNoMarker();
    void cancelledFinishDoesNothing();
    void confirmedFinishLeavesItsMarker();
    void confirmedSwitchIsAskedOnceInARun();
};

void StartPageTest::init()
{
    Board::Become("language english\n");
    Board::ForgetCalls();
    Speak("english");
}

void StartPageTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
}

void StartPageTest::languageShowsTheSetting_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("index");

    QTest::newRow("English") << "english" << 1;
    QTest::newRow("Chinese") << "chinese" << 0;
    QTest::newRow("none") << "" << 0;
    QTest::newRow("other case") << "English" << 0;
}

void StartPageTest::languageShowsTheSetting()
{
    QFETCH(QString, language);
    QFETCH(int, index);
    MoskSettings::GetInstance()->SetValue("Language", language);

    Rebuild();
    QCOMPARE(InGrid<QComboBox>(m_page.get(), 0, 1)->currentIndex(), index);
    QCOMPARE(MoskSettings::GetInstance()->GetValue("Language"), language);
}

void StartPageTest::choosingALanguageWritesItAndTranslates()
{
    MoskTester window;
    window.show();
    g_mainwnd = &window;
    QPointer<StartPage> page = window.findChild<StartPage*>();
    auto* menu = window.findChild<QTabWidget*>("menuTab");

    InGrid<QComboBox>(page, 0, 1)->setCurrentIndex(0);
    // The page stands until its own slot has returned.
    QVERIFY(page != nullptr);
    QTRY_VERIFY(page == nullptr);
    QCOMPARE(menu->tabText(0), QString::fromUtf8("首页"));
    QTRY_COMPARE(Board::ReadFile("/etc/mosk.ini"), QByteArray("[sys]\nLanguage=chinese\n"));

    page = window.findChild<StartPage*>();
    QVERIFY(page != nullptr);
    QCOMPARE(InGrid<QLabel>(page, 0, 0)->text(), QString::fromUtf8("选择语言："));
    InGrid<QComboBox>(page, 0, 1)->setCurrentIndex(1);
    QTRY_VERIFY(page == nullptr);
    QCOMPARE(menu->tabText(0), QString("Home"));
    QTRY_COMPARE(Board::ReadFile("/etc/mosk.ini"), QByteArray("[sys]\nLanguage=english\n"));
    g_mainwnd = nullptr;
}

void StartPageTest::versionIsTheEndOfTheKernels_data()
{
    QTest::addColumn<QByteArray>("kernel");
    QTest::addColumn<QString>("shown");

    QTest::newRow("kernel line")
        << QByteArray("Linux version 3.10.65 #5 SMP Tue Oct 18 10:21:07 CST 2022\n")
        << "Tue Oct 18 10:21:07 CST 2022";
    QTest::newRow("six words") << QByteArray("a b c d e f\n") << builtInVersion;
    QTest::newRow("empty") << QByteArray() << builtInVersion;
    QTest::newRow("first line only")
        << QByteArray("a b c d e f g\nh i j k l m n\n") << "b c d e f g";
    QTest::newRow("place markers") << QByteArray("x %1 %2 %3 %4 %5 %6\n") << "%1 %2 %3 %4 %5 %6";
}

void StartPageTest::versionIsTheEndOfTheKernels()
{
    QFETCH(QByteArray, kernel);
    QFETCH(QString, shown);
    Board::WriteFile("/proc/version", kernel);

    Rebuild();
    QCOMPARE(InGrid<QLabel>(m_page.get(), 1, 1)->text(), shown);
}

void StartPageTest::versionWithoutTheFileIsBuiltIn()
{
    QVERIFY(QFile::remove("/proc/version"));
    Rebuild();
    QCOMPARE(m_page->GetOsVersion(), builtInVersion);

    QVERIFY(QDir().mkdir("/proc/version"));
    QCOMPARE(m_page->GetOsVersion(), builtInVersion);
    QVERIFY(QDir().rmdir("/proc/version"));
}

void StartPageTest::rebootFlushesThenReboots()
{
    Rebuild();
    Press(m_page.get(), "btnReboot");

    QCOMPARE(Board::Calls(), QStringList({"sync", "reboot"}));
}

void StartPageTest::finishedTestLeavesOnlyTheRebootButton()
{
    Board::WriteFile("/etc/qttestend", {});

    Rebuild();
    const auto buttons = m_page->findChildren<QPushButton*>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons[0]->objectName(), QString("btnReboot"));
    QVERIFY(InGrid<QWidget>(m_page.get(), 4, 2) != nullptr);
}

void StartPageTest::folderOfTheMarkersNameIsNoMarker()
{
    QDir().mkdir("/etc/qttestend");

    Rebuild();
    QCOMPARE(m_page->findChildren<QPushButton*>().size(), 3);
}

void StartPageTest::cancelledFinishDoesNothing()
{
    Rebuild();
    AtTheBox(QMessageBox::No, [](QMessageBox& box) {
        QCOMPARE(box.text(), QString("Confirm that the testing has been completed?"));
        QCOMPARE(box.windowTitle(), QString());
        QCOMPARE(box.button(QMessageBox::Yes)->text(), QString("OK"));
        QCOMPARE(box.button(QMessageBox::No)->text(), QString("Cancel"));
        QCOMPARE(box.styleSheet(),
                 QString("QMessageBox{background-color:rgb(195, 195, 195);} QLabel{min-width:300 "
                         "px;min-height:100px; font-size: 24px;} QPushButton{ width:100px; "
                         "font-size: 24px; }"));
    });

    Press(m_page.get(), "btnTestEnd");

    QVERIFY(!QFile::exists("/etc/qttestend"));
    QVERIFY(Board::Calls().isEmpty());
}

void StartPageTest::confirmedFinishLeavesItsMarker()
{
    Board::PutTool("touch", recordedTouch);
    Rebuild();
    AtTheBox(QMessageBox::Yes, [](QMessageBox&) {});
    Press(m_page.get(), "btnTestEnd");
    QVERIFY(QFile::exists("/etc/qttestend"));
    QCOMPARE(QFileInfo("/etc/qttestend").size(), 0);
    QCOMPARE(Board::Calls(), QStringList({"touch /etc/qttestend", "sync"}));

    // This page keeps its buttons and only says that it is done; the next one has none.
    QFile::remove("/etc/qttestend");
    AtTheBox(QMessageBox::Ok, [](QMessageBox& box) {
        QCOMPARE(box.windowTitle(), QString("Warning"));
        QCOMPARE(box.text(), QString("Confirmed testing completed!"));
    });
    Press(m_page.get(), "btnTestEnd");
    QVERIFY(!QFile::exists("/etc/qttestend"));
}

void StartPageTest::confirmedSwitchIsAskedOnceInARun()
{
    Board::PutTool("touch", recordedTouch);
    AtTheBox(QMessageBox::Yes, [](QMessageBox& box) {
        QCOMPARE(box.text(), QString("Are you sure switch the HMI system?"));
    });
    Rebuild();
    Press(m_page.get(), "btnSwitchHMI");
    QVERIFY(QFile::exists("/etc/sw2hmi"));
    QCOMPARE(Board::Calls(), QStringList({"touch /etc/sw2hmi", "sync"}));

    Board::ForgetCalls();
    QFile::remove("/etc/sw2hmi");
    AtTheBox(QMessageBox::Ok, [](QMessageBox& box) {
        QCOMPARE(box.text(), QString("Confirmed switching HMI system!"));
    });
    Rebuild();
    Press(m_page.get(), "btnSwitchHMI");
    QVERIFY(!QFile::exists("/etc/sw2hmi"));
    QVERIFY(Board::Calls().isEmpty());
}

QTEST_MAIN(StartPageTest)
#include "StartPageTest.moc"
