#include "texts/MoskSettings.h"
#include "simulated-board/Board.h"

#include <QCoreApplication>
#include <QDir>
#include <QLockFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QSysInfo>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

#include <sys/mount.h>

namespace
{

const char* const path = "/etc/mosk.ini";
const char* const lockPath = "/etc/mosk.ini.lock";

/// Changes the language back and forth until it is killed.
int KeepWriting(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QTimer timer;
    bool english = false;
    QObject::connect(&timer, &QTimer::timeout, [&english] {
        english = !english;
        MoskSettings::GetInstance()->SetValue("Language", english ? "english" : "chinese");
    });
    timer.start(0);
    return QCoreApplication::exec();
}

/// Starts as the program does: reads the language and, when told to, changes it. Prints the
/// language that it has when QSettings has written the file.
int StartAndWrite(int& argc, char** argv, const QString& language)
{
    QCoreApplication application(argc, argv);
    MoskSettings* settings = MoskSettings::GetInstance();
    settings->GetValue("Language");
    if (!language.isEmpty()) {
        settings->SetValue("Language", language);
    }
    QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    const int status = QCoreApplication::exec();
    std::printf("%s", qPrintable(settings->GetValue("Language")));
    return status;
}

/// Changes the language while nothing can be stored in /etc, and again when that is over.
int WriteAndRecover(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    for (const auto& [mode, language] : {std::pair("ro", "english"), std::pair("rw", "chinese")}) {
        if (std::system(qPrintable(QString("mount -o remount,%1 /etc").arg(mode))) != 0) {
            return 1;
        }
        MoskSettings::GetInstance()->SetValue("Language", language);
        QCoreApplication::processEvents();
    }
    return 0;
}

/// The content of a lock file as QLockFile writes it: who holds the lock.
QByteArray LockOf(qint64 process, const QByteArray& program)
{
    return QByteArray::number(process) + '\n' + program + '\n' +
           QSysInfo::machineHostName().toUtf8() + '\n';
}

} // namespace

class MoskSettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void missingFileGivesAnEmptyLanguage();
    void valueIsReadBackBeforeItReachesTheFile();
    void valueReachesTheFile();
    void keyOfAnotherGroupIsNotSeen_data();
    void keyOfAnotherGroupIsNotSeen();
    void folderInTheFilesPlaceIsNoFile();
    void fileIsWholeWheneverTheProgramIsKilled();
    void changeThatCannotBeStoredIsLogged_data();
    void changeThatCannotBeStoredIsLogged();

    void changeAfterAFailureIsStored();
    void lockLeftBehindIsNoObstacle_data();
    void lockLeftBehindIsNoObstacle();
    void lockOfALivingOwnerIsLeftAlone();

private:
    /// The language that a program would read if it started now.
    QString ReadAnew(const QByteArray& content);
};

QString MoskSettingsTest::ReadAnew(const QByteArray& content)
{
    Board::WriteFile(path, content);
    QSettings(path, QSettings::IniFormat).sync();
    return MoskSettings::GetInstance()->GetValue("Language");
}

/// Each test begins without a file, and QSettings has seen that: it reads a file anew when its size
/// or time has changed, and two of one size, written in one tick of the clock, look the same.
void MoskSettingsTest::init()
{
    QSettings(path, QSettings::IniFormat).sync();
    QFile::remove(path);
    QSettings(path, QSettings::IniFormat).sync();
}

void MoskSettingsTest::missingFileGivesAnEmptyLanguage()
{
    QCOMPARE(MoskSettings::GetInstance()->GetValue("Language"), QString());
}

void MoskSettingsTest::valueIsReadBackBeforeItReachesTheFile()
{
    MoskSettings::GetInstance()->SetValue("Language", "english");

    QCOMPARE(MoskSettings::GetInstance()->GetValue("Language"), QString("english"));
    QVERIFY(!QFile::exists(path));
}

void MoskSettingsTest::valueReachesTheFile()
{
    MoskSettings::GetInstance()->SetValue("Language", "english");

    QTRY_VERIFY(QFile::exists(path));
    QCOMPARE(Board::ReadFile(path), QByteArray("[sys]\nLanguage=english\n"));
}

void MoskSettingsTest::keyOfAnotherGroupIsNotSeen_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("language");

    QTest::newRow("its own group") << QByteArray("[sys]\nLanguage=chinese\n") << "chinese";
    QTest::newRow("outside any group") << QByteArray("Language=english\n") << "";
    QTest::newRow("another group") << QByteArray("[other]\nLanguage=english\n") << "";
    QTest::newRow("binary") << QByteArray("\xff\xfe\x00[sys\x01=\n\n]]=", 14) << "";
    QTest::newRow("a megabyte without an end") << QByteArray(1 << 20, '[') << "";
}

void MoskSettingsTest::keyOfAnotherGroupIsNotSeen()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, language);

    QCOMPARE(ReadAnew(content), language);
}

void MoskSettingsTest::folderInTheFilesPlaceIsNoFile()
{
    ReadAnew("[sys]\nLanguage=english\n");
    QFile::remove(path);
    QDir().mkdir(path);
    QSettings(path, QSettings::IniFormat).sync();
    QTest::ignoreMessage(QtWarningMsg, "Cannot write /etc/mosk.ini \"not a file\"");

    MoskSettings::GetInstance()->SetValue("Language", "chinese");
    QCoreApplication::processEvents();

    QCOMPARE(MoskSettings::GetInstance()->GetValue("Language"), QString("chinese"));
    QVERIFY(QDir().rmdir(path));
}

void MoskSettingsTest::fileIsWholeWheneverTheProgramIsKilled()
{
    Board::WriteFile(path, "[sys]\nLanguage=english\n");
    for (int i = 0; i < 200; ++i) {
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(), {"--keep-writing"});
        QVERIFY(writer.waitForStarted());
        // Some are killed while they start, most while they write.
        QThread::msleep(QRandomGenerator::global()->bounded(60));
        writer.kill();
        QVERIFY(writer.waitForFinished());

        const QByteArray content = Board::ReadFile(path);
        QVERIFY2(content == "[sys]\nLanguage=english\n" || content == "[sys]\nLanguage=chinese\n",
                 content.constData());
    }
}

void MoskSettingsTest::changeThatCannotBeStoredIsLogged_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<QByteArray>("reason");

    QTest::newRow("folder") << QByteArray("mkdir /etc/mosk.ini") << QByteArray("not a file");
    QTest::newRow("pipe") << QByteArray("mkfifo /etc/mosk.ini") << QByteArray("not a file");
    QTest::newRow("endless device")
        << QByteArray("ln -s /dev/zero /etc/mosk.ini") << QByteArray("not a file");
    const QByteArray small = "mount -t tmpfs -o size=64k none /etc";
    QTest::newRow("read-only disk")
        << small + " && mount -o remount,ro /etc" << QByteArray("Read-only file system");
    QTest::newRow("full disk") << small + "; head -c 100000 /dev/zero >/etc/rest; true"
                               << QByteArray("No space left on device");
}

void MoskSettingsTest::changeThatCannotBeStoredIsLogged()
{
    QFETCH(QByteArray, maker);
    QFETCH(QByteArray, reason);
    QCOMPARE(std::system(maker.constData()), 0);

    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {"--start", "english"});
    const bool hasEnded = program.waitForFinished(15000);
    const QByteArray log = program.readAllStandardError();
    program.kill();
    program.waitForFinished();
    umount("/etc");
    QFile::remove(path);
    QDir().rmdir(path);

    QVERIFY2(hasEnded, "the program hangs");
    QCOMPARE(program.readAllStandardOutput(), QByteArray("english"));
    QVERIFY2(log.contains(path) && log.contains(reason), log.constData());
    QCOMPARE(log.count('\n'), 1);
}

void MoskSettingsTest::changeAfterAFailureIsStored()
{
    QCOMPARE(std::system("mount -t tmpfs none /etc"), 0);

    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {"--recover"});
    QVERIFY(program.waitForFinished());
    const QByteArray content = Board::ReadFile(path);
    umount("/etc");

    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(content, QByteArray("[sys]\nLanguage=chinese\n"));
    const QByteArray log = program.readAllStandardError();
    QVERIFY2(log.count('\n') == 1 && log.contains("Read-only"), log.constData());
}

void MoskSettingsTest::lockLeftBehindIsNoObstacle_data()
{
    QTest::addColumn<QByteArray>("lock");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << LockOf(1, "MoskTest").left(3);
    QTest::newRow("of a process that is gone") << LockOf(4194303, "MoskTest");
    // After a restart of the board another process, or the program itself, may have the number.
    QTest::newRow("of a number in use again")
        << LockOf(QCoreApplication::applicationPid(), "MoskSettingsTest");
    QTest::newRow("of the board's former name")
        << LockOf(4194303, "MoskTest").replace(QSysInfo::machineHostName().toUtf8(), "localhost0");
    QTest::newRow("no text") << QByteArray(1000, '\xff');
}

void MoskSettingsTest::lockLeftBehindIsNoObstacle()
{
    QFETCH(QByteArray, lock);
    Board::WriteFile(path, "[sys]\nLanguage=english\n");
    Board::WriteFile(lockPath, lock);

    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {"--start", "chinese"});
    // Held up by a lock, a change takes half a minute.
    QVERIFY2(program.waitForFinished(15000), "the change is held up");

    QCOMPARE(Board::ReadFile(path), QByteArray("[sys]\nLanguage=chinese\n"));
    QVERIFY(!QFile::exists(lockPath));
}

void MoskSettingsTest::lockOfALivingOwnerIsLeftAlone()
{
    QFile::remove(lockPath);
    Board::WriteFile(path, "[sys]\nLanguage=english\n");
    QLockFile lock(lockPath);
    QVERIFY(lock.tryLock());
    const QByteArray owner = Board::ReadFile(lockPath);

    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {"--start", ""});
    QVERIFY(program.waitForFinished());

    QVERIFY(QFile::exists(lockPath));
    QCOMPARE(Board::ReadFile(lockPath), owner);
}

int main(int argc, char** argv)
{
    if (argc > 2 && qstrcmp(argv[1], "--start") == 0) {
        return StartAndWrite(argc, argv, argv[2]);
    }
    if (argc > 1 && qstrcmp(argv[1], "--keep-writing") == 0) {
        return KeepWriting(argc, argv);
    }
    if (argc > 1 && qstrcmp(argv[1], "--recover") == 0) {
        return WriteAndRecover(argc, argv);
    }
    QCoreApplication application(argc, argv);
    MoskSettingsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MoskSettingsTest.moc"
