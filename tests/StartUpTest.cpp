#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "tests/Program.h"
#include "tests/VncViewer.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

#include <cstdlib>

namespace
{

const QRgb headerBlue = qRgb(96, 168, 239);
const QRgb bodyGrey = qRgb(240, 240, 240);

} // namespace

/// Starts the real program on boards, and from builds, that lack something.
class StartUpTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void programStartsWithoutAResource_data();
    void programStartsWithoutAResource();
    void languageIsTheBoards_data();
    void languageIsTheBoards();
    void languageCanBeChosenWithoutASettingsFile_data();
    void languageCanBeChosenWithoutASettingsFile();
    void windowCoversTheScreen_data();
    void windowCoversTheScreen();
    void logWithoutAReaderIsNoMatter();
    void keysComeUpForAField();
    void librariesOfOtherPagesWaitUntilTheyAreNeeded();
    void programWithoutItsCameraLibraryHasNoCameras();

private:
    void Start(const QString& program);
    QByteArray Mapped() const;

    QProcess m_program;
    Operator m_operator;
};

void StartUpTest::Start(const QString& program)
{
    PutOperatorAt(m_program);
    LookForNoLeaks(m_program);
    m_program.start(QDir(Built(QString())).filePath(program), QStringList());
    QVERIFY(m_program.waitForStarted());
    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
}

/// What the program has in its memory, the files by name.
QByteArray StartUpTest::Mapped() const
{
    return Board::ReadFile(QString("/proc/%1/maps").arg(m_program.processId()));
}

void StartUpTest::cleanup()
{
    QVERIFY2(EndInOrder(m_program), "the program has not ended in order");
}

void StartUpTest::programStartsWithoutAResource_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<bool>("styled");
    QTest::addColumn<QString>("home");

    QTest::newRow("style sheet") << "style" << false << "Home";
    QTest::newRow("logo") << "logo" << true << "Home";
    QTest::newRow("arrow") << "arrow_up" << true << "Home";
    QTest::newRow("English") << "english" << true << QString::fromUtf8("首页");
    QTest::newRow("Chinese") << "chinese" << true << "Home";
    QTest::newRow("everything") << "everything" << false << "Label_1000100";
}

void StartUpTest::programStartsWithoutAResource()
{
    QFETCH(QString, missing);
    QFETCH(bool, styled);
    QFETCH(QString, home);
    Board::Become("language english\n");

    Start("tests/MoskTest-without-" + missing);

    QCOMPARE(m_operator.Items("menuTab").value(0), home);
    QVERIFY(m_operator.Count("btnReboot") == 1);
    const QImage screen = QImage::fromData(m_operator.Screenshot());
    QCOMPARE(screen.pixel(screen.width() - 3, 25) == headerBlue, styled);

    // The rest of the program is there too.
    QVERIFY(m_operator.ClickTab("menuTab", 1));
    QVERIFY(m_operator.Click("btnUsbTest"));
    QVERIFY(m_operator.Text("bodyWidget QLineEdit[0]").contains(" 0 "));
}

void StartUpTest::languageIsTheBoards_data()
{
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<QString>("home");

    const QString chinese = QString::fromUtf8("首页");
    QTest::newRow("no settings file") << QByteArray("") << chinese;
    QTest::newRow("English") << QByteArray("language english\n") << "Home";
    QTest::newRow("Chinese") << QByteArray("language chinese\n") << chinese;
    QTest::newRow("unknown") << QByteArray("file /etc/mosk.ini [sys]\\nLanguage=french\n")
                             << chinese;
    QTest::newRow("outside its group")
        << QByteArray("file /etc/mosk.ini Language=english\\n") << chinese;
}

void StartUpTest::languageIsTheBoards()
{
    QFETCH(QByteArray, board);
    QFETCH(QString, home);
    Board::Become(board);

    Start("MoskTest");

    QCOMPARE(m_operator.Items("menuTab").value(0), home);
}

void StartUpTest::languageCanBeChosenWithoutASettingsFile_data()
{
    QTest::addColumn<QByteArray>("maker");

    QTest::newRow("pipe") << QByteArray("mkfifo /etc/mosk.ini");
    QTest::newRow("folder") << QByteArray("mkdir /etc/mosk.ini");
}

void StartUpTest::languageCanBeChosenWithoutASettingsFile()
{
    QFETCH(QByteArray, maker);
    Board::Become("");
    QCOMPARE(std::system(maker.constData()), 0);

    Start("MoskTest");

    QCOMPARE(m_operator.Items("menuTab").value(0), QString::fromUtf8("首页"));
    QVERIFY(m_operator.Choose("bodyWidget QComboBox", "English"));
    QTRY_COMPARE(m_operator.Items("menuTab").value(0), QString("Home"));
}

void StartUpTest::windowCoversTheScreen_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QSize>("screen");

    QTest::newRow("large") << QByteArray("english") << QSize(1024, 600);
    QTest::newRow("small") << QByteArray("english") << QSize(800, 480);
    QTest::newRow("small, Chinese") << QByteArray("chinese") << QSize(800, 480);
}

void StartUpTest::windowCoversTheScreen()
{
    QFETCH(QByteArray, language);
    QFETCH(QSize, screen);
    Board::Become("language " + language + '\n');
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM",
            QString("vnc:size=%1x%2").arg(screen.width()).arg(screen.height()).toLatin1());
    Start("MoskTest");
    qputenv("QT_QPA_PLATFORM", platform);

    // Nothing on any page makes the window larger than the screen.
    for (const Page& page : allPages) {
        QVERIFY(m_operator.OpenPage(page.name) && m_operator.Idle());
        for (const auto& [property, value] : {std::pair("x", 0),
                                              {"y", 0},
                                              {"width", screen.width()},
                                              {"height", screen.height()}}) {
            QVERIFY2(m_operator.Property("MoskTester", property).toInt() == value, page.name);
        }
    }
    QCOMPARE(QImage::fromData(m_operator.Screenshot()).size(), screen);
    // All tabs are there without the menu's scroll buttons.
    const QJsonArray scrollButtons = m_operator.List("menuTab QToolButton");
    for (const QJsonValue& button : scrollButtons) {
        QVERIFY(!button["visible"].toBool());
    }
}

void StartUpTest::logWithoutAReaderIsNoMatter()
{
    Board::Become("language english\n");
    PutOperatorAt(m_program);
    QProcessEnvironment environment = m_program.processEnvironment();
    // The program has much to say before it meets its operator.
    environment.insert("QT_DEBUG_PLUGINS", "1");
    m_program.setProcessEnvironment(environment);
    // The reader of its log has gone before it starts.
    m_program.start("bash", {"-c", "exec 2> >(exit); wait $!; exec \"$0\"", Built("MoskTest")});
    QVERIFY(m_program.waitForStarted());

    QVERIFY2(m_operator.Connect(), qPrintable(m_operator.Error()));
    QVERIFY(m_operator.ClickTab("menuTab", 1));
    QVERIFY(m_operator.Click("btnBeepTest"));
    QCOMPARE(m_operator.Text("bodyWidget QLineEdit[2]"), QString("Failed!"));
}

// Qt chooses the input method when the application is created, so only a real start shows it.
void StartUpTest::keysComeUpForAField()
{
    Board::Become("language english\n");
    Start("MoskTest");
    VncViewer viewer;
    QVERIFY2(viewer.Connect(), qPrintable(viewer.Error()));
    QVERIFY(m_operator.ClickTab("menuTab", 1));
    const QJsonObject field = m_operator.List("bodyWidget QLineEdit[5]").first().toObject();
    const auto areKeysShown = [](const QImage& picture) {
        const QRect keys(0, 320, 1024, 280);
        return picture.pixel(keys.topLeft()) != bodyGrey &&
               picture.pixel(keys.bottomRight()) != bodyGrey;
    };
    QVERIFY(!areKeysShown(viewer.Picture()));

    viewer.Tap({field["x"].toInt() + 20, field["y"].toInt() + 10});

    QVERIFY2(viewer.WaitForPicture(areKeysShown), qPrintable(viewer.Error()));
}

void StartUpTest::librariesOfOtherPagesWaitUntilTheyAreNeeded()
{
    Board::Become("language english\ncamera video0 #2060c0 Front camera\n");

    Start("MoskTest");

    const QByteArray atFirst = Mapped();
    QVERIFY(atFirst.contains("libQt5Widgets"));
    for (const char* library :
         {"plugins/imageformats", "libQt5Svg", "libQt5Multimedia", "libpulse", "libsndfile"}) {
        QVERIFY2(!atFirst.contains(library), library);
    }
    QVERIFY(m_operator.OpenPage("camera"));
    QCOMPARE(m_operator.Items("bodyWidget QComboBox[0]"), QStringList("Front camera"));
    QVERIFY(Mapped().contains("libQt5Multimedia"));
}

void StartUpTest::programWithoutItsCameraLibraryHasNoCameras()
{
    Board::Become("language english\ncamera video0 #2060c0 Front camera\n");
    const QString alone = "/root/MoskTest";
    QVERIFY(QFile::copy(Built("MoskTest"), alone));

    Start(alone);

    QVERIFY(m_operator.OpenPage("camera"));
    QCOMPARE(m_operator.Items("bodyWidget QComboBox[0]"), QStringList());
    QCOMPARE(QImage::fromData(m_operator.Screenshot()).pixel(512, 300), qRgb(0, 0, 0));
    QVERIFY(m_operator.Click("btnopen"));
    QVERIFY(m_operator.Click("btnclose"));
    QVERIFY(m_operator.OpenPage("camera"));
    QCOMPARE(m_operator.Count("btnopen"), 1);
}

QTEST_GUILESS_MAIN(StartUpTest)
#include "StartUpTest.moc"
