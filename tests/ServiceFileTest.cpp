#include "instruments/ServiceFile.h"
#include "simulated-board/Board.h"
#include "tests/Warnings.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace
{

/// The owners that files were given, each a user and a group.
QList<QPair<uid_t, gid_t>> s_owners;

void Write(const QString& path, const QByteArray& content)
{
    EditServiceFile(path, [&content](const QByteArray&) { return content; });
}

} // namespace

// Replaces the C library's: the board has one user, so the file itself cannot tell.
extern "C" int fchown(int file, uid_t user, gid_t group) noexcept
{
    s_owners.append({user, group});
    return static_cast<int>(syscall(SYS_fchown, file, user, group));
}

class ServiceFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void unchangedFileIsNotWritten();
    void fileKeepsOwnerAndMode();
    void symbolicLinkStaysOne();
    void linkToAMissingFileMakesTheFile();
    void whatIsNoFileIsLeftAlone_data();
    void whatIsNoFileIsLeftAlone();
    void hugeFileIsLeftAlone();
    void fullDiskKeepsTheOldFile();
    void readOnlyDiskKeepsTheOldFile();
    void writingKilledHalfwayLeavesTheOldFile();
    void killedWritingLeavesTheOldOrTheNewFile();
};

void ServiceFileTest::init()
{
    QDir("/etc/test").removeRecursively();
    QVERIFY(QDir().mkpath("/etc/test"));
}

void ServiceFileTest::unchangedFileIsNotWritten()
{
    Board::WriteFile("/etc/test/file", "old");
    struct stat before = {};
    QCOMPARE(stat("/etc/test/file", &before), 0);

    Write("/etc/test/file", "old");

    struct stat after = {};
    QCOMPARE(stat("/etc/test/file", &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
}

void ServiceFileTest::fileKeepsOwnerAndMode()
{
    Board::WriteFile("/etc/test/file", "old");
    QCOMPARE(chmod("/etc/test/file", 0440), 0);
    struct stat before = {};
    QCOMPARE(stat("/etc/test/file", &before), 0);
    s_owners.clear();
    const Warnings warnings;

    Write("/etc/test/file", "new");

    struct stat after = {};
    QCOMPARE(stat("/etc/test/file", &after), 0);
    QCOMPARE(after.st_mode & 07777, 0440u);
    QVERIFY(s_owners.contains({before.st_uid, before.st_gid}));
    QCOMPARE(Board::ReadFile("/etc/test/file"), QByteArray("new"));
    QCOMPARE(Warnings::Texts(), QStringList());
}

void ServiceFileTest::symbolicLinkStaysOne()
{
    Board::WriteFile("/var/real/file", "old");
    QCOMPARE(chmod("/var/real/file", 0600), 0);
    QVERIFY(QFile::link("../../var/real/file", "/etc/test/file"));

    Write("/etc/test/file", "new");

    QVERIFY(QFileInfo("/etc/test/file").isSymLink());
    struct stat after = {};
    QCOMPARE(stat("/var/real/file", &after), 0);
    QCOMPARE(after.st_mode & 07777, 0600u);
    QCOMPARE(Board::ReadFile("/var/real/file"), QByteArray("new"));
    QCOMPARE(QDir("/var/real").entryList(QDir::Files), QStringList("file"));
}

void ServiceFileTest::linkToAMissingFileMakesTheFile()
{
    QVERIFY(QDir().mkpath("/var/none"));
    QVERIFY(QFile::link("/var/none/file", "/etc/test/file"));

    Write("/etc/test/file", "new");

    QVERIFY(QFileInfo("/etc/test/file").isSymLink());
    QVERIFY(QFile::exists("/var/none/file"));
    QCOMPARE(Board::ReadFile("/var/none/file"), QByteArray("new"));
}

void ServiceFileTest::whatIsNoFileIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<QString>("reason");

    const auto add = [](const char* name, const char* maker, const char* reason) {
        QTest::newRow(name) << QByteArray(maker) << QString(reason);
    };
    add("folder", "mkdir /etc/test/file", "not a file");
    add("pipe", "mkfifo /etc/test/file", "not a file");
    add("endless device", "ln -s /dev/zero /etc/test/file", "not a file");
    add("link into a missing folder", "ln -s /nowhere/f /etc/test/file",
        "No such file or directory");
}

void ServiceFileTest::whatIsNoFileIsLeftAlone()
{
    QFETCH(QByteArray, maker);
    QFETCH(QString, reason);
    QCOMPARE(std::system(maker.constData()), 0);
    struct stat before = {};
    QCOMPARE(lstat("/etc/test/file", &before), 0);
    const Warnings warnings;

    Write("/etc/test/file", "new");

    struct stat after = {};
    QCOMPARE(lstat("/etc/test/file", &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(QDir("/etc/test").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             QStringList("file"));
    QCOMPARE(Warnings::Texts().size(), 1);
    QVERIFY2(Warnings::Texts()[0].contains(reason), qPrintable(Warnings::Texts()[0]));
}

void ServiceFileTest::hugeFileIsLeftAlone()
{
    Board::WriteFile("/etc/test/file", "old");
    QCOMPARE(truncate("/etc/test/file", 20000000), 0);
    const Warnings warnings;

    QCOMPARE(ReadServiceFile("/etc/test/file"), QByteArray());
    QVERIFY2(Warnings::Texts().value(0).contains("too large"),
             qPrintable(Warnings::Texts().join('\n')));
    Write("/etc/test/file", "new");

    QCOMPARE(QFileInfo("/etc/test/file").size(), 20000000);
}

void ServiceFileTest::fullDiskKeepsTheOldFile()
{
    QVERIFY(QDir().mkpath("/mnt/small"));
    QCOMPARE(mount("none", "/mnt/small", "tmpfs", 0, "size=64k"), 0);
    const QByteArray old(5000, 'x');
    const QByteArray changed(5000, 'y');
    Board::WriteFile("/mnt/small/file", old);
    QFile rest("/mnt/small/rest");
    QVERIFY(rest.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (rest.write(QByteArray(4096, 'y')) == 4096) {
    }
    rest.close();

    Write("/mnt/small/file", changed);

    QCOMPARE(Board::ReadFile("/mnt/small/file"), old);
    QCOMPARE(QDir("/mnt/small").entryList(QDir::Files), QStringList({"file", "rest"}));

    QVERIFY(rest.remove());
    Write("/mnt/small/file", changed);
    QCOMPARE(Board::ReadFile("/mnt/small/file"), changed);
    QCOMPARE(umount("/mnt/small"), 0);
}

void ServiceFileTest::readOnlyDiskKeepsTheOldFile()
{
    QVERIFY(QDir().mkpath("/mnt/fixed"));
    QCOMPARE(mount("none", "/mnt/fixed", "tmpfs", 0, nullptr), 0);
    Board::WriteFile("/mnt/fixed/file", "old");
    QCOMPARE(mount("none", "/mnt/fixed", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    const Warnings warnings;

    Write("/mnt/fixed/file", "new");

    QCOMPARE(Board::ReadFile("/mnt/fixed/file"), QByteArray("old"));
    // The reason alone, not what would follow from it.
    QCOMPARE(Warnings::Texts().size(), 1);
    QCOMPARE(umount("/mnt/fixed"), 0);
}

void ServiceFileTest::writingKilledHalfwayLeavesTheOldFile()
{
    Board::WriteFile("/etc/test/file", "old");

    const pid_t writer = fork();
    if (writer == 0) {
        // The system ends whoever writes more than that into a file.
        const rlimit limit = {1000, 1000};
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_FSIZE, &limit);
        setrlimit(RLIMIT_CORE, &noCore);
        Write("/etc/test/file", QByteArray(5000, 'x'));
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(writer, &status, 0), writer);

    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
    QCOMPARE(Board::ReadFile("/etc/test/file"), QByteArray("old"));
}

void ServiceFileTest::killedWritingLeavesTheOldOrTheNewFile()
{
    // Large enough for a writing to take its time.
    const QByteArray first(40000, '1');
    const QByteArray second(40000, '2');
    Board::WriteFile("/etc/test/file", first);

    int changes = 0;
    QByteArray last = first;
    for (int i = 0; i < 40; ++i) {
        const pid_t writer = fork();
        if (writer == 0) {
            for (int n = 0;; ++n) {
                Write("/etc/test/file", n % 2 != 0 ? first : second);
            }
        }
        // Any moment will do: each round takes another.
        usleep(20000 + 17777 * i % 50000);
        kill(writer, SIGKILL);
        QCOMPARE(waitpid(writer, nullptr, 0), writer);

        const QByteArray content = Board::ReadFile("/etc/test/file");
        QVERIFY(content == first || content == second);
        changes += content != last ? 1 : 0;
        last = content;
    }
    QVERIFY(changes > 0);
}

QTEST_GUILESS_MAIN(ServiceFileTest)
#include "ServiceFileTest.moc"
