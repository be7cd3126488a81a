#include "pages/VoiceTester.h"
#include "protocols/Player.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>

#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace
{

const char* const heard = "/tmp/heard";

/// Replaces the player, and records its arguments, each ended by a NUL.
const char* const listener =
    "printf '%s\\0' \"$@\" >/tmp/heard.new; exec mv /tmp/heard.new /tmp/heard";

QStringList Items(QWidget* page)
{
    auto* files = InGrid<QComboBox>(page, 0, 1);
    QStringList items;
    for (int i = 0; i < files->count(); ++i) {
        items += files->itemText(i);
    }
    return items;
}

/// Creates a file. The bytes of its name need not be valid text.
void PutFile(const QByteArray& path)
{
    const int file = open(path.constData(), O_WRONLY | O_CREAT, 0644);
    QVERIFY2(file >= 0, path.toPercentEncoding().constData());
    close(file);
}

bool IsPlaying()
{
    return QProcess::execute("killall", {"-q", "-0", "tinyplay"}) == 0;
}

/// Runs the command as the page does and returns what the player heard.
QByteArray HeardFrom(const QByteArray& command)
{
    QFile::remove(heard);
    if (std::system(command.constData()) == -1 ||
        !QTest::qWaitFor([] { return QFile::exists(heard); })) {
        return "nothing";
    }
    return Board::ReadFile(heard);
}

} // namespace

class VoiceTesterTest : public PageFixture<VoiceTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void layoutHasTheFilesAboveThePlayer_data();
    void layoutHasTheFilesAboveThePlayer();

    void scanListsTheWaveFilesAsFindPrintsThem();
    void scanLeavesThePatternToFind();
    void scanTwiceListsOnce();
    void scanWithoutFilesListsNothing();
    void scanWithoutFindListsNothing();
    void scanWithoutTheFolderListsNothing();
    void scanWaitsForFindToEnd();
    void scanGivesNoSlowFindUp();
    void scanPassesOverWhatFindComplains();
    void scanListsFiveThousandFiles();
    void scanListsNamesOfAnyLanguage();
    void listShowsAFileOnOneLine();

    void commandOfAnOrdinaryNameIsPlain_data();
    void commandOfAnOrdinaryNameIsPlain();
    void commandIsCutToItsBuffer_data();
    void commandIsCutToItsBuffer();
    void nameReachesThePlayerWhole_data();
    void nameReachesThePlayerWhole();
    void nameThatIsCutStaysAName();
    void filesOfHostileNamesRunNothing();

    void playWithoutFilesDoesNothing();
    void timerIsNeverStarted();
    void onlyTheFirstPlayOfARunIsHeard();

private:
    void Scan() { QTest::mouseClick(InGrid<QPushButton>(m_page.get(), 0, 2), Qt::LeftButton); }
};

void VoiceTesterTest::init()
{
    Board::Become("language english\n");
    Board::ForgetCalls();
    Speak("english");
    Rebuild();
}

void VoiceTesterTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
}

void VoiceTesterTest::layoutHasTheFilesAboveThePlayer_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("English") << "english" << QStringList({"Name:", "Scan", "Play:", "Play"});
    QTest::newRow("Chinese") << "chinese" << QStringList({"名  称：", "扫描", "播  放:", "播放"});
}

void VoiceTesterTest::layoutHasTheFilesAboveThePlayer()
{
    QFETCH(QString, language);
    QFETCH(QStringList, texts);
    Speak(language);
    Rebuild();

    QCOMPARE(m_page->layout()->contentsMargins(), QMargins(30, 20, 30, 20));
    QCOMPARE(qobject_cast<QGridLayout*>(m_page->layout())->verticalSpacing(), 20);
    QCOMPARE(qobject_cast<QGridLayout*>(m_page->layout())->horizontalSpacing(), 20);
    for (int row = 0; row < 2; ++row) {
        auto* label = InGrid<QLabel>(m_page.get(), row, 0);
        auto* button = InGrid<QPushButton>(m_page.get(), row, 2);
        QVERIFY(label != nullptr && button != nullptr);
        QCOMPARE(label->text(), texts[2 * row]);
        QCOMPARE(label->size(), QSize(100, 30));
        QCOMPARE(button->text(), texts[2 * row + 1]);
        QCOMPARE(button->size(), QSize(100, 30));
    }
    QCOMPARE(InGrid<QPushButton>(m_page.get(), 1, 2)->objectName(), QString("btnPlay"));
    QCOMPARE(Items(m_page.get()), QStringList());
    QVERIFY(InGrid<QWidget>(m_page.get(), 2, 2) != nullptr);
    QCOMPARE(InGrid<QLabel>(m_page.get(), 0, 0)->geometry().topLeft(), QPoint(30, 20));
}

void VoiceTesterTest::scanListsTheWaveFilesAsFindPrintsThem()
{
    Board::Become("sound top.wav 1\nsound usb/deep/er/song.wav 1\nsound sd/a.wav 1\n"
                  "file /mnt/usb/song.mp3 x\nfile /mnt/usb/LOUD.WAV x\nfile /mnt/usb/wav x\n");
    QProcess find;
    find.start("find", {"/mnt/", "-name", "*.wav"});
    QVERIFY(find.waitForFinished());
    QStringList printed = QString::fromUtf8(find.readAll()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(printed.size(), 3);

    Scan();

    // Each item keeps its line end.
    QCOMPARE(Items(m_page.get()), printed.replaceInStrings(QRegularExpression("$"), "\n"));
}

void VoiceTesterTest::scanLeavesThePatternToFind()
{
    Board::PutTool("find", ". \"$BOARD_HOME/record.sh\"");

    Scan();

    QCOMPARE(Board::Calls(), QStringList("find /mnt/ -name \\*.wav"));
}

void VoiceTesterTest::scanTwiceListsOnce()
{
    Board::Become("sound a.wav 1\nsound b.wav 1\n");
    Scan();
    QCOMPARE(Items(m_page.get()).size(), 2);

    QVERIFY(QFile::remove("/mnt/a.wav"));
    Scan();

    QCOMPARE(Items(m_page.get()), QStringList("/mnt/b.wav\n"));
}

void VoiceTesterTest::scanWithoutFilesListsNothing()
{
    Scan();

    QCOMPARE(Items(m_page.get()), QStringList());
}

void VoiceTesterTest::scanWithoutFindListsNothing()
{
    Board::Become("sound a.wav 1\n");
    Scan();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");

    Scan();
    qputenv("PATH", path);

    QCOMPARE(Items(m_page.get()), QStringList());
}

void VoiceTesterTest::scanWithoutTheFolderListsNothing()
{
    QCOMPARE(QProcess::execute("umount", {"/mnt"}), 0);
    QVERIFY(QDir().rmdir("/mnt"));

    Scan();
    QVERIFY(QDir().mkdir("/mnt"));
    QCOMPARE(QProcess::execute("mount", {"-t", "tmpfs", "tmpfs", "/mnt"}), 0);

    QCOMPARE(Items(m_page.get()), QStringList());
}

void VoiceTesterTest::scanWaitsForFindToEnd()
{
    Board::PutTool("find", "printf /mnt/a; sleep 0.1; printf '.wav\\n/mnt/b.wav\\n'; sleep 1.1\n"
                           "printf '/mnt/c.wav\\n/mnt/unfinished'; exec >&-; sleep 0.3");

    Scan();

    QCOMPARE(Items(m_page.get()), QStringList({"/mnt/a.wav\n", "/mnt/b.wav\n", "/mnt/c.wav\n"}));
}

// A card with very many files takes long. Half a minute is what other tools get.
void VoiceTesterTest::scanGivesNoSlowFindUp()
{
    Board::PutTool("find", "sleep 31; echo /mnt/late.wav");

    Scan();

    QCOMPARE(InGrid<QComboBox>(m_page.get(), 0, 1)->count(), 1);
}

void VoiceTesterTest::scanPassesOverWhatFindComplains()
{
    Board::PutTool("find", "head -c 1000000 /dev/zero >&2; echo /mnt/a.wav; exit 1");

    Scan();

    QCOMPARE(Items(m_page.get()), QStringList("/mnt/a.wav\n"));
}

void VoiceTesterTest::scanListsFiveThousandFiles()
{
    for (int folder = 0; folder < 50; ++folder) {
        const QByteArray path = "/mnt/" + QByteArray::number(folder);
        QVERIFY(QDir().mkdir(path));
        for (int file = 0; file < 100; ++file) {
            PutFile(path + "/sound" + QByteArray::number(file) + ".wav");
        }
    }

    Scan();

    QCOMPARE(Items(m_page.get()).size(), 5000);
    QStringList items = Items(m_page.get());
    QCOMPARE(items.removeDuplicates(), 0);
}

void VoiceTesterTest::scanListsNamesOfAnyLanguage()
{
    PutFile("/mnt/你好.wav");
    Scan();
    QCOMPARE(Items(m_page.get()), QStringList("/mnt/你好.wav\n"));

    QVERIFY(QFile::remove("/mnt/你好.wav"));
    PutFile("/mnt/\xff\xfe.wav");
    Scan();
    QCOMPARE(Items(m_page.get()), QStringList("/mnt/\uFFFD\uFFFD.wav\n"));
}

void VoiceTesterTest::listShowsAFileOnOneLine()
{
    Board::Become("sound song.wav 1\n");
    Scan();
    auto* files = InGrid<QComboBox>(m_page.get(), 0, 1);
    const QImage shown = files->grab().toImage();
    const int height = files->view()->sizeHintForRow(0);

    // The same without the line end, which the page's item keeps.
    files->clear();
    files->addItem("/mnt/song.wav");

    QCOMPARE(shown, files->grab().toImage());
    QCOMPARE(height, files->view()->sizeHintForRow(0));
}

void VoiceTesterTest::commandOfAnOrdinaryNameIsPlain_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QByteArray>("command");

    QTest::newRow("with its line end") << "/mnt/usb/a.wav\n"
                                       << QByteArray("tinyplay /mnt/usb/a.wav &");
    QTest::newRow("without") << "/mnt/usb/a.wav" << QByteArray("tinyplay /mnt/usb/a.wav &");
    QTest::newRow("all that is ordinary") << "/mnt/AZaz09/._-+,:@%.wav\n"
                                          << QByteArray("tinyplay /mnt/AZaz09/._-+,:@%.wav &");
    QTest::newRow("conversions of printf") << "/mnt/%s%n%d.wav\n"
                                           << QByteArray("tinyplay /mnt/%s%n%d.wav &");
    QTest::newRow("a blank") << "/mnt/a b.wav\n" << QByteArray("tinyplay '/mnt/a b.wav' &");
    QTest::newRow("a quote") << "/mnt/it's.wav\n" << QByteArray("tinyplay '/mnt/it'\\''s.wav' &");
}

void VoiceTesterTest::commandOfAnOrdinaryNameIsPlain()
{
    QFETCH(QString, item);
    QFETCH(QByteArray, command);

    QCOMPARE(PlayCommand(item), command);
}

void VoiceTesterTest::commandIsCutToItsBuffer_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("command");

    const QByteArray all(300, 'a');
    const QByteArray quote = "'\\''";
    QTest::newRow("88 bytes fit") << all.left(88) << "tinyplay " + all.left(88) + " &";
    QTest::newRow("89 bytes") << all.left(89) << "tinyplay " + all.left(89) + " ";
    QTest::newRow("90 bytes") << all.left(90) << "tinyplay " + all.left(90);
    QTest::newRow("91 bytes") << all.left(91) << "tinyplay " + all.left(90);
    QTest::newRow("300 bytes") << all << "tinyplay " + all.left(90);
    QTest::newRow("86 bytes in quotes fit")
        << ' ' + all.left(85) << "tinyplay ' " + all.left(85) + "' &";
    QTest::newRow("87 bytes in quotes")
        << ' ' + all.left(86) << "tinyplay ' " + all.left(85) + "' &";
    QTest::newRow("300 bytes in quotes") << ' ' + all << "tinyplay ' " + all.left(85) + "' &";
    QTest::newRow("a quote that just fits")
        << all.left(82) + "'" << "tinyplay '" + all.left(82) + quote + "' &";
    QTest::newRow("a quote that does not")
        << all.left(83) + "'" << "tinyplay '" + all.left(83) + "' &";
    QTest::newRow("300 quotes") << QByteArray(300, '\'')
                                << "tinyplay '" + quote.repeated(21) + "' &";
}

void VoiceTesterTest::commandIsCutToItsBuffer()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, command);

    QCOMPARE(PlayCommand(name + '\n'), command);
    QVERIFY(command.size() <= 99);
}

void VoiceTesterTest::nameReachesThePlayerWhole_data()
{
    QTest::addColumn<QString>("name");

    const char* const names[] = {"/mnt/plain.wav",
                                 "/mnt/a b  c.wav",
                                 "/mnt/it's.wav",
                                 "/mnt/'quoted'.wav",
                                 "/mnt/\"quoted\".wav",
                                 "/mnt/';touch /tmp/ran;'.wav",
                                 "/mnt/a;touch /tmp/ran;.wav",
                                 "/mnt/$(touch /tmp/ran).wav",
                                 "/mnt/`touch /tmp/ran`.wav",
                                 "/mnt/a&touch /tmp/ran&.wav",
                                 "/mnt/a|touch /tmp/ran|.wav",
                                 "/mnt/a>/tmp/ran",
                                 "/mnt/$HOME.wav",
                                 "/mnt/*.wav",
                                 "/mnt/[a-z]?.wav",
                                 "/mnt/{a,b}.wav",
                                 "/mnt/a#b.wav",
                                 "#.wav",
                                 "~/a.wav",
                                 "a=b.wav",
                                 "!!.wav",
                                 "(a).wav",
                                 "/mnt/back\\slash\\",
                                 "/mnt/line\nend\n touch /tmp/ran.wav",
                                 "/mnt/tab\tcr\r\x01\x1b\x7f.wav",
                                 "/mnt/你好 ä.wav",
                                 "/mnt/\uFFFD.wav",
                                 "-rf.wav",
                                 "' '"};
    for (const char* const name : names) {
        QTest::newRow(QByteArray(name).toPercentEncoding(" '\"/").constData()) << QString(name);
    }
}

void VoiceTesterTest::nameReachesThePlayerWhole()
{
    QFETCH(QString, name);
    Board::PutTool("tinyplay", listener);

    QCOMPARE(HeardFrom(PlayCommand(name + '\n')), name.toUtf8() + '\0');
    QVERIFY(!QFile::exists("/tmp/ran"));
}

void VoiceTesterTest::nameThatIsCutStaysAName()
{
    Board::PutTool("tinyplay", listener);
    const QByteArray pieces[] = {"'", "a'", "';touch /tmp/ran;'", "$(touch /tmp/ran)", "\\'", "你"};

    for (const QByteArray& piece : pieces) {
        for (int extra = 0; extra < 12; ++extra) {
            const QByteArray name =
                "/mnt/" + QByteArray(extra, 'x') + piece.repeated(300 / piece.size());
            const QByteArray command = PlayCommand(name + '\n');
            QVERIFY(command.size() <= 99);

            const QByteArray given = HeardFrom(command);
            QCOMPARE(given.count('\0'), 1);
            QVERIFY2(name.startsWith(given.left(given.size() - 1)), command.constData());
            QVERIFY(given.size() > 20);
        }
    }
    QVERIFY(!QFile::exists("/tmp/ran"));
}

void VoiceTesterTest::filesOfHostileNamesRunNothing()
{
    QVERIFY(QDir::setCurrent("/tmp"));
    const QByteArray names[] = {
        "it's.wav",         "a b.wav",          "\"q\".wav",
        "$(touch ran).wav", "`touch ran`.wav",  "a;touch ran;b.wav",
        "-rf.wav",          "a&touch ran&.wav", QByteArray(240, 'l') + " .wav"};
    for (const QByteArray& name : names) {
        PutFile("/mnt/" + name);
    }
    Board::PutTool("tinyplay", listener);
    Scan();
    QCOMPARE(Items(m_page.get()).size(), 9);
    for (const QString& item : Items(m_page.get())) {
        const QByteArray path = item.toUtf8().trimmed();
        QCOMPARE(HeardFrom(PlayCommand(item)), path.left(86) + '\0');
    }

    // A line end splits a name in two, and bytes that are no text are lost: no such file is there,
    // and that is all.
    PutFile("/mnt/two\ntouch ran;lines.wav");
    PutFile("/mnt/\n;touch ran;.wav");
    PutFile("/mnt/\xff$(touch ran).wav");
    Scan();
    QCOMPARE(Items(m_page.get()).size(), 14);
    for (const QString& item : Items(m_page.get())) {
        QVERIFY(HeardFrom(PlayCommand(item)).count('\0') == 1);
    }
    QVERIFY(!QFile::exists("/tmp/ran"));
}

void VoiceTesterTest::playWithoutFilesDoesNothing()
{
    Press(m_page.get(), "btnPlay");
    Scan();
    Press(m_page.get(), "btnPlay");

    QVERIFY(!IsPlaying());
    QCOMPARE(Board::Calls(), QStringList());
}

void VoiceTesterTest::timerIsNeverStarted()
{
    auto* timer = m_page->findChild<QTimer*>();
    QVERIFY(timer != nullptr && !timer->isActive());

    // A page with a microphone would start it.
    timer->start(0);
    QTRY_VERIFY(!timer->isActive());
    QVERIFY(QMetaObject::invokeMethod(m_page.get(), "OnTimeout"));
}

void VoiceTesterTest::onlyTheFirstPlayOfARunIsHeard()
{
    Board::Become("sound usb/tune.wav 60\n");
    const QString tune = "/mnt/usb/it's a tune.wav";
    QVERIFY(QFile::rename("/mnt/usb/tune.wav", tune));
    Scan();

    // Pressing returns although the sound goes on for a minute.
    Press(m_page.get(), "btnPlay");
    QTRY_VERIFY(QFile::exists("/run/board/received/tinyplay"));
    QTRY_COMPARE(Board::ReadFile("/run/board/received/tinyplay"),
                 "playing " + tune.toUtf8() + '\n');
    QVERIFY(IsPlaying());
    Press(m_page.get(), "btnPlay");
    QCOMPARE(Board::Calls().size(), 1);

    // Leaving the page stops the sound.
    m_page.reset();
    QTRY_VERIFY(!IsPlaying());

    // And no other plays until the program is started again.
    Rebuild();
    Scan();
    QCOMPARE(Items(m_page.get()), QStringList(tune + '\n'));
    Press(m_page.get(), "btnPlay");
    QVERIFY(!IsPlaying());
    QCOMPARE(Board::Calls().size(), 1);
}

QTEST_MAIN(VoiceTesterTest)
#include "VoiceTesterTest.moc"
