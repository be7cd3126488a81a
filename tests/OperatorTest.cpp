#include "simulated-board/operator/Operator.h"
#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "tests/Program.h"

#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QTest>

namespace
{

const QString socketPath = Operator::DefaultSocketPath();
const QRgb headerBlue = qRgb(96, 168, 239);
const QRgb boxGrey = qRgb(195, 195, 195);
const QString field = "bodyWidget QLineEdit[0]";

/// Sends bytes unchanged, and returns the first line of the answer.
QByteArray Send(QLocalSocket& socket, const QByteArray& bytes)
{
    socket.write(bytes);
    while (!socket.canReadLine() && socket.waitForReadyRead(10000)) {
    }
    return socket.readLine();
}

} // namespace

class OperatorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void widgetIsFound_data();
    void widgetIsFound();
    void widgetThatIsNotThereIsAnError_data();
    void widgetThatIsNotThereIsAnError();
    void listTellsClassPlaceAndState();
    void propertyIsRead();
    void itemsAreRead();

    void languageIsSwitchedByTheComboBox();
    void itemIsChosenByItsText();
    void tabOpensItsPage();
    void pageIsOpenedById();
    void pageIsOpenedByName();
    void pagesAreListed();
    void typedTextReplacesWhatStoodThere_data();
    void typedTextReplacesWhatStoodThere();
    void typedLineEndIsAKey();
    void wheelTurnsOverAWidget();
    void windowTakesAnotherSize();

    void pressIsAnsweredWhileItsSlotBlocks();
    void readingSeesNoSlotHalfDone();
    void pageIsThereForWhatComesWithItsTab();
    void twoPressesAreNoDoubleClick();

    void boxIsReadAndClosed_data();
    void boxIsReadAndClosed();
    void boxButtonThatIsNotThereIsAnError();
    void whatAFingerCannotReachIsNotPressed();

    void screenshotShowsTheWholeScreen();
    void screenshotShowsTheBoxAboveThePage();

    void badRequestGetsAnError_data();
    void badRequestGetsAnError();
    void lineWithoutEndIsRefused();
    void clientMayLeaveInTheMiddle();
    void clientsAreServedSideBySide();
    void socketIsForItsOwnerAlone();
    void programAtRestTakesNoTime();
    void programThatIsNotUpIsAnError();
    void programThatEndsIsAnError();
    void waitingForATextTellsWhatStoodThere();

    void commandLineReadsAndPresses();
    void commandLineTellsWhatWentWrong();

private:
    void OpenBasicPage();
    int Operate(const QStringList& words, QByteArray* output, QByteArray* errors);

    QProcess m_program;
    Operator m_operator;
};

void OperatorTest::init()
{
    Board::Become("language english\nstick Kingston\nmmc 0 1\n");
    PutOperatorAt(m_program);
    m_program.start(Built("MoskTest"), QStringList());
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
}

void OperatorTest::cleanup()
{
    const bool isRunning = m_program.state() == QProcess::Running;
    m_program.kill();
    m_program.waitForFinished();
    Board::RemoveTools();
    QVERIFY2(isRunning, "the program has ended");
}

void OperatorTest::OpenBasicPage()
{
    QVERIFY2(m_operator.ClickTab("menuTab", 1), qPrintable(m_operator.Error()));
    QCOMPARE(m_operator.Count("BasicTester"), 1);
}

void OperatorTest::widgetIsFound_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("text");

    const auto add = [](const char* name, const char* selector, const char* text) {
        QTest::newRow(name) << QString(selector) << QString(text);
    };
    add("name", "btnReboot", "Reboot");
    add("class", "QPushButton", "Reboot");
    add("index, from left to right", "QPushButton[1]", "Switch");
    add("index, then down", "QPushButton[2]", "Finished");
    add("descent", "bodyWidget QLabel[1]", "Version:");
    add("three steps", "centralWidget StartPage QComboBox", "English");
    add("own class", "StartPage QPushButton", "Reboot");
    add("tabs", "menuTab", "Home");
    add("blanks around", "  bodyWidget   QLabel[1] ", "Version:");
}

void OperatorTest::widgetIsFound()
{
    QFETCH(QString, selector);
    QTEST(m_operator.Text(selector), "text");
    QCOMPARE(m_operator.Error(), QString());
}

void OperatorTest::widgetThatIsNotThereIsAnError_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("error");

    const auto add = [](const char* name, const char* selector, const char* error) {
        QTest::newRow(name) << QString(selector) << QString(error);
    };
    add("name", "btnNone", "no widget \"btnNone\"");
    add("index", "QPushButton[3]", "no widget \"QPushButton[3]\": there are 3");
    add("descent", "headerWidget QLineEdit", "no widget \"headerWidget QLineEdit\"");
    add("outer", "Nowhere QLabel", "no widget \"Nowhere QLabel\": there are 0 of \"Nowhere\"");
    add("brackets", "[[]", "\"[[]\" is no selector");
    add("negative", "QLabel[-1]", "\"QLabel[-1]\" is no selector");
}

void OperatorTest::widgetThatIsNotThereIsAnError()
{
    QFETCH(QString, selector);
    QCOMPARE(m_operator.Text(selector), QString());
    QTEST(m_operator.Error(), "error");
}

void OperatorTest::listTellsClassPlaceAndState()
{
    QVERIFY(m_operator.List().size() > 10);

    const QJsonArray buttons = m_operator.List("btnSwitchHMI");

    QCOMPARE(buttons.size(), 1);
    const QJsonObject expected{
        {"class", "QPushButton"}, {"name", "btnSwitchHMI"}, {"x", 150},        {"y", 210},
        {"width", 100},           {"height", 40},           {"visible", true}, {"enabled", true},
        {"text", "Switch"}};
    QCOMPARE(buttons[0].toObject(), expected);
}

void OperatorTest::propertyIsRead()
{
    QCOMPARE(m_operator.Property("btnReboot", "enabled"), QVariant(true));
    QCOMPARE(m_operator.Property("btnReboot", "objectName"), QVariant("btnReboot"));
    QCOMPARE(m_operator.Property("bodyWidget QComboBox", "currentIndex").toInt(), 1);
    QCOMPARE(m_operator.Property("logoWidget", "size").toList(), (QVariantList{80, 50}));

    QVERIFY(!m_operator.Property("btnReboot", "status").isValid());
    QCOMPARE(m_operator.Error(), QString("\"btnReboot\" has no property \"status\""));
}

void OperatorTest::itemsAreRead()
{
    QCOMPARE(m_operator.Items("bodyWidget QComboBox"), (QStringList{"中文", "English"}));
    QCOMPARE(m_operator.Items("menuTab"),
             (QStringList{"Home", "Basic", "Serial", "Wifi", "Voice", "CAN"}));
    QVERIFY(m_operator.Cells("menuTab").isEmpty());
    QCOMPARE(m_operator.Error(), QString("\"menuTab\" is no table"));
}

void OperatorTest::languageIsSwitchedByTheComboBox()
{
    QVERIFY(m_operator.Choose("bodyWidget QComboBox", 0));
    QVERIFY(m_operator.Idle());

    QCOMPARE(m_operator.Text("btnReboot"), QString("立即重启"));
    QCOMPARE(m_operator.Text("menuTab"), QString("首页"));

    QVERIFY(!m_operator.Choose("bodyWidget QComboBox", 2));
    QCOMPARE(m_operator.Error(), QString("\"bodyWidget QComboBox\" has no such item"));
    QCOMPARE(m_operator.Property("bodyWidget QComboBox", "currentIndex").toInt(), 0);
}

void OperatorTest::itemIsChosenByItsText()
{
    QVERIFY(m_operator.Choose("bodyWidget QComboBox", "中文"));
    QVERIFY(m_operator.WaitForText("btnReboot", "立即重启"));
}

void OperatorTest::tabOpensItsPage()
{
    OpenBasicPage();

    QCOMPARE(m_operator.Text("menuTab"), QString("Basic"));
    QVERIFY(!m_operator.ClickTab("menuTab", 6));
    QCOMPARE(m_operator.Error(), QString("\"menuTab\" has 6 tabs"));
}

void OperatorTest::pageIsOpenedById()
{
    QVERIFY(m_operator.OpenPage(2));
    QCOMPARE(m_operator.Count("BasicTester"), 1);

    QVERIFY(m_operator.OpenPage(11));
    QCOMPARE(m_operator.Count("bodyWidget QWidget"), 0);
}

void OperatorTest::pageIsOpenedByName()
{
    QVERIFY2(m_operator.OpenPage("production"), qPrintable(m_operator.Error()));
    QCOMPARE(m_operator.Count("ToolProductionTest"), 1);

    QVERIFY(!m_operator.OpenPage("moon"));
    QCOMPARE(m_operator.Error(), QString("there is no page \"moon\""));
}

void OperatorTest::pagesAreListed()
{
    const QJsonArray pages = m_operator.Pages();

    QCOMPARE(pages.size(), int(allPages.size()));
    for (int i = 0; i < pages.size(); ++i) {
        QCOMPARE(pages[i]["id"].toInt(), int(allPages[i].id));
        QCOMPARE(pages[i]["name"].toString(), QString(allPages[i].name));
    }
    QCOMPARE(pages[5]["tab"].toInt(), 3);
    QCOMPARE(pages[4]["tab"].toInt(), -1);
}

void OperatorTest::typedTextReplacesWhatStoodThere_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("digits and dots") << "10.0.0.1";
    QTest::newRow("both cases and signs") << "aZ '\"\\;$&=%#@~";
    QTest::newRow("Chinese") << "网口检测";
    QTest::newRow("beyond 16 bits") << QString::fromUcs4(U"\U0001F600x");
    QTest::newRow("nothing") << "";
}

void OperatorTest::typedTextReplacesWhatStoodThere()
{
    QFETCH(QString, text);
    OpenBasicPage();

    QVERIFY2(m_operator.SetText("bodyWidget QLineEdit[4]", text), qPrintable(m_operator.Error()));

    QCOMPARE(m_operator.Text("bodyWidget QLineEdit[4]"), text);
}

void OperatorTest::typedLineEndIsAKey()
{
    OpenBasicPage();
    QVERIFY(m_operator.SetText("bodyWidget QLineEdit[4]", "10.0.0.1\n2"));
    QCOMPARE(m_operator.Text("bodyWidget QLineEdit[4]"), QString("10.0.0.12"));

    QVERIFY(m_operator.PressKey("Backspace"));
    QCOMPARE(m_operator.Text("bodyWidget QLineEdit[4]"), QString("10.0.0.1"));
    QVERIFY(!m_operator.PressKey("NoSuchKey"));
}

void OperatorTest::wheelTurnsOverAWidget()
{
    QVERIFY(m_operator.ClickTab("menuTab", 2));
    const QString port = "bodyWidget QComboBox";
    QCOMPARE(m_operator.Property(port, "currentIndex").toInt(), 2);

    QVERIFY(m_operator.TurnWheel(port, -3));
    QCOMPARE(m_operator.Property(port, "currentIndex").toInt(), 3);
    QVERIFY(m_operator.TurnWheel(port, 1));
    QCOMPARE(m_operator.Property(port, "currentIndex").toInt(), 2);
}

void OperatorTest::windowTakesAnotherSize()
{
    QVERIFY(m_operator.Resize(800, 480));
    QVERIFY(m_operator.Idle());
    QCOMPARE(m_operator.Property("headerWidget", "width").toInt(), 800);
    QCOMPARE(m_operator.Property("bodyWidget", "height").toInt(), 430);
}

void OperatorTest::pressIsAnsweredWhileItsSlotBlocks()
{
    Board::PutTool("ping",
                   "touch /tmp/pings\nwhile [ ! -e /tmp/go ]; do sleep 0.01; done\necho ttl=1");
    OpenBasicPage();

    QVERIFY(m_operator.Click("btnEmmcTest"));
    QTRY_VERIFY(QFile::exists("/tmp/pings"));
    m_operator.SetLimit(300);
    QVERIFY(!m_operator.Idle());
    QCOMPARE(m_operator.Error(), QString("no answer to \"idle\" after 300 ms"));

    Board::WriteFile("/tmp/go", {});
    m_operator.SetLimit(35000);
    QVERIFY(m_operator.Idle());
    QCOMPARE(m_operator.Text("bodyWidget QLineEdit[4]"), QString("Normal!"));
}

void OperatorTest::readingSeesNoSlotHalfDone()
{
    // The slot lets the page paint "Detecting..." in the middle; what came with the press waits.
    OpenBasicPage();
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    QVERIFY(socket.waitForConnected());
    Send(socket, R"({"do":"click","widget":"btnUsbTest"})"
                 "\n"
                 R"({"do":"text","widget":"bodyWidget QLineEdit[0]","id":7})"
                 "\n"
                 R"({"do":"tab","widget":"menuTab","index":0})"
                 "\n");

    const QJsonObject answer = QJsonDocument::fromJson(Send(socket, {})).object();

    QCOMPARE(answer["id"].toInt(), 7);
    QCOMPARE(answer["value"].toString(),
             QString("Detected that there is(are) 1 USB flash drive inserted!"));
    QCOMPARE(m_operator.Count("StartPage"), 1);
}

void OperatorTest::pageIsThereForWhatComesWithItsTab()
{
    // A page that is opened gets shown by an event of its own, a turn later.
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    QVERIFY(socket.waitForConnected());
    Send(socket, R"({"do":"tab","widget":"menuTab","index":1})"
                 "\n"
                 R"({"do":"click","widget":"btnUsbTest"})"
                 "\n");
    QCOMPARE(Send(socket, {}), QByteArray("{\"value\":true}\n"));
}

void OperatorTest::twoPressesAreNoDoubleClick()
{
    // A double click in a field would mark the word, and the key would take it away.
    OpenBasicPage();
    QVERIFY(m_operator.SetText(field, "one"));
    QVERIFY(m_operator.Click(field));
    QVERIFY(m_operator.Click(field));
    QVERIFY(m_operator.PressKey("End"));
    QVERIFY(m_operator.Click(field));
    QVERIFY(m_operator.PressKey("Backspace"));
    QCOMPARE(m_operator.Text(field), QString("on"));
}

void OperatorTest::boxIsReadAndClosed_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("isMarked");
    QTest::newRow("role that confirms") << "Yes" << true;
    QTest::newRow("role that cancels") << "No" << false;
    QTest::newRow("text that confirms") << "OK" << true;
    QTest::newRow("text that cancels") << "Cancel" << false;
}

void OperatorTest::boxIsReadAndClosed()
{
    QFETCH(QString, button);
    QVERIFY(m_operator.Click("btnTestEnd"));
    QCOMPARE(m_operator.Text("QMessageBox"),
             QString("Confirm that the testing has been completed?"));
    QVERIFY(m_operator.Idle());

    QVERIFY2(m_operator.PressBoxButton(button), qPrintable(m_operator.Error()));

    QCOMPARE(m_operator.Count("QMessageBox"), 0);
    QTEST(QFile::exists("/etc/qttestend"), "isMarked");
}

void OperatorTest::boxButtonThatIsNotThereIsAnError()
{
    QVERIFY(!m_operator.PressBoxButton("Yes"));
    QCOMPARE(m_operator.Error(), QString("no box is open"));

    QVERIFY(m_operator.Click("btnTestEnd"));
    for (const char* button : {"Abort", "Perhaps", ""}) {
        QVERIFY(!m_operator.PressBoxButton(button));
        QCOMPARE(m_operator.Error(), QString("the box has no button \"%1\"").arg(button));
    }
}

void OperatorTest::whatAFingerCannotReachIsNotPressed()
{
    QVERIFY(!m_operator.Click("ScrollLeftButton"));
    QCOMPARE(m_operator.Error(), QString("\"ScrollLeftButton\" is hidden"));
    QVERIFY(!m_operator.ClickAt("btnReboot", {5000, 5}));
    QCOMPARE(m_operator.Error(), QString("\"btnReboot\" lies outside the screen"));
    QVERIFY(!m_operator.ClickAt("headerWidget", {10, 10 + 300}));
    QVERIFY(!m_operator.ClickAt("btnReboot", {115, 5}));
    QCOMPARE(m_operator.Error(),
             QString("\"btnReboot\" is covered by QPushButton \"btnSwitchHMI\""));

    QVERIFY(m_operator.Click("btnSwitchHMI"));
    QVERIFY(!m_operator.Click("btnTestEnd"));
    QCOMPARE(m_operator.Error(), QString("\"btnTestEnd\" is behind a box"));
    QVERIFY(!m_operator.OpenPage(2));
    QCOMPARE(m_operator.Error(), QString("a box is open"));
    QVERIFY(m_operator.PressBoxButton("No"));

    OpenBasicPage();
    QVERIFY(!m_operator.Click("btnTouchCalc"));
    QCOMPARE(m_operator.Error(), QString("\"btnTouchCalc\" is disabled"));
    QVERIFY(!m_operator.SetText("btnUsbTest QLabel", "x"));
    QVERIFY(!m_operator.SetText("bodyWidget QLabel[0]", "x"));
    QCOMPARE(m_operator.Error(), QString("\"bodyWidget QLabel[0]\" does not take the focus"));
}

void OperatorTest::screenshotShowsTheWholeScreen()
{
    const QImage picture = QImage::fromData(m_operator.Screenshot(), "PNG");
    QCOMPARE(picture.width(), m_operator.Property("centralWidget", "width").toInt());
    QCOMPARE(picture.height(), m_operator.Property("centralWidget", "height").toInt());
    QCOMPARE(picture.pixel(picture.width() - 3, 25), headerBlue);
    QCOMPARE(picture.pixel(5, picture.height() - 5), qRgb(240, 240, 240));

    QVERIFY(m_operator.Screenshot("/tmp/screen.png"));
    QCOMPARE(QImage("/tmp/screen.png").size(), picture.size());
    QVERIFY(!m_operator.Screenshot("/none/screen.png"));
    QVERIFY(m_operator.Error().startsWith("cannot write /none/screen.png"));
}

void OperatorTest::screenshotShowsTheBoxAboveThePage()
{
    QVERIFY(m_operator.Click("btnSwitchHMI"));
    const QVariantList place = m_operator.Property("QMessageBox", "geometry").toList();
    QCOMPARE(place.size(), 4);

    const QImage picture = QImage::fromData(m_operator.Screenshot(), "PNG");

    QCOMPARE(picture.pixel(place[0].toInt() + 3, place[1].toInt() + 3), boxGrey);
    QCOMPARE(picture.pixel(picture.width() - 3, 25), headerBlue);
}

void OperatorTest::badRequestGetsAnError_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("no JSON") << QByteArray("click me");
    QTest::newRow("half JSON") << QByteArray("{\"do\":");
    QTest::newRow("no object") << QByteArray("[1,2]");
    QTest::newRow("null bytes") << QByteArray("\0\0\0", 3);
    QTest::newRow("no UTF-8") << QByteArray("{\"do\":\"\xff\xfe\"}");
    QTest::newRow("nothing to do") << QByteArray("{}");
    QTest::newRow("unknown") << QByteArray(R"({"do":"dance"})");
    QTest::newRow("do is a number") << QByteArray(R"({"do":5})");
    QTest::newRow("no widget") << QByteArray(R"({"do":"click","widget":{}, "x":"y"})");
    QTest::newRow("no property") << QByteArray(R"({"do":"property","widget":"btnReboot"})");
    QTest::newRow("no tabs") << QByteArray(R"({"do":"tab","widget":"btnReboot","index":0})");
    QTest::newRow("no tab index") << QByteArray(R"({"do":"tab","widget":"menuTab"})");
    QTest::newRow("negative tab") << QByteArray(R"({"do":"tab","widget":"menuTab","index":-1})");
    QTest::newRow("no combo") << QByteArray(R"({"do":"choose","widget":"btnReboot","item":0})");
    QTest::newRow("no item") << QByteArray(R"({"do":"choose","widget":"QComboBox"})");
    QTest::newRow("no page") << QByteArray(R"({"do":"page","page":"two"})");
    QTest::newRow("no size") << QByteArray(R"({"do":"resize","width":-5,"height":0})");
    QTest::newRow("no key") << QByteArray(R"({"do":"key"})");
    QTest::newRow("no field") << QByteArray(R"({"do":"type","text":"x"})");
}

void OperatorTest::badRequestGetsAnError()
{
    QFETCH(QByteArray, line);
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    QVERIFY(socket.waitForConnected());

    const QJsonObject answer = QJsonDocument::fromJson(Send(socket, line + '\n')).object();

    QVERIFY2(!answer["error"].toString().isEmpty(), QJsonDocument(answer).toJson());
    QCOMPARE(m_operator.Text("btnReboot"), QString("Reboot"));
}

void OperatorTest::lineWithoutEndIsRefused()
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    QVERIFY(socket.waitForConnected());

    const QByteArray answer = Send(socket, QByteArray(2 << 20, 'x'));

    QVERIFY(answer.isEmpty() || answer.contains("the line is too long"));
    QVERIFY(socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected());
    QCOMPARE(m_operator.Text("btnReboot"), QString("Reboot"));
}

void OperatorTest::clientMayLeaveInTheMiddle()
{
    const QByteArray requests[] = {
        "{\"do\":\"scr",
        "{\"do\":\"screenshot\"}\n",
        "{\"do\":\"idle\"}\n",
        "{\"do\":\"list\"}\n{\"do\":\"list\"}\n{\"do\":\"type\",\"widget\":\"logoWidget\"}\n",
    };
    for (const QByteArray& request : requests) {
        for (int i = 0; i < 5; ++i) {
            QLocalSocket socket;
            socket.connectToServer(socketPath);
            QVERIFY(socket.waitForConnected());
            socket.write(request);
            socket.flush();
            socket.abort();
        }
    }
    QVERIFY(m_operator.Idle());
    QCOMPARE(m_operator.Text("btnReboot"), QString("Reboot"));
}

void OperatorTest::clientsAreServedSideBySide()
{
    Operator other(socketPath);
    QVERIFY(other.Connect());
    QVERIFY(other.Click("btnSwitchHMI"));
    QCOMPARE(m_operator.Text("QMessageBox"), QString("Are you sure switch the HMI system?"));
    QVERIFY(m_operator.PressBoxButton("No"));
    QCOMPARE(other.Count("QMessageBox"), 0);
}

void OperatorTest::socketIsForItsOwnerAlone()
{
    m_program.kill();
    m_program.waitForFinished();
    m_program.start("sh", {"-c", "umask 0; exec \"$0\"", Built("MoskTest")});
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));

    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    QCOMPARE(QFile::permissions(socketPath) & others, QFile::Permissions());
}

void OperatorTest::programAtRestTakesNoTime()
{
    // In hundredths of a second. The program's name has no blanks.
    const auto processorTime = [this] {
        const auto words =
            Board::ReadFile(QString("/proc/%1/stat").arg(m_program.processId())).split(' ');
        return words[13].toInt() + words[14].toInt();
    };
    QVERIFY(m_operator.Idle());

    // What was just started may still load.
    const bool isAtRest = QTest::qWaitFor(
        [&] {
            const int before = processorTime();
            QTest::qWait(1000);
            return processorTime() - before <= 10;
        },
        20000);

    QVERIFY(isAtRest);
}

void OperatorTest::programThatIsNotUpIsAnError()
{
    Operator lost("/run/board/nobody");
    QVERIFY(!lost.Connect(50));
    QVERIFY2(lost.Error().startsWith("the program is not up at /run/board/nobody after 50 ms"),
             qPrintable(lost.Error()));
    QVERIFY(!lost.Click("btnReboot"));
    QCOMPARE(lost.Error(), QString("the program has gone"));
}

void OperatorTest::programThatEndsIsAnError()
{
    m_program.kill();
    m_program.waitForFinished();
    QVERIFY(!m_operator.Idle());
    QCOMPARE(m_operator.Error(), QString("the program has gone"));

    // Killed, it left its socket behind; the next one listens there.
    m_program.start(Built("MoskTest"), QStringList());
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
}

void OperatorTest::waitingForATextTellsWhatStoodThere()
{
    QVERIFY(m_operator.WaitForText("btnReboot", "Reboot"));
    QVERIFY(!m_operator.WaitForText("btnReboot", "Stay", 50));
    QCOMPARE(m_operator.Error(),
             QString("\"btnReboot\" shows \"Reboot\" after 50 ms, not \"Stay\""));
    QVERIFY(m_operator.WaitForText("btnReboot",
                                   [](const QString& text) { return text.contains("boot"); }));
    QVERIFY(!m_operator.WaitForText("btnNone", "Stay", 50));
    QVERIFY(m_operator.Error().startsWith("no widget \"btnNone\""));
}

int OperatorTest::Operate(const QStringList& words, QByteArray* output, QByteArray* errors)
{
    QProcess process;
    process.start(Built("simulated-board/operate"), words);
    process.waitForFinished();
    *output = process.readAllStandardOutput();
    *errors = process.readAllStandardError();
    return process.exitCode();
}

void OperatorTest::commandLineReadsAndPresses()
{
    QByteArray output;
    QByteArray errors;
    QCOMPARE(Operate({"wait"}, &output, &errors), 0);
    QCOMPARE(Operate({"text", "btnReboot"}, &output, &errors), 0);
    QCOMPARE(output, QByteArray("Reboot\n"));
    QCOMPARE(Operate({"list", "btnReboot"}, &output, &errors), 0);
    QCOMPARE(output, QByteArray("QPushButton \"btnReboot\" at 40,210 100x40 \"Reboot\"\n"));
    QCOMPARE(Operate({"items", "menuTab"}, &output, &errors), 0);
    QCOMPARE(output, QByteArray("Home\nBasic\nSerial\nWifi\nVoice\nCAN\n"));
    QCOMPARE(Operate({"click", "btnSwitchHMI"}, &output, &errors), 0);
    QCOMPARE(output, QByteArray());
    QCOMPARE(Operate({"press", "No"}, &output, &errors), 0);
    QCOMPARE(Operate({"page", "2"}, &output, &errors), 0);
    QCOMPARE(Operate({"type", field, "hello"}, &output, &errors), 0);
    QCOMPARE(Operate({"wait-for", field, "hello"}, &output, &errors), 0);
    QCOMPARE(Operate({"property", "logoWidget", "size"}, &output, &errors), 0);
    QCOMPARE(output, QByteArray("80 50\n"));
    QCOMPARE(Operate({"screenshot", "/tmp/operate.png"}, &output, &errors), 0);
    QVERIFY(!QImage("/tmp/operate.png").isNull());
}

void OperatorTest::commandLineTellsWhatWentWrong()
{
    QByteArray output;
    QByteArray errors;
    QCOMPARE(Operate({"text", "btnNone"}, &output, &errors), 1);
    QCOMPARE(errors, QByteArray("operate text: no widget \"btnNone\"\n"));
    QCOMPARE(output, QByteArray());
    for (const QStringList& words : {QStringList{}, {"dance"}, {"text"}, {"click", "a", "1"}}) {
        QCOMPARE(Operate(words, &output, &errors), 2);
        QVERIFY(errors.startsWith("Usage: operate COMMAND"));
    }
}

QTEST_GUILESS_MAIN(OperatorTest)
#include "OperatorTest.moc"
