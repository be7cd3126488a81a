#include "frame/Look.h"
#include "pages/VncTester.h"
#include "pages/WifiTester.h"
#include "simulated-board/Board.h"
#include "tests/Operate.h"

#include <QComboBox>
#include <QProcess>
#include <QPushButton>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Sends what this process and its commands print to a file while it exists.
class Log
{
public:
    Log() : m_file(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600))
    {
        std::fflush(nullptr);
        dup2(m_file, STDOUT_FILENO);
        dup2(m_file, STDERR_FILENO);
    }
    ~Log()
    {
        std::fflush(nullptr);
        dup2(m_out, STDOUT_FILENO);
        dup2(m_error, STDERR_FILENO);
        for (const int descriptor : {m_file, m_out, m_error}) {
            close(descriptor);
        }
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    static QByteArray Text() { return Board::ReadFile(path); }

private:
    static constexpr const char* path = "/tmp/log";
    const int m_out = dup(STDOUT_FILENO);
    const int m_error = dup(STDERR_FILENO);
    const int m_file;
};

/// The files of the board, its own records left out, that hold a text. What is mounted there is not
/// the board's: the sources may lie in /root.
QStringList FilesWith(const QString& text)
{
    QProcess find;
    find.start("find", {"/tmp", "/var", "/etc", "/root", "-xdev", "-type", "f", "-exec", "grep",
                        "-lF", text, "{}", "+"});
    find.waitForFinished();
    return QString::fromLocal8Bit(find.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

} // namespace

/// What the checks that know a secret print and leave behind. The program's log goes to the
/// journal, which others than root may read.
class SecretsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ApplyLook(); }
    void cleanup() { Board::RemoveTools(); }

    void passphraseIsNotSpread_data();
    void passphraseIsNotSpread();
    void passwordIsNotSpread_data();
    void passwordIsNotSpread();
};

void SecretsTest::passphraseIsNotSpread_data()
{
    QTest::addColumn<QByteArray>("tool");

    QTest::newRow("joined") << QByteArray();
    QTest::newRow("tool fails") << QByteArray("echo FAIL; exit 1");
    QTest::newRow("tool dies") << QByteArray("kill -SEGV $$");
    QTest::newRow("tool is missing") << QByteArray("missing");
}

void SecretsTest::passphraseIsNotSpread()
{
    QFETCH(QByteArray, tool);
    const char* const passphrase = "wireless-secret";
    Board::Become(QByteArray("language english\nwlan0 up\nnetwork Bench -50 ") + passphrase + '\n');
    Speak("english");
    const QByteArray path = qgetenv("PATH");
    if (tool == "missing") {
        qputenv("PATH", "/nowhere");
    } else if (!tool.isEmpty()) {
        Board::PutTool("wpa_cli", tool);
    }
    {
        const Log log;
        ToolWifiTest page(nullptr);
        if (tool == "missing") {
            Press(&page, "m_btnOpenWifi");
        }
        page.findChild<QComboBox*>()->addItem("Bench -50");
        InGrid<QLineEdit>(&page, 2, 1)->setText(passphrase);
        for (const char* button : {"btnConnect", "btnRef"}) {
            Press(&page, button);
        }
        qDebug("the end");
    }
    qputenv("PATH", path);

    QVERIFY2(Log::Text().contains("the end") && !Log::Text().contains(passphrase),
             Log::Text().constData());
    // The description of the board has it, and the supplicant's own settings.
    QCOMPARE(FilesWith(passphrase), QStringList());
}

void SecretsTest::passwordIsNotSpread_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("filesWithIt");

    const QStringList itsOwn("/etc/vnclinuxfb.conf");
    QTest::newRow("written") << QByteArray("file /etc/vnclinuxfb.conf password=old\\n\n") << itsOwn;
    QTest::newRow("cannot be written") << QByteArray() << QStringList();
}

void SecretsTest::passwordIsNotSpread()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, filesWithIt);
    const char* const password = "remote-secret";
    const char* const path = "/etc/vnclinuxfb.conf";
    Board::Become("language english\n" + file);
    Speak("english");
    // A folder in its place cannot be written.
    QCOMPARE(file.isEmpty() ? mkdir(path, 0600) : chmod(path, 0600), 0);
    {
        const Log log;
        ToolVncTest page(nullptr);
        InGrid<QLineEdit>(&page, 5, 1)->setText(password);
        AtTheBox(QMessageBox::Ok, [](QMessageBox& /*box*/) {});
        QTest::mouseClick(page.findChild<QPushButton*>(), Qt::LeftButton);
        qDebug("the end");
    }

    QVERIFY2(Log::Text().contains("the end") && !Log::Text().contains(password),
             Log::Text().constData());
    QCOMPARE(FilesWith(password), filesWithIt);
    struct stat after = {};
    QCOMPARE(stat(path, &after), 0);
    QCOMPARE(after.st_mode & 07777, 0600u);
}

QTEST_MAIN(SecretsTest)
#include "SecretsTest.moc"
