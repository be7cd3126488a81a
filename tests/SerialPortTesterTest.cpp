#include "pages/SerialPortTester.h"

#include "instruments/ReceiveView.h"
#include "simulated-board/Board.h"
#include "simulated-board/PseudoTerminal.h"
#include "tests/EventLoopClock.h"
#include "tests/OpenDescriptors.h"
#include "tests/PageFixture.h"
#include "tests/WaitUntilReadable.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QPushButton>
#include <QScrollBar>
#include <QSerialPort>
#include <QSignalSpy>
#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace
{

const QByteArray you = "\xe4\xbd\xa0"; // 你

/// Another program, such as a getty, that reads the port too. It opened the port before the page
/// did, and is always faster. Its reading leaves `lastError` in errno.
class SecondReader
{
public:
    SecondReader(const char* device, int lastError)
        : m_descriptor(open(device, O_RDWR | O_NOCTTY | O_NONBLOCK)),
          m_notifier(m_descriptor, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this, lastError] {
            char bytes[64];
            const ssize_t count = read(m_descriptor, bytes, sizeof bytes);
            m_taken.append(bytes, static_cast<int>(std::max<ssize_t>(count, 0)));
            errno = lastError;
        });
    }

    ~SecondReader() { close(m_descriptor); }

    QByteArray Taken() const { return m_taken; }

    void Stop() { m_notifier.setEnabled(false); }

private:
    int m_descriptor;
    QSocketNotifier m_notifier;
    QByteArray m_taken;
};

} // namespace

class SerialPortTesterTest : public PageFixture<SerialPortTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textsAreInTheLanguageOfTheirTime();

    void eachComOpensItsDevice_data();
    void eachComOpensItsDevice();
    void portIsSetUpAfterItWasOpened();
    void inputFromBeforeTheOpenIsDropped();
    void missingDeviceShowsOneBox();
    void choosingWhileOpenWaitsForTheNextOpen();

    void sendPutsTheTextAndALineFeedOnTheWire_data();
    void sendPutsTheTextAndALineFeedOnTheWire();
    void sendDoesNotWaitForADeviceThatTakesNothing();
    void halfACharacterStaysWithItsPort();
    void sendEchoesNothingIntoTheView();
    void sendWhileClosedDoesNothing();

    void receivedTextShowsAsItArrives();
    void chunkEndsAtItsFirstNul();
    void characterInTwoChunksShowsWhole();
    void characterCutByANulShowsAsBroken();
    void bytesThatAreNoTextShowAsBroken();
    void messagesThatEndInANulAreAllShown();
    void lineShowsAtOnceAfterTheScrollBarWasDragged();

    void loopBackPlugGivesBackWhatIsSent();
    void partnerThatEchoesAnswersEachLine();
    void partnerThatFloodsLeavesThePageAtWork();

    void lastWordsBeforeAnUnplugAreShown();
    void unpluggedPortNeitherSpinsNorSticks();
    void unpluggedWhileSendingNeitherSpinsNorSticks();
    void pluggedInAgainOpensAgain();
    void adapterThatVanishesByItself();

    void secondReaderLeavesThePortOpen_data();
    void secondReaderLeavesThePortOpen();

    void leavingThePageReleasesThePort_data();
    void leavingThePageReleasesThePort();
    void opensAndClosesForEver();

private:
    QString OpenText() { return Text("Label_1000301"); }
    QString CloseText() { return Text("Label_1000305"); }
    QPushButton* OpenButton() { return m_page->findChild<QPushButton*>("btnOpenCom"); }
    QString Received() { return m_page->findChild<QTextEdit*>()->toPlainText(); }
    QSerialPort* Port() { return m_page->findChild<QSerialPort*>(); }
    void Type(const QString& text) { m_page->findChild<QLineEdit*>()->setText(text); }
    void Open();
};

void SerialPortTesterTest::init()
{
    Board::Become("language english\n");
    Speak("english");
    Rebuild();
}

void SerialPortTesterTest::cleanup()
{
    m_page.reset();
}

void SerialPortTesterTest::Open()
{
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), CloseText());
}

void SerialPortTesterTest::textsAreInTheLanguageOfTheirTime()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Speak("chinese");
    QCOMPARE(OpenButton()->text(), QString("Open"));
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), QString::fromUtf8("关闭"));
    QCOMPARE(m_page->findChild<QPushButton*>("btnSendCom")->text(), QString("Send"));
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), QString::fromUtf8("打开"));
}

void SerialPortTesterTest::eachComOpensItsDevice_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i <= 9; ++i) {
        QTest::newRow(qPrintable(QString("COM%1").arg(i))) << i;
    }
}

void SerialPortTesterTest::eachComOpensItsDevice()
{
    QFETCH(int, number);
    const QString device = QString("/dev/ttyS%1").arg(number);
    PseudoTerminal terminal(device);
    m_page->findChild<QComboBox*>()->setCurrentIndex(number);
    QTest::ignoreMessage(QtDebugMsg, qPrintable("Open device:" + device));
    Open();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor("Hello MOSK!\n"));
}

void SerialPortTesterTest::portIsSetUpAfterItWasOpened()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    QVERIFY(Port()->isOpen());
    QCOMPARE(Port()->openMode(), QIODevice::ReadWrite);
    QCOMPARE(Port()->baudRate(), 115200);
    QCOMPARE(Port()->dataBits(), QSerialPort::Data8);
    QCOMPARE(Port()->parity(), QSerialPort::NoParity);
    QCOMPARE(Port()->stopBits(), QSerialPort::OneStop);
    QCOMPARE(Port()->flowControl(), QSerialPort::NoFlowControl);
}

void SerialPortTesterTest::inputFromBeforeTheOpenIsDropped()
{
    PseudoTerminal terminal("/dev/ttyS2");
    terminal.Write("old");
    Open();
    terminal.Write("new");
    QTRY_COMPARE(Received(), QString("new"));
}

void SerialPortTesterTest::missingDeviceShowsOneBox()
{
    int boxes = 0;
    AtTheBox(QMessageBox::Ok, [&boxes](QMessageBox& box) {
        ++boxes;
        QCOMPARE(box.text(), QString("[/dev/ttyS2] Failed to open"));
        QCOMPARE(box.windowTitle(), QString("Warning"));
        QCOMPARE(box.icon(), QMessageBox::Information);
        QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
    });
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(boxes, 1);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(OpenButton()->text(), OpenText());
    QVERIFY(Port() == nullptr);

    PseudoTerminal terminal("/dev/ttyS2");
    Open();
}

void SerialPortTesterTest::choosingWhileOpenWaitsForTheNextOpen()
{
    PseudoTerminal second("/dev/ttyS2");
    PseudoTerminal fifth("/dev/ttyS5");
    Open();
    m_page->findChild<QComboBox*>()->setCurrentIndex(5);
    Press(m_page.get(), "btnSendCom");
    QVERIFY(second.WaitFor("Hello MOSK!\n"));
    Press(m_page.get(), "btnOpenCom");
    Open();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(fifth.WaitFor("Hello MOSK!\n"));
    QCOMPARE(second.ReadAvailable(), QByteArray());
}

void SerialPortTesterTest::sendPutsTheTextAndALineFeedOnTheWire_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("wire");

    QTest::newRow("text") << "Hello MOSK!" << QByteArray("Hello MOSK!\n");
    QTest::newRow("empty") << "" << QByteArray("\n");
    QTest::newRow("not ASCII") << QString::fromUtf8("端口 é") << QByteArray("端口 é\n");
    QTest::newRow("hexadecimal is text") << "0x41 \\n" << QByteArray("0x41 \\n\n");
    QTest::newRow("100 kB") << QString(100000, 'x') << QByteArray(100000, 'x') + "\n";
    const QString withNul = QString("abc") + QChar(0) + "def";
    QTest::newRow("up to a NUL") << withNul << QByteArray("abc\n");
}

void SerialPortTesterTest::sendPutsTheTextAndALineFeedOnTheWire()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, wire);
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    Type(text);
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor(wire));
}

void SerialPortTesterTest::sendDoesNotWaitForADeviceThatTakesNothing()
{
    const PseudoTerminal terminal("/dev/ttyS2");
    Open();
    Type(QString(100000, 'x'));
    QElapsedTimer elapsed;
    elapsed.start();

    for (int i = 0; i < 3; ++i) {
        Press(m_page.get(), "btnSendCom");
        QCoreApplication::processEvents();
    }

    QVERIFY(elapsed.elapsed() < 5000);
}

void SerialPortTesterTest::halfACharacterStaysWithItsPort()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("a" + you.left(2));
    QTRY_COMPARE(Received(), QString("a"));

    Press(m_page.get(), "btnOpenCom");
    Open();
    terminal.Write("b");

    QTRY_COMPARE(Received(), QString("ab"));
}

void SerialPortTesterTest::sendEchoesNothingIntoTheView()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor("Hello MOSK!\n"));
    QCOMPARE(Received(), QString());
}

void SerialPortTesterTest::sendWhileClosedDoesNothing()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Press(m_page.get(), "btnSendCom");
    Open();
    Press(m_page.get(), "btnOpenCom");
    Press(m_page.get(), "btnSendCom");
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    // Once more open, so that all the closed page could have sent would have arrived.
    Open();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor("Hello MOSK!\n"));
}

void SerialPortTesterTest::receivedTextShowsAsItArrives()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("no line end");
    QTRY_COMPARE(Received(), QString("no line end"));
    terminal.Write(", now one\nand more");
    QTRY_COMPARE(Received(), QString("no line end, now one\nand more"));
}

void SerialPortTesterTest::chunkEndsAtItsFirstNul()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write(QByteArray("one\0two\0three", 13));
    QTRY_COMPARE(Received(), QString("one"));
    terminal.Write("next");
    QTRY_COMPARE(Received(), QString("onenext"));

    const QSignalSpy reads(Port(), &QSerialPort::readyRead);
    terminal.Write(QByteArray("\0four", 5));
    QTRY_VERIFY(!reads.isEmpty());
    terminal.Write("five");
    QTRY_COMPARE(Received(), QString("onenextfive"));
}

void SerialPortTesterTest::characterInTwoChunksShowsWhole()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("a" + you.left(2));
    QTRY_COMPARE(Received(), QString("a"));
    terminal.Write(you.mid(2) + "b" + you.left(1));
    QTRY_COMPARE(Received(), QString::fromUtf8("a你b"));
    terminal.Write(you.mid(1));
    QTRY_COMPARE(Received(), QString::fromUtf8("a你b你"));
}

void SerialPortTesterTest::characterCutByANulShowsAsBroken()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("a" + you.left(2) + QByteArray(1, '\0') + "dropped");
    QTRY_COMPARE(Received(), QString("a") + QChar(0xfffd));
    terminal.Write("b" + you);
    QTRY_COMPARE(Received(), QString("a") + QChar(0xfffd) + QString::fromUtf8("b你"));

    const QSignalSpy reads(Port(), &QSerialPort::readyRead);
    terminal.Write(you.left(2));
    QTRY_VERIFY(!reads.isEmpty());
    terminal.Write(QByteArray("\0dropped", 8));
    QTRY_COMPARE(Received(),
                 QString("a") + QChar(0xfffd) + QString::fromUtf8("b你") + QChar(0xfffd));
}

void SerialPortTesterTest::bytesThatAreNoTextShowAsBroken()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("a\xff"
                   "b");
    QTRY_COMPARE(Received(), QString("a") + QChar(0xfffd) + "b");
    terminal.Write(you.left(2));
    terminal.Write("c");
    QTRY_VERIFY(Received().endsWith(QChar(0xfffd) + QString("c")));
}

void SerialPortTesterTest::messagesThatEndInANulAreAllShown()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    QString expected;
    for (int i = 0; i < 20; ++i) {
        const QByteArray message = "message " + QByteArray::number(i);
        terminal.Write(message + '\0');
        WaitUntilReadable(Port());
        QCoreApplication::processEvents();
        expected += message;
    }
    QTRY_COMPARE(Received(), expected);
}

void SerialPortTesterTest::lineShowsAtOnceAfterTheScrollBarWasDragged()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write(QByteArray("a line\n").repeated(200));
    QTRY_COMPARE(Received().count('\n'), 200);
    QScrollBar* bar = m_page->findChild<QTextEdit*>()->verticalScrollBar();
    QWindow* window = m_page->windowHandle();
    const QPoint handle = bar->mapTo(m_page.get(), QPoint(bar->width() / 2, bar->height() - 25));
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, handle);
    QElapsedTimer dragging;
    dragging.start();
    for (int i = 0; dragging.elapsed() < 3000; ++i) {
        QTest::mouseMove(window, handle - QPoint(0, 10 + i % 200));
        QCoreApplication::processEvents();
    }
    QVERIFY(bar->value() < bar->maximum());
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, handle);

    const EventLoopClock clock;
    terminal.Write("next");
    QTRY_VERIFY(Received().endsWith("next"));
    QVERIFY2(clock.Elapsed() <= 150, qPrintable(QString::number(clock.Elapsed())));
}

void SerialPortTesterTest::loopBackPlugGivesBackWhatIsSent()
{
    Board::Become("port ttyS2 loopback\n");
    Open();
    Press(m_page.get(), "btnSendCom");
    QTRY_COMPARE(Received(), QString("Hello MOSK!\n"));
    Type(QString::fromUtf8("你好"));
    Press(m_page.get(), "btnSendCom");
    QTRY_COMPARE(Received(), QString::fromUtf8("Hello MOSK!\n你好\n"));
}

void SerialPortTesterTest::partnerThatEchoesAnswersEachLine()
{
    Board::Become("port ttyS2 echo\n");
    Open();
    Press(m_page.get(), "btnSendCom");
    Press(m_page.get(), "btnSendCom");
    QTRY_COMPARE(Received(), QString("echo: Hello MOSK!\necho: Hello MOSK!\n"));
}

void SerialPortTesterTest::partnerThatFloodsLeavesThePageAtWork()
{
    Board::Become("port ttyS2 flood\n");
    Open();
    // A line that never ends is kept up to a bound.
    QTRY_VERIFY_WITH_TIMEOUT(Received().size() >= 10000, 60000);
    // The page still takes its turn: it can be typed in and closed.
    QTest::keyClicks(m_page->findChild<QLineEdit*>(), "?");
    QCOMPARE(m_page->findChild<QLineEdit*>()->text(), QString("Hello MOSK!?"));
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), OpenText());
    auto* view = m_page->findChild<ReceiveView*>();
    view->ShowGathered();
    QVERIFY(view->toPlainText().contains("0123456789 abcdefghijklmnopqrstuvwxyz 0123456789 abc"));
    QVERIFY(view->toPlainText().size() <= 25000);
}

void SerialPortTesterTest::lastWordsBeforeAnUnplugAreShown()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("first words, ");
    QTRY_COMPARE(Received(), QString("first words, "));
    terminal.Write("last words");
    WaitUntilReadable(Port());
    QCoreApplication::processEvents();
    terminal.Vanish();
    QTRY_COMPARE(Received(), QString("first words, last words"));
}

void SerialPortTesterTest::unpluggedPortNeitherSpinsNorSticks()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    terminal.Write("last words");
    QTRY_COMPARE(Received(), QString("last words"));
    QSignalSpy errors(Port(), &QSerialPort::errorOccurred);
    QTest::ignoreMessage(QtDebugMsg, "Lost device:/dev/ttyS2, hung up");
    terminal.Vanish();
    QTRY_VERIFY(!Port()->isOpen());
    const int reported = errors.count();
    QVERIFY2(reported < 50, qPrintable(QString::number(reported)));
    QTest::qWait(100);
    QCOMPARE(errors.count(), reported);

    // Still open to the operator, until closed.
    QCOMPARE(OpenButton()->text(), CloseText());
    Press(m_page.get(), "btnSendCom");
    QCOMPARE(Received(), QString("last words"));
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), OpenText());
    QVERIFY(Port() == nullptr);
}

void SerialPortTesterTest::unpluggedWhileSendingNeitherSpinsNorSticks()
{
    PseudoTerminal terminal("/dev/ttyS2");
    Open();
    Type(QString(100000, 'x'));
    Press(m_page.get(), "btnSendCom");
    QTest::qWait(10);
    QVERIFY(Port()->bytesToWrite() > 0);
    QSignalSpy errors(Port(), &QSerialPort::errorOccurred);
    terminal.Vanish();
    QTRY_VERIFY(!Port()->isOpen());
    const int reported = errors.count();
    QVERIFY2(reported < 50, qPrintable(QString::number(reported)));
    QTest::qWait(100);
    QCOMPARE(errors.count(), reported);
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), OpenText());
}

void SerialPortTesterTest::pluggedInAgainOpensAgain()
{
    {
        PseudoTerminal terminal("/dev/ttyS2");
        Open();
    }
    QTRY_VERIFY(!Port()->isOpen());
    PseudoTerminal terminal("/dev/ttyS2");
    Press(m_page.get(), "btnOpenCom");
    Open();
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor("Hello MOSK!\n"));
}

void SerialPortTesterTest::adapterThatVanishesByItself()
{
    Board::Become("port ttyS2 vanishing\n");
    Open();
    Press(m_page.get(), "btnSendCom");
    QTRY_VERIFY(!Port()->isOpen());
    Press(m_page.get(), "btnOpenCom");
    QCOMPARE(OpenButton()->text(), OpenText());
}

void SerialPortTesterTest::secondReaderLeavesThePortOpen_data()
{
    QTest::addColumn<int>("lastError");
    // An empty read sets no error, so the port reports the last one of some other call.
    QTest::newRow("after no error") << 0;
    QTest::newRow("after one that stops the port's reading") << EAGAIN;
}

void SerialPortTesterTest::secondReaderLeavesThePortOpen()
{
    QFETCH(int, lastError);
    PseudoTerminal terminal("/dev/ttyS2");
    SecondReader second("/dev/ttyS2", lastError);
    Open();
    QSignalSpy errors(Port(), &QSerialPort::errorOccurred);

    for (int i = 1; i <= 3; ++i) {
        terminal.Write("login: ");
        QTRY_COMPARE(second.Taken(), QByteArray("login: ").repeated(i));
    }
    // The operator's port has found nothing to read, and does not go on about it.
    QTRY_VERIFY(errors.count() >= 1);
    QTest::qWait(100);
    QVERIFY2(errors.count() <= 3, qPrintable(QString::number(errors.count())));
    QVERIFY(Port()->isOpen());
    QCOMPARE(Received(), QString());

    second.Stop();
    terminal.Write("for the operator");
    QTRY_COMPARE(Received(), QString("for the operator"));
    Press(m_page.get(), "btnSendCom");
    QVERIFY(terminal.WaitFor("Hello MOSK!\n"));

    QTest::ignoreMessage(QtDebugMsg, "Lost device:/dev/ttyS2, hung up");
    terminal.Vanish();
    QTRY_VERIFY(!Port()->isOpen());
}

void SerialPortTesterTest::leavingThePageReleasesThePort_data()
{
    QTest::addColumn<bool>("open");
    QTest::addColumn<bool>("sending");
    QTest::addColumn<bool>("unplugged");
    QTest::newRow("closed") << false << false << false;
    QTest::newRow("open") << true << false << false;
    QTest::newRow("sending") << true << true << false;
    QTest::newRow("unplugged") << true << false << true;
}

void SerialPortTesterTest::leavingThePageReleasesThePort()
{
    QFETCH(bool, open);
    QFETCH(bool, sending);
    QFETCH(bool, unplugged);
    PseudoTerminal terminal("/dev/ttyS2");
    const int before = OpenDescriptors();
    if (open) {
        Open();
        QVERIFY(OpenDescriptors() > before);
    }
    if (sending) {
        Type(QString(100000, 'x'));
        Press(m_page.get(), "btnSendCom");
    }
    if (unplugged) {
        terminal.Vanish();
    }
    m_page.reset();
    QCOMPARE(OpenDescriptors(), unplugged ? before - 2 : before);
}

void SerialPortTesterTest::opensAndClosesForEver()
{
    PseudoTerminal terminal("/dev/ttyS2");
    const int descriptors = OpenDescriptors();
    const int objects = m_page->findChildren<QObject*>().size();
    for (int i = 0; i < 1000; ++i) {
        Press(m_page.get(), "btnOpenCom");
        QVERIFY(Port() != nullptr);
        Press(m_page.get(), "btnOpenCom");
        QVERIFY(Port() == nullptr);
    }
    QCOMPARE(OpenDescriptors(), descriptors);
    QCOMPARE(m_page->findChildren<QObject*>().size(), objects);
}

QTEST_MAIN(SerialPortTesterTest)
#include "SerialPortTesterTest.moc"
