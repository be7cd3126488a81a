#include "pages/ProductionTester.h"

#include "instruments/ReceiveView.h"
#include "simulated-board/Board.h"
#include "simulated-board/PseudoTerminal.h"
#include "simulated-board/devices/FlashingLog.h"
#include "tests/OpenDescriptors.h"
#include "tests/PageFixture.h"
#include "tests/WaitUntilReadable.h"
#include "tests/Warnings.h"

#include <QPushButton>
#include <QSerialPort>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

#include <memory>
#include <random>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace
{

const QColor green(12, 202, 66);
const QColor red(255, 0, 0);
const QColor black(0, 0, 0);
const QColor lit(255, 0, 0);
const QColor unlit(96, 168, 239);
const QColor held(44, 112, 174);

const QString opened = "******** Open COM succeed! [/dev/ttyS2]\n";
const QString notOpened = "******** Open COM failed! [/dev/ttyS2]\n";

/// The result lines of a run, in order, as the summary shows them.
QString ResultsOf(const FlashingRun& run)
{
    QStringList results{"Start erasing flash!", "Erasing flash succeed!"};
    if (run.outcome == FlashingRun::Outcome::Good) {
        results << "Burn Rootfs succeed!";
    }
    results << "Burn Uboot succeed!"
            << "Burn succeed!" << (run.selfTestPasses ? "Network OK!" : "Network anomaly!")
            << (run.selfTestPasses ? "EMMC OK!" : "EMMC anomaly!")
            << (run.selfTestPasses ? "DDR OK!" : "DDR anomaly!") << "Shutdown!";
    return "******** " + results.join("\n******** ") + '\n';
}

QByteArray LogOf(const FlashingRun& run)
{
    return QByteArray::fromStdString(FlashingLog(run));
}

/// The colour of each line of the view that has text.
QList<QColor> LineColours(const QTextEdit& view)
{
    QList<QColor> colours;
    for (QTextBlock line = view.document()->begin(); line.isValid(); line = line.next()) {
        if (line.length() > 1) {
            QTextCursor cursor(line);
            cursor.movePosition(QTextCursor::NextCharacter);
            colours << cursor.charFormat().foreground().color();
        }
    }
    return colours;
}

} // namespace

class ProductionTesterTest : public PageFixture<ToolProductionTest>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pageIsInTheLanguageOfTheProgram();
    void portOpensATenthOfASecondLater();
    void missingPortShowsInRed();
    void summaryShowsFirstAndItsButtonIsLit();
    void heldButtonsShowTheirColours();
    void resetBeginsAnew();
    void resetOpensAPortThatCameUpSince();
    void resetBeforeThePortIsOpenOpensItOnce();

    void goodBoardPasses();
    void eachChunkIsJudgedAsItComes();
    void simulatedBoardPlaysOneLogAfterTheOther();
    void simulatedBoardWaitsForThePage();
    void resultsStandBehindTheirLinesInTheDetail();

    void markersInALongRunAreAllPosted();

    void fileIsPlayedLikeThePort();
    void missingFileIsNoMatter();

    void lastWordsBeforeAnUnplugAreJudged();
    void unpluggedPortIsOpenedAgainByReset();
    void leavingThePageReleasesThePort_data();
    void leavingThePageReleasesThePort();

private:
    void WaitForThePort(const QString& result);
    QTextEdit* View(int index)
    {
        return qobject_cast<QTextEdit*>(m_page->findChild<QTabWidget*>()->widget(index));
    }
    QString Shown(int index)
    {
        qobject_cast<ReceiveView*>(View(index))->ShowGathered();
        return View(index)->toPlainText();
    }
    QString Summary() { return Shown(0); }
    QString Detail() { return Shown(1); }
    QTimer* OpenTimer()
    {
        return m_page->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    }
    QSerialPort* Port() { return m_page->findChild<QSerialPort*>(); }
    QColor ButtonColour(const char* name)
    {
        return m_page->findChild<QPushButton*>(name)->grab().toImage().pixelColor(5, 25);
    }
};

void ProductionTesterTest::init()
{
    Board::Become("language english\n");
    Speak("english");
    ShowNewPage();
}

void ProductionTesterTest::cleanup()
{
    m_page.reset();
    QFile::remove("a40ilog.txt");
}

/// Waits until the page has tried its port, and checks the result that it shows.
void ProductionTesterTest::WaitForThePort(const QString& result)
{
    QTRY_COMPARE(Summary(), result);
    QCOMPARE(Detail(), result);
}

void ProductionTesterTest::pageIsInTheLanguageOfTheProgram()
{
    Speak("chinese");
    ShowNewPage();
    WaitForThePort(QString::fromUtf8("******** 打开串口失败！ [/dev/ttyS2]\n"));
    m_page->ParseLine("mmc 2 exit ok");
    QVERIFY(Summary().endsWith(QString::fromUtf8("******** 已关机！\n")));
}

void ProductionTesterTest::portOpensATenthOfASecondLater()
{
    PseudoTerminal terminal("/dev/ttyS2");
    QVERIFY(OpenTimer()->isActive());
    QCOMPARE(OpenTimer()->interval(), 100);
    QVERIFY(Port() == nullptr);
    QCOMPARE(Summary(), QString());
    WaitForThePort(opened);
    QCOMPARE(LineColours(*View(0)), QList<QColor>{green});
    QCOMPARE(LineColours(*View(1)), QList<QColor>{green});
    QVERIFY(Port()->isOpen());
    QCOMPARE(Port()->baudRate(), 115200);
    QCOMPARE(Port()->dataBits(), QSerialPort::Data8);
    QCOMPARE(Port()->parity(), QSerialPort::NoParity);
    QCOMPARE(Port()->stopBits(), QSerialPort::OneStop);
    QCOMPARE(Port()->flowControl(), QSerialPort::NoFlowControl);

    // It tries once.
    QVERIFY(!OpenTimer()->isActive());
    QTest::qWait(250);
    QCOMPARE(Summary(), opened);
}

void ProductionTesterTest::missingPortShowsInRed()
{
    WaitForThePort(notOpened);
    QCOMPARE(LineColours(*View(0)), QList<QColor>{red});
    QCOMPARE(LineColours(*View(1)), QList<QColor>{red});
    QVERIFY(Port() == nullptr);

    // It tries once; the next attempt is the operator's.
    QVERIFY(!OpenTimer()->isActive());
    PseudoTerminal terminal("/dev/ttyS2");
    QTest::qWait(250);
    QCOMPARE(Summary(), notOpened);
    QVERIFY(Port() == nullptr);
}

void ProductionTesterTest::summaryShowsFirstAndItsButtonIsLit()
{
    auto* tabs = m_page->findChild<QTabWidget*>();
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(ButtonColour("btnSummary"), lit);
    QCOMPARE(ButtonColour("btnDetail"), unlit);
    for (int i = 0; i < 2; ++i) {
        Press(m_page.get(), "btnDetail");
        QCOMPARE(tabs->currentIndex(), 1);
        QCOMPARE(ButtonColour("btnSummary"), unlit);
        QCOMPARE(ButtonColour("btnDetail"), lit);
    }
    for (int i = 0; i < 2; ++i) {
        Press(m_page.get(), "btnSummary");
        QCOMPARE(tabs->currentIndex(), 0);
        QCOMPARE(ButtonColour("btnSummary"), lit);
        QCOMPARE(ButtonColour("btnDetail"), unlit);
    }
    QCOMPARE(m_page->findChild<QPushButton*>("btnReset")->property("status").toString(),
             QString("off"));
}

void ProductionTesterTest::heldButtonsShowTheirColours()
{
    for (const auto& [name, colour] :
         {std::pair("btnReset", held), {"btnDetail", lit}, {"btnSummary", lit}}) {
        QCOMPARE(ButtonColour(name), unlit);
        auto* button = m_page->findChild<QPushButton*>(name);
        const QPoint place = button->mapTo(m_page.get(), button->rect().center());
        QTest::mousePress(m_page->windowHandle(), Qt::LeftButton, {}, place);
        QTRY_COMPARE(ButtonColour(name), colour);
        QTest::mouseRelease(m_page->windowHandle(), Qt::LeftButton, {}, place);
        QTRY_VERIFY(!button->isDown());
        QCOMPARE(ButtonColour(name), colour == held ? unlit : lit);
    }
}

void ProductionTesterTest::resetBeginsAnew()
{
    PseudoTerminal terminal("/dev/ttyS2");
    WaitForThePort(opened);
    terminal.Write("successed in download part rootfs\nsuccessed in downloading uboot\n");
    QTRY_VERIFY(Summary().endsWith("Uboot succeed!\n"));
    Press(m_page.get(), "btnReset");
    QCOMPARE(Summary(), opened);
    QCOMPARE(Detail(), opened);
    // What the first board had does not count for the second.
    terminal.Write("sprite success\n");
    QTRY_VERIFY(Summary().endsWith("some results were not detected!\n"));
}

void ProductionTesterTest::resetOpensAPortThatCameUpSince()
{
    WaitForThePort(notOpened);
    Press(m_page.get(), "btnReset");
    QCOMPARE(Summary(), notOpened);
    PseudoTerminal terminal("/dev/ttyS2");
    Press(m_page.get(), "btnReset");
    QCOMPARE(Summary(), opened);
}

void ProductionTesterTest::resetBeforeThePortIsOpenOpensItOnce()
{
    PseudoTerminal terminal("/dev/ttyS2");
    QVERIFY(OpenTimer()->isActive());
    Press(m_page.get(), "btnReset");
    const QSerialPort* port = Port();
    QTRY_VERIFY(!OpenTimer()->isActive());
    QCOMPARE(Summary(), opened);
    QCOMPARE(Port(), port);
    terminal.Write("sprite success\n");
    QTRY_VERIFY(Summary().endsWith("some results were not detected!\n"));
}

void ProductionTesterTest::goodBoardPasses()
{
    PseudoTerminal terminal("/dev/ttyS2");
    WaitForThePort(opened);
    const FlashingRun run;
    const QByteArray log = LogOf(run);
    std::mt19937 random(3);
    for (int at = 0; at < log.size();) {
        const int chunk = 1 + static_cast<int>(random() % 200);
        terminal.Write(log.mid(at, chunk));
        at += chunk;
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(Summary(), opened + ResultsOf(run));
    for (const QColor& colour : LineColours(*View(0))) {
        QCOMPARE(colour, green);
    }
}

// Together, the second and the third would be one line, because it would end with its line feed.
void ProductionTesterTest::eachChunkIsJudgedAsItComes()
{
    PseudoTerminal terminal("/dev/ttyS2");
    WaitForThePort(opened);
    for (const char* chunk :
         {"begin to erase flash\r", "successed in erasing flash\r", "mmc 2 exit\n"}) {
        terminal.Write(chunk);
        WaitUntilReadable(Port());
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(Summary(), opened + "******** Start erasing flash!\n"
                                     "******** Erasing flash succeed!\n******** Shutdown!\n");
}

void ProductionTesterTest::simulatedBoardPlaysOneLogAfterTheOther()
{
    Board::Become("port ttyS2 log bad no-rootfs\n");
    FlashingRun first;
    first.selfTestPasses = false;
    QTRY_COMPARE_WITH_TIMEOUT(Summary(), opened + ResultsOf(first), 60000);
    QCOMPARE(LineColours(*View(0)).count(red), 3);
    QVERIFY(Detail().count('\n') > 1000);

    // Nobody presses Reset between the two, so the first one's rootfs counts for the second one.
    FlashingRun second;
    second.outcome = FlashingRun::Outcome::NoRootfs;
    QTRY_COMPARE_WITH_TIMEOUT(Summary(), opened + ResultsOf(first) + ResultsOf(second), 60000);
}

void ProductionTesterTest::simulatedBoardWaitsForThePage()
{
    m_page.reset();
    Board::Become("port ttyS2 log good\n");
    const int port = open("/dev/ttyS2", O_RDONLY | O_NOCTTY);
    pollfd state = {port, POLLIN, 0};
    QCOMPARE(poll(&state, 1, 1000), 0);
    close(port);

    ShowNewPage();

    QTRY_COMPARE_WITH_TIMEOUT(Summary(), opened + ResultsOf({}), 60000);
    // What is put on the bench at Reset is another board.
    Press(m_page.get(), "btnReset");
    QTRY_COMPARE(Summary(), opened + "******** Start erasing flash!\n");
}

void ProductionTesterTest::resultsStandBehindTheirLinesInTheDetail()
{
    WaitForThePort(notOpened);
    m_page->ProcessData("one\nMOSK_HARD_NET: ok\ntwo\nMOSK_HARD_DDR: no\nthr");
    m_page->ProcessData("ee");
    QTRY_COMPARE(View(1)->toPlainText(), notOpened +
                                             "one\nMOSK_HARD_NET: ok\n******** Network OK!\ntwo\n"
                                             "MOSK_HARD_DDR: no\n******** DDR anomaly!\nthree");
    const QList<QColor> colours{red, black, black, green, black, black, red, black};
    QCOMPARE(LineColours(*View(1)), colours);
    QCOMPARE(View(0)->toPlainText(), notOpened + "******** Network OK!\n******** DDR anomaly!\n");
}

void ProductionTesterTest::markersInALongRunAreAllPosted()
{
    WaitForThePort(notOpened);
    QByteArray log;
    for (int i = 0; i < 50000; ++i) {
        log += "[" + QByteArray::number(i) + "] sparse: chunk to sector, no err, no fail\r\n";
        if (i % 100 == 99) {
            log += "MOSK_HARD_NET: ok " + QByteArray::number(i) + "\r\n";
        }
    }
    for (int at = 0; at < log.size(); at += 4096) {
        m_page->ProcessData(log.mid(at, 4096));
        QCoreApplication::processEvents();
    }
    QCOMPARE(Summary().count("******** Network OK!\n"), 500);
    const QString detail = Detail();
    QVERIFY(detail.count('\n') >= 20000);
    // The newest of the log, with each result behind its own line.
    const QStringList lines = detail.split('\n');
    QCOMPARE(lines.at(lines.size() - 3), QString("MOSK_HARD_NET: ok 49999"));
    for (int i = 1; i < lines.size(); ++i) {
        if (lines.at(i).startsWith("********")) {
            QVERIFY(lines.at(i - 1).startsWith("MOSK_HARD_NET"));
        }
    }
}

void ProductionTesterTest::fileIsPlayedLikeThePort()
{
    WaitForThePort(notOpened);
    const FlashingRun run;
    Board::WriteFile("a40ilog.txt", LogOf(run));
    m_page->ProcessFile();
    QCOMPARE(Summary(), notOpened + ResultsOf(run));
    QVERIFY(Detail().contains("HELLO! BOOT0 is starting!"));
}

void ProductionTesterTest::missingFileIsNoMatter()
{
    WaitForThePort(notOpened);
    const Warnings warnings;
    m_page->ProcessFile();
    QCOMPARE(Summary(), notOpened);
    QCOMPARE(Detail(), notOpened);
    QCOMPARE(Warnings::Texts(), QStringList());
}

void ProductionTesterTest::lastWordsBeforeAnUnplugAreJudged()
{
    PseudoTerminal terminal("/dev/ttyS2");
    WaitForThePort(opened);
    terminal.Write("begin to erase flash\n");
    QTRY_COMPARE(Summary(), opened + "******** Start erasing flash!\n");
    terminal.Write("mmc 2 exit\n");
    WaitUntilReadable(Port());
    QCoreApplication::processEvents();
    terminal.Vanish();
    QTRY_COMPARE(Summary(), opened + "******** Start erasing flash!\n******** Shutdown!\n");
}

void ProductionTesterTest::unpluggedPortIsOpenedAgainByReset()
{
    auto terminal = std::make_unique<PseudoTerminal>("/dev/ttyS2");
    WaitForThePort(opened);
    terminal->Write("last words");
    QTRY_COMPARE(Detail(), opened + "last words");
    terminal.reset();
    QTRY_VERIFY(!Port()->isOpen());

    Press(m_page.get(), "btnReset");
    QCOMPARE(Summary(), notOpened);
    terminal = std::make_unique<PseudoTerminal>("/dev/ttyS2");
    Press(m_page.get(), "btnReset");
    QCOMPARE(Summary(), opened);
    terminal->Write("mmc 2 exit\n");
    QTRY_VERIFY(Summary().endsWith("Shutdown!\n"));
}

void ProductionTesterTest::leavingThePageReleasesThePort_data()
{
    QTest::addColumn<bool>("waits");
    QTest::addColumn<bool>("plugged");
    QTest::addColumn<bool>("unplugged");
    QTest::newRow("before the port was opened") << false << true << false;
    QTest::newRow("open") << true << true << false;
    QTest::newRow("not opened") << true << false << false;
    QTest::newRow("unplugged") << true << true << true;
}

void ProductionTesterTest::leavingThePageReleasesThePort()
{
    QFETCH(bool, waits);
    QFETCH(bool, plugged);
    QFETCH(bool, unplugged);
    const int before = OpenDescriptors();
    std::unique_ptr<PseudoTerminal> terminal;
    if (plugged) {
        terminal = std::make_unique<PseudoTerminal>("/dev/ttyS2");
    }
    if (waits) {
        WaitForThePort(plugged ? opened : notOpened);
    }
    if (unplugged) {
        terminal.reset();
    }
    m_page.reset();
    terminal.reset();
    QCOMPARE(OpenDescriptors(), before);
    // Nothing of the page is left to open the port after all.
    QTest::qWait(150);
    QCOMPARE(OpenDescriptors(), before);
}

QTEST_MAIN(ProductionTesterTest)
#include "ProductionTesterTest.moc"
