#include "pages/VoiceTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QProcess>
#include <QPushButton>

#include <fcntl.h>
#include <unistd.h>

namespace
{

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

} // namespace

class VoiceTesterTest : public PageFixture<VoiceTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

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
