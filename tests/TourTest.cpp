#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "simulated-board/tour/Processes.h"
#include "tests/Program.h"

#include <QDir>
#include <QTest>
#include <QXmlStreamReader>

#include <csignal>
#include <memory>

namespace
{

const QString folder = "/tmp/tour";
const QString described = "/tmp/bench.board";

/// An element of an XML file: its name, its attributes, and its text with that of the elements in
/// it.
struct Element {
    QString name;
    QXmlStreamAttributes attributes;
    QString text;

    QString operator[](const char* attribute) const
    {
        return attributes.value(attribute).toString();
    }
};

/// Reads all elements of a file in their order. Fails the test when it is not well-formed XML.
QList<Element> ElementsOf(const QString& path)
{
    QXmlStreamReader xml(Board::ReadFile(path));
    QList<Element> elements;
    QList<int> open;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            open.append(elements.size());
            elements.append({xml.name().toString(), xml.attributes(), {}});
        } else if (xml.isEndElement()) {
            open.removeLast();
        } else if (xml.isCharacters()) {
            for (const int index : qAsConst(open)) {
                elements[index].text += xml.text();
            }
        }
    }
    if (xml.hasError()) {
        QTest::qFail(qPrintable(path + ": " + xml.errorString()), __FILE__, __LINE__);
    }
    return elements;
}

QList<Element> ElementsNamed(const QString& name, const QList<Element>& elements)
{
    QList<Element> named;
    for (const Element& element : elements) {
        if (element.name == name) {
            named.append(element);
        }
    }
    return named;
}

/// The element of report.xml that tells how a check went: "system-out", "failure" or "skipped".
Element ResultOf(const QString& page, const QString& check)
{
    const QList<Element> elements = ElementsOf(folder + "/report.xml");
    for (int i = 0; i + 1 < elements.size(); ++i) {
        if (elements[i]["classname"] == page && elements[i]["name"] == check) {
            return elements[i + 1];
        }
    }
    return {};
}

QString ReportPage()
{
    return QString::fromUtf8(Board::ReadFile(folder + "/report.html"));
}

} // namespace

/// Runs the tour with the real program. The board starts the program again after each restart.
class TourTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void goodBoardPasses();
    void boardWithFaultsDoesNotPass();
    void eachKindOfFaultIsWrong_data();
    void eachKindOfFaultIsWrong();
    void verdictReachesTheShell();
    void whatIsNotThereIsLeftOutOrFails();
    void stoppedTourIsIncomplete();
    void tourOfAProgramThatDiesIsIncomplete();
    void tourWithoutAProgramIsIncomplete_data();
    void tourWithoutAProgramIsIncomplete();
    void wrongDescriptionIsRefused();
    void unwritableReportIsRefused();
    void processesEndWhileTheyAreListed();

private:
    void StartTour(const QByteArray& board, const QByteArray& expected);
    int TakeTour(const QByteArray& board, const QByteArray& expected);
    bool WaitForLine(const QByteArray& line);

    QString m_home = QString::fromLocal8Bit(qgetenv("BOARD_HOME"));
    QByteArray m_default = Board::ReadFile(m_home + "/../boards/default.board");
    QProcess m_program;
    std::unique_ptr<QProcess> m_tour;
    QStringList m_options;
    QStringList m_lines;
};

void TourTest::init()
{
    PutOperatorAt(m_program);
    LookForNoLeaks(m_program);
    QDir(folder).removeRecursively();
    m_options.clear();
    // One of the boards has a folder in the place of the database.
    QFile::remove("/var/log/sqlite.db");
    QDir("/var/log/sqlite.db").removeRecursively();
    m_tour = std::make_unique<QProcess>();
    m_tour->setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

void TourTest::cleanup()
{
    m_tour.reset();
    QProcess::execute("killall", {"-q", "MoskTest"});
    m_program.waitForFinished();
}

/// Starts the tour at a board; `expected` describes what the tour believes it to be.
void TourTest::StartTour(const QByteArray& board, const QByteArray& expected)
{
    Board::Become(board);
    Board::WriteFile(described, expected);
    m_program.start(m_home + "/start-program", {Built("MoskTest")});
    // Somebody has left the program at a page without a tab, so that the tab of another is chosen.
    Operator before;
    QVERIFY2(before.Connect() && before.OpenPage("camera"), qPrintable(before.Error()));
    m_tour->start(Built("simulated-board/tour"),
                  QStringList{"--board", described, "--report", folder} + m_options);
}

int TourTest::TakeTour(const QByteArray& board, const QByteArray& expected)
{
    StartTour(board, expected);
    if (!m_tour->waitForFinished(240000)) {
        return -1;
    }
    m_lines = QString::fromUtf8(m_tour->readAllStandardOutput()).split('\n');
    return m_tour->exitCode();
}

/// Waits until the tour has printed a line that begins so.
bool TourTest::WaitForLine(const QByteArray& line)
{
    return QTest::qWaitFor(
        [&] {
            m_tour->waitForReadyRead(10);
            return m_tour->peek(1 << 20).contains('\n' + line);
        },
        60000);
}

void TourTest::goodBoardPasses()
{
    const int status = TakeTour(m_default, m_default);

    QVERIFY2(status == 0, qPrintable(m_lines.filter(" | WRONG, ").join('\n')));
    // Nobody would miss a check that is no longer taken.
    QCOMPARE(m_lines.filter(" checks, ").value(0).section(", ", 0, 2),
             QString("131 checks, 0 wrong, 6 left out"));
    QVERIFY(m_lines.contains("home | reboot | sync, reboot | ok"));
    QVERIFY(m_lines.contains(
        "basic | USB | Detected that there is(are) 1 USB flash drive inserted! | ok"));
    QVERIFY(m_lines.contains("basic | Ethernet | 正常！, ok | ok"));
    QVERIFY(m_lines.contains("wifi | connect | Connected MoskBench | ok"));
    QVERIFY(m_lines.contains("wifi | ping | 成功！, ok | ok"));
    QVERIFY(m_lines.contains("remote-access | set 6001 | Set success! | ok"));

    const QList<Element> page = ElementsOf(folder + "/report.html");
    const QList<Element> suite = ElementsNamed("testsuite", ElementsOf(folder + "/report.xml"));
    const QStringList pictures = QDir(folder).entryList({"*.png"});
    QCOMPARE(ElementsNamed("h1", page).value(0).text, QString("Passed"));
    QCOMPARE(ElementsNamed("img", page).size(), pictures.size());
    QCOMPARE(suite.value(0)["failures"] + suite.value(0)["errors"], QString("00"));
    QCOMPARE(ResultOf("english.wifi", "connect").text, QString("Connected MoskBench"));
    // The program plays one sound in a run. It was started again since the other language.
    QCOMPARE(ResultOf("chinese.voice", "play").text, QString("tinyplay /mnt/usb/ringtone.wav"));
    QStringList names{"touch"};
    for (const Page& each : allPages) {
        names.append(each.name);
    }
    for (const QString& name : qAsConst(names)) {
        for (const char* language : {"english", "chinese"}) {
            const QString file = QString("%1/%2-%3.png").arg(folder, name, language);
            QVERIFY2(ReportPage().contains(Board::ReadFile(file).toBase64()), qPrintable(file));
        }
    }
    // What the tour has changed is as before.
    QVERIFY(Board::ReadFile("/etc/mosk.ini").contains("english"));
    QVERIFY(m_default.contains(Board::ReadFile("/etc/frpc.ini").replace('\n', "\\n")));
    QCOMPARE(QProcess::execute("sh", {"-c", "ip link show wlan0 | grep -q 'state DOWN'"}), 0);
}

void TourTest::boardWithFaultsDoesNotPass()
{
    const QByteArray stick = "stick Kingston DataTraveler\n";
    const QByteArray ethernet = "link eth0 192.168.10.2 192.168.10.1\n";
    const QByteArray sound = "sound usb/<script>\033\x01&\"'.wav 1\n";
    QByteArray board = m_default;
    QVERIFY(board.contains(stick) && board.contains(ethernet));
    board.replace(stick, "stick A\nstick B\n").replace(ethernet, "");
    m_options = QStringList{"--page", "basic", "--page", "voice"};

    QCOMPARE(TakeTour(board + '\n' + sound, m_default), 1);

    QVERIFY2(m_lines.contains("basic | USB | Detected that there is(are) 2 USB flash drive "
                              "inserted! | WRONG, expected \"Detected that there is(are) 1 USB "
                              "flash drive inserted!\""),
             qPrintable(m_lines.join('\n')));
    QVERIFY(
        m_lines.contains("basic | SD card | Detected that there is(are) 1 SD card inserted! | ok"));
    QVERIFY(
        m_lines.contains("basic | Ethernet | Abnormal!, error | WRONG, expected \"Normal!, ok\""));
    QVERIFY(!m_lines.join("").contains(QChar(27)));

    const QList<Element> page = ElementsOf(folder + "/report.html");
    const QList<Element> tables = ElementsNamed("table", page);
    QVERIFY2(ElementsNamed("h1", page).value(0).text == "6 wrong",
             qPrintable(m_lines.filter(" | WRONG").join('\n')));
    QCOMPARE(tables.value(0)["class"], QString("wrong"));
    QVERIFY(tables.value(0).text.contains("2 USB flash drive"));
    QVERIFY(!tables.value(0).text.contains("1 SD card"));
    const Element usb = ResultOf("english.basic", "USB");
    QCOMPARE(usb.name, QString("failure"));
    QVERIFY2(usb["message"].contains("2 USB flash drive"), qPrintable(usb["message"]));
    // A file's name cannot become a part of the page.
    QVERIFY(ElementsNamed("script", page).isEmpty());
    QVERIFY(!ReportPage().contains("<script>"));
    QVERIFY(tables.value(0).text.contains("/mnt/usb/<script>␛␁&\"'.wav"));
    QVERIFY(ResultOf("english.voice", "scan")["message"].contains("<script>␛␁&\"'.wav"));
}

void TourTest::eachKindOfFaultIsWrong_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QStringList>("wrong");
    QTest::addColumn<QString>("shown");

    const auto add = [](const char* page, const char* fault, const char* board,
                        const char* expected, const QStringList& wrong, const char* shown = "") {
        QTest::addRow("%s: %s", page, fault) << QString(page) << QByteArray(board)
                                             << QByteArray(expected) << wrong << QString(shown);
    };
    add("home", "buttons are missing", "file /etc/qttestend x\n", "",
        {"markers", "switch to HMI", "test finished"});
    add("home", "other kernel", "", "version Linux 1 2 3 4 5 6 7 8\n", {"version"});
    add("basic", "no stick, no card", "mmc 0\n", "stick A\nmmc 0 1\n", {"SD card", "USB"});
    add("basic", "nobody answers", "link eth0 10.0.0.2 10.0.0.1\nsilent eth0 10.0.0.1\n",
        "link eth0 10.0.0.2 10.0.0.1\n", {"Ethernet"});
    add("basic", "somebody answers who should not",
        "link usb0 10.0.0.2 10.0.0.1\nhost dns.alidns.com 223.5.5.5\n", "", {"4G"});
    add("basic", "controller hears nothing", "port ttyS5 nothing\n", "port ttyS5 controller\n",
        {"buzzer is silent", "buzzer rings", "controller's time"});
    add("basic", "no controller", "", "port ttyS5 nothing\n", {"buzzer off", "buzzer on"});
    add("serial", "no answer, no port", "port ttyS0 nothing\n",
        "port ttyS0 loopback\nport ttyS1 echo\n", {"COM0 send", "COM1 open"});
    add("wifi", "wrong passphrase, no such network", "network Bench -50 12345678\n",
        "network Bench -50 87654321\nnetwork Annex -60 87654321\n", {"connect", "refresh", "scan"});
    add("wifi", "nobody answers", "network Bench -50 12345678\n",
        "network Bench -50 12345678 far 10.0.1.1\n", {"ping"});
    add("voice", "sound ends at once", "sound usb/a.wav 0\n", "sound usb/a.wav 3\n", {"play"});
    add("voice", "no sound", "", "sound usb/a.wav 3\n",
        {"choose in bodyWidget QComboBox", "play", "scan"});
    add("can", "nobody sends", "", "bus can0\n", {"receive"});
    add("database", "cannot be written", "file /var/log/sqlite.db/x x\n", "",
        {"create", "delete", "insert", "query"});
    add("production", "lost its rootfs", "port ttyS2 log no-rootfs\n", "port ttyS2 log good\n",
        {"burnt"});
    add("production", "no port", "", "port ttyS2 nothing\n", {"burnt"});
    add("remote-access", "other server",
        "file /etc/frpc.ini "
        "[common]\\nserver_addr=a\\nserver_port=1\\n[vnc]\\nremote_port=6000\\n\n"
        "file /etc/vnclinuxfb.conf password=a\\n\n",
        "file /etc/frpc.ini "
        "[common]\\nserver_addr=b\\nserver_port=2\\n[vnc]\\nremote_port=6003\\n\n"
        "file /etc/vnclinuxfb.conf password=b\\n\n",
        {"password", "remote port", "server", "server port"});
    add("camera", "black", "camera video0 #000000 Front\n", "camera video0 any Front\n", {"Front"},
        "#000000");
    add("camera", "other picture", "camera video0 #c06020 Front\n", "camera video0 #2060c0 Front\n",
        {"Front"}, "#c06020");
    add("camera", "missing", "camera video0 #c06020 Rear\n", "camera video0 #c06020 Front\n",
        {"Front"}, "not in the list");
}

// Whoever judges boards must be seen to say no, for each kind of check and in every report.
void TourTest::eachKindOfFaultIsWrong()
{
    QFETCH(QString, page);
    QFETCH(QByteArray, board);
    QFETCH(QByteArray, expected);
    QFETCH(QStringList, wrong);
    QFETCH(QString, shown);
    m_options = QStringList{"--page", page, "--patience", "2"};

    QCOMPARE(TakeTour("language english\n" + board, "language english\n" + expected), 1);

    const QStringList lines = m_lines.filter(" | WRONG, expected ");
    QStringList names;
    for (const QString& line : lines) {
        QCOMPARE(line.section(" | ", 0, 0), page);
        QVERIFY2(shown.isEmpty() || line.section(" | ", 2, 2) == shown, qPrintable(line));
        names.append(line.section(" | ", 1, 1));
    }
    names.removeDuplicates();
    names.sort();
    QCOMPARE(names, wrong);
    const QList<Element> html = ElementsOf(folder + "/report.html");
    const QList<Element> xml = ElementsOf(folder + "/report.xml");
    QCOMPARE(ElementsNamed("h1", html).value(0).text, QString("%1 wrong").arg(lines.size()));
    QCOMPARE(ElementsNamed("failure", xml).size(), lines.size());
    QCOMPARE(ElementsNamed("testsuite", xml).value(0)["failures"].toInt(), lines.size());
    for (const QString& name : qAsConst(wrong)) {
        QCOMPARE(ResultOf("english." + page, name).name, QString("failure"));
    }
}

void TourTest::verdictReachesTheShell()
{
    for (const int verdict : {0, 1}) {
        Board::PutTool("tour", "exit " + QByteArray::number(verdict));
        QCOMPARE(QProcess::execute(m_home + "/with-tour", {folder, "true"}), verdict);
    }
    Board::RemoveTools();
}

void TourTest::whatIsNotThereIsLeftOutOrFails()
{
    const QByteArray board = "# A plain board\n"
                             "language chinese\n"
                             "mmc 0\n"
                             "link eth0 10.0.0.2 10.0.0.1\n"
                             "port ttyS4 nothing\n"
                             "network Bench - 12345678 far 10.0.1.1\n";
    const int status = TakeTour(board, board);

    QVERIFY2(status == 0, qPrintable(m_lines.join('\n')));
    QCOMPARE(ResultOf("english.camera", "picture")["message"], QString("the board has no camera"));
    QCOMPARE(ResultOf("english.camera", "picture").name, QString("skipped"));
    const QList<Element> xml = ElementsOf(folder + "/report.xml");
    const Element suite = ElementsNamed("testsuite", xml).value(0);
    QCOMPARE(suite["skipped"].toInt(), ElementsNamed("skipped", xml).size());
    QCOMPARE(suite["tests"].toInt(), ElementsNamed("testcase", xml).size());
    QCOMPARE(ResultOf("english.basic", "4G").text,
             QString("Abnormal!, error (nothing is connected to usb0)"));
    QVERIFY(m_lines.contains("basic | buzzer | Failed!, error | ok"));
    QVERIFY(m_lines.contains("basic | Ethernet | Normal!, ok | ok"));
    QVERIFY(m_lines.contains("wifi | scan | Bench | ok"));
    QVERIFY(m_lines.contains("wifi | ping | Succeeded!, ok | ok"));
    QVERIFY(ReportPage().contains("A plain board"));
    // It began in Chinese.
    QVERIFY(Board::ReadFile("/etc/mosk.ini").contains("chinese"));
}

void TourTest::stoppedTourIsIncomplete()
{
    // Set changes the frp client's file for a while.
    m_options = QStringList{"--page", "home", "--page", "remote-access"};
    StartTour(m_default, m_default);
    QVERIFY(WaitForLine("remote-access | set 6001"));
    QVERIFY(Board::ReadFile("/etc/frpc.ini").contains("6001"));
    kill(static_cast<pid_t>(m_tour->processId()), SIGTERM);

    QVERIFY(m_tour->waitForFinished(60000));
    QCOMPARE(m_tour->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_tour->exitCode(), 1);
    QVERIFY(ReportPage().contains("Incomplete: the tour was stopped"));
    QCOMPARE(ResultOf("english.home", "menu").name, QString("system-out"));
    QCOMPARE(ElementsNamed("error", ElementsOf(folder + "/report.xml")).size(), 1);
    QVERIFY(Board::ReadFile("/etc/frpc.ini").contains("6000"));
}

void TourTest::tourOfAProgramThatDiesIsIncomplete()
{
    StartTour(m_default, m_default);
    QVERIFY(WaitForLine("basic | USB"));
    QProcess::execute("killall", {"-q", "-KILL", "MoskTest"});

    QVERIFY(m_tour->waitForFinished(60000));
    QCOMPARE(m_tour->exitCode(), 1);
    QVERIFY(ReportPage().contains("Incomplete: the program has gone"));
    QCOMPARE(ResultOf("tour", "complete").name, QString("error"));
}

void TourTest::tourWithoutAProgramIsIncomplete_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("reason");
    QTest::newRow("stopped") << SIGINT << "the tour was stopped";
    // Even a tour that is killed has told by then that it has come to no end.
    QTest::newRow("killed") << SIGKILL << "the tour has not come to its end";
}

void TourTest::tourWithoutAProgramIsIncomplete()
{
    QFETCH(int, signal);
    QFETCH(QString, reason);
    Board::WriteFile(described, m_default);
    m_tour->start(Built("simulated-board/tour"), {"--board", described, "--report", folder});

    QVERIFY(QTest::qWaitFor([] { return QFile::exists(folder + "/report.xml"); }, 60000));
    kill(static_cast<pid_t>(m_tour->processId()), signal);
    QVERIFY(m_tour->waitForFinished());
    QVERIFY2(ReportPage().contains("Incomplete: " + reason), qPrintable(ReportPage()));
    QCOMPARE(ResultOf("tour", "complete").name, QString("error"));
}

void TourTest::wrongDescriptionIsRefused()
{
    Board::WriteFile(described, "mmc 0\nmoon full\n");
    m_tour->setProcessChannelMode(QProcess::MergedChannels);
    m_tour->start(Built("simulated-board/tour"), {"--board", described, "--report", folder});

    QVERIFY(m_tour->waitForFinished());
    QCOMPARE(m_tour->exitCode(), 2);
    QCOMPARE(m_tour->readAll(),
             QByteArray("tour: /tmp/bench.board:2: \"moon\": no such keyword\n"));
    QVERIFY(!QFile::exists(folder));
}

void TourTest::unwritableReportIsRefused()
{
    Board::WriteFile(described, m_default);
    Board::WriteFile("/tmp/file", {});
    m_tour->start(Built("simulated-board/tour"), {"--board", described, "--report", "/tmp/file"});

    QVERIFY(m_tour->waitForFinished());
    QCOMPARE(m_tour->exitCode(), 1);
    QCOMPARE(m_tour->readAllStandardOutput(), QByteArray("cannot make the folder /tmp/file\n"));
}

void TourTest::processesEndWhileTheyAreListed()
{
    QProcess shell;
    shell.start("sh", {"-c", "while :; do /bin/true; done"});
    QVERIFY(shell.waitForStarted());

    for (int i = 0; i < 2000; ++i) {
        QVERIFY(ProcessesOf({"nobody"}).isEmpty());
    }
    shell.kill();
    shell.waitForFinished();
}

QTEST_GUILESS_MAIN(TourTest)
#include "TourTest.moc"
