#include "protocols/Player.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace
{

/// What the player is given when a shell runs the command: its arguments, each ended by a NUL.
/// "ran" follows if a part of a name is run.
QByteArray HeardFrom(const QByteArray& command)
{
    const QTemporaryDir folder;
    QProcess shell;
    shell.setWorkingDirectory(folder.path());
    shell.start("sh", {"-s"});
    shell.write("tinyplay() { printf '%s\\0' \"$@\"; }\n" + command + "\nwait\n");
    shell.closeWriteChannel();
    shell.waitForFinished();
    return shell.readAll() + (QDir(folder.path()).isEmpty() ? "" : "ran");
}

} // namespace

class PlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void commandPlaysTheFile_data();
    void commandPlaysTheFile();
    void commandIsCutToItsBuffer_data();
    void commandIsCutToItsBuffer();
    void nameReachesThePlayerWhole_data();
    void nameReachesThePlayerWhole();
    void nameThatIsCutStaysAName();
};

void PlayerTest::commandPlaysTheFile_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QByteArray>("command");

    const auto add = [](const char* name, const char* item, const char* command) {
        QTest::newRow(name) << QString(item) << QByteArray(command);
    };
    add("plain", "/mnt/usb/tone.wav\n", "tinyplay /mnt/usb/tone.wav &");
    add("no line end", "/mnt/a.wav", "tinyplay /mnt/a.wav &");
    add("blank", "/mnt/a b.wav\n", "tinyplay '/mnt/a b.wav' &");
    add("command", "/mnt/$(reboot).wav\n", "tinyplay '/mnt/$(reboot).wav' &");
    add("quote", "/mnt/it's.wav\n", "tinyplay '/mnt/it'\\''s.wav' &");
    add("all that is ordinary", "/mnt/AZaz09/._-+,:@%.wav\n",
        "tinyplay /mnt/AZaz09/._-+,:@%.wav &");
    add("conversions of printf", "/mnt/%s%n%d.wav\n", "tinyplay /mnt/%s%n%d.wav &");
    add("two line ends", "/mnt/a\n.wav\n", "tinyplay '/mnt/a\n.wav' &");
}

void PlayerTest::commandPlaysTheFile()
{
    QFETCH(QString, item);
    QFETCH(QByteArray, command);
    QCOMPARE(PlayCommand(item), command);
}

void PlayerTest::commandIsCutToItsBuffer_data()
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

void PlayerTest::commandIsCutToItsBuffer()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, command);

    QCOMPARE(PlayCommand(name + '\n'), command);
    QVERIFY(command.size() <= 99);
}

void PlayerTest::nameReachesThePlayerWhole_data()
{
    QTest::addColumn<QString>("name");

    const char* const names[] = {"/mnt/a b  c.wav",
                                 "/mnt/it's.wav",
                                 "/mnt/'quoted'.wav",
                                 "/mnt/\"quoted\".wav",
                                 "/mnt/';touch ran;'.wav",
                                 "/mnt/a;touch ran;.wav",
                                 "/mnt/$(touch ran).wav",
                                 "/mnt/`touch ran`.wav",
                                 "/mnt/a&touch ran&.wav",
                                 "/mnt/a|touch ran|.wav",
                                 "/mnt/a>ran",
                                 "/mnt/$HOME.wav",
                                 "/mnt/*.wav",
                                 "/mnt/[a-z]?.wav",
                                 "/mnt/{a,b}.wav",
                                 "#.wav",
                                 "~/a.wav",
                                 "!!.wav",
                                 "(a).wav",
                                 "/mnt/back\\slash\\",
                                 "/mnt/line\nend\n touch ran.wav",
                                 "/mnt/tab\tcr\r\x01\x1b\x7f.wav",
                                 "/mnt/你好 ä.wav",
                                 "/mnt/\uFFFD.wav",
                                 "-rf.wav",
                                 "' '"};
    for (const char* const name : names) {
        QTest::newRow(QByteArray(name).toPercentEncoding(" '\"/").constData()) << QString(name);
    }
    for (char character = '!'; character <= '~'; ++character) {
        QTest::addRow("a%cb", character) << QString("a%1b.wav").arg(character);
    }
}

void PlayerTest::nameReachesThePlayerWhole()
{
    QFETCH(QString, name);
    QCOMPARE(HeardFrom(PlayCommand(name + '\n')), name.toUtf8() + '\0');
}

void PlayerTest::nameThatIsCutStaysAName()
{
    for (const QByteArray piece : {"'", "a'", "';touch ran;'", "$(touch ran)", "\\'", "你"}) {
        for (int extra = 0; extra < 12; ++extra) {
            const QByteArray name =
                "/mnt/" + QByteArray(extra, 'x') + piece.repeated(300 / piece.size());
            const QByteArray command = PlayCommand(name + '\n');
            QVERIFY(command.size() <= 99);

            const QByteArray given = HeardFrom(command);
            QVERIFY2(given.endsWith('\0') && name.startsWith(given.chopped(1)),
                     command.constData());
            QVERIFY(given.size() > 20);
        }
    }
}

QTEST_GUILESS_MAIN(PlayerTest)
#include "PlayerTest.moc"
