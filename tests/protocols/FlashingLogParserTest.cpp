#include "protocols/FlashingLogParser.h"
#include "simulated-board/devices/FlashingLog.h"

#include <QTest>

#include <random>

Q_DECLARE_METATYPE(FlashingRun)

namespace
{

/// What a chunk echoes, piece by piece.
QStringList Echoes(const QByteArray& chunk)
{
    QStringList echoes;
    FlashingLogParser log;
    for (const LogPiece& piece : log.Take(chunk)) {
        echoes << piece.echo;
    }
    return echoes;
}

/// A result as a word: the end of its key, and whether it is a pass; empty where there is none.
QString Word(const std::optional<LogResult>& result)
{
    return result ? result->textKey.right(3) + (result->ok ? " pass" : " fail") : QString();
}

/// The results that chunks lead to.
QStringList Results(FlashingLogParser& log, const QList<QByteArray>& chunks)
{
    QStringList words;
    for (const QByteArray& chunk : chunks) {
        for (const LogPiece& piece : log.Take(chunk)) {
            if (piece.result) {
                words << Word(piece.result);
            }
        }
    }
    return words;
}

} // namespace

class FlashingLogParserTest : public QObject
{
    Q_OBJECT

private slots:
    void chunkIsCutIntoLines_data();
    void chunkIsCutIntoLines();
    void lineMayComeInSeveralChunks();
    void lineThatBeginsWithAReturnWaitsForTheNextChunk();
    void textBehindANulIsNotJudged();
    void lineIsJudgedByItsLastFourMillionCharacters_data();
    void lineIsJudgedByItsLastFourMillionCharacters();
    void everythingBurntNeedsBothParts_data();
    void everythingBurntNeedsBothParts();
    void resetForgetsEachPartButNotTheLine();

    void runIsJudgedWhateverItsChunks_data();
    void runIsJudgedWhateverItsChunks();

    void lineIsJudgedByItsFirstMarker_data();
    void lineIsJudgedByItsFirstMarker();
};

void FlashingLogParserTest::chunkIsCutIntoLines_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QStringList>("echoes");

    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("no end") << QByteArray("abc") << QStringList{"abc"};
    QTest::newRow("line feed") << QByteArray("abc\n") << QStringList{"abc\n"};
    QTest::newRow("lines and a rest") << QByteArray("a\nb\nc") << QStringList{"a\n", "b\n", "c"};
    QTest::newRow("empty lines") << QByteArray("\n\n") << QStringList{"\n", "\n"};
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QStringList{"a\r\n", "b\r\n"};
    QTest::newRow("CR only") << QByteArray("a\rb\r") << QStringList{"a\r", "b\r"};
    QTest::newRow("CR and a rest") << QByteArray("a\rb") << QStringList{"a\r", "b"};
    QTest::newRow("CR first") << QByteArray("\rabc") << QStringList{"\rabc"};
    QTest::newRow("CR first, then more") << QByteArray("\ra\rb\r") << QStringList{"\ra\rb\r"};
    QTest::newRow("CR alone") << QByteArray("\r") << QStringList{"\r"};
    QTest::newRow("CR first, with LF") << QByteArray("\ra\nb") << QStringList{"\ra\n", "b"};
    QTest::newRow("CR before LF stays") << QByteArray("a\rb\nc") << QStringList{"a\rb\n", "c"};
    QTest::newRow("NUL") << QByteArray("ab\0cd\nef\0\n\0gh", 13) << QStringList{"ab\n", "ef\n"};
    QTest::newRow("not ASCII") << QByteArray("端口\n收") << QStringList{"端口\n", "收"};
    QTest::newRow("broken character") << QByteArray("a\xe7\nb") << QStringList{"a\ufffd\n", "b"};
}

void FlashingLogParserTest::chunkIsCutIntoLines()
{
    QFETCH(QByteArray, chunk);
    QFETCH(QStringList, echoes);
    QCOMPARE(Echoes(chunk), echoes);
}

void FlashingLogParserTest::lineMayComeInSeveralChunks()
{
    FlashingLogParser log;
    QCOMPARE(Results(log, {"successed in down", "", "loading uboot"}), QStringList());
    QCOMPARE(Results(log, {"\n"}), QStringList("504 pass"));
    // Its text does not come back with the next line.
    QCOMPARE(Results(log, {"\n"}), QStringList());
}

void FlashingLogParserTest::lineThatBeginsWithAReturnWaitsForTheNextChunk()
{
    FlashingLogParser log;
    QCOMPARE(Results(log, {"\rbegin to erase flash\rmmc 2 exit\r"}), QStringList());
    QCOMPARE(Results(log, {"\n"}), QStringList("515 pass"));
}

void FlashingLogParserTest::textBehindANulIsNotJudged()
{
    FlashingLogParser log;
    QCOMPARE(Results(log, {QByteArray("one\0mmc 2 exit\n", 15)}), QStringList());
}

void FlashingLogParserTest::lineIsJudgedByItsLastFourMillionCharacters_data()
{
    QTest::addColumn<int>("behind");
    QTest::addColumn<int>("chunkSize");
    QTest::addColumn<QStringList>("results");

    const int most = 4000000 - static_cast<int>(qstrlen("mmc 2 exit"));
    for (const int chunkSize : {64, 4096, 10000000}) {
        const QByteArray chunks = "in chunks of " + QByteArray::number(chunkSize);
        QTest::newRow("kept " + chunks) << most << chunkSize << QStringList("503 pass");
        QTest::newRow("one too many " + chunks) << most + 1 << chunkSize << QStringList();
        QTest::newRow("long gone " + chunks) << 9000000 << chunkSize << QStringList();
    }
}

void FlashingLogParserTest::lineIsJudgedByItsLastFourMillionCharacters()
{
    QFETCH(int, behind);
    QFETCH(int, chunkSize);
    QFETCH(QStringList, results);
    const QByteArray line = "mmc 2 exit" + QByteArray(behind, 'x');
    FlashingLogParser log;
    for (int at = 0; at < line.size(); at += chunkSize) {
        log.Take(line.mid(at, chunkSize));
    }
    QCOMPARE(Results(log, {"\n"}), results);
}

void FlashingLogParserTest::everythingBurntNeedsBothParts_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QStringList>("results");

    const QByteArray rootfs = "successed in download part rootfs\n";
    const QByteArray uboot = "successed in downloading uboot\n";
    const QByteArray sprite = "sprite success\n";
    QTest::newRow("neither") << QList<QByteArray>{sprite} << QStringList{"506 fail"};
    QTest::newRow("rootfs only") << QList<QByteArray>{rootfs, sprite}
                                 << QStringList{"505 pass", "506 fail"};
    QTest::newRow("U-Boot only") << QList<QByteArray>{uboot, sprite}
                                 << QStringList{"504 pass", "506 fail"};
    QTest::newRow("both") << QList<QByteArray>{rootfs, uboot, sprite}
                          << QStringList{"505 pass", "504 pass", "502 pass"};
    QTest::newRow("the other order") << QList<QByteArray>{uboot, rootfs, sprite}
                                     << QStringList{"504 pass", "505 pass", "502 pass"};
    QTest::newRow("a second board inherits them")
        << QList<QByteArray>{uboot, rootfs, sprite, "mmc 2 exit\n", sprite}
        << QStringList{"504 pass", "505 pass", "502 pass", "503 pass", "502 pass"};
}

void FlashingLogParserTest::everythingBurntNeedsBothParts()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QStringList, results);
    FlashingLogParser log;
    QCOMPARE(Results(log, chunks), results);
}

void FlashingLogParserTest::resetForgetsEachPartButNotTheLine()
{
    const QByteArray rootfs = "successed in download part rootfs\n";
    const QByteArray uboot = "successed in downloading uboot\n";
    const QByteArray sprite = "sprite success\n";
    FlashingLogParser log;
    Results(log, {rootfs});
    log.Reset();
    QCOMPARE(Results(log, {uboot, sprite}), (QStringList{"504 pass", "506 fail"}));
    log.Reset();
    QCOMPARE(Results(log, {rootfs, sprite}), (QStringList{"505 pass", "506 fail"}));

    Results(log, {"begin to erase "});
    log.Reset();
    QCOMPARE(Results(log, {"flash\n"}), QStringList("515 pass"));
}

void FlashingLogParserTest::runIsJudgedWhateverItsChunks_data()
{
    QTest::addColumn<FlashingRun>("run");
    QTest::addColumn<QStringList>("results");

    const QStringList good{"515 pass", "516 pass", "505 pass", "504 pass", "502 pass",
                           "507 pass", "509 pass", "511 pass", "503 pass"};
    FlashingRun run;
    QTest::newRow("good eMMC") << run << good;
    run.lineEnd = "\n";
    QTest::newRow("line feeds") << run << good;
    run.countsWithReturns = true;
    QTest::newRow("counters with returns") << run << good;
    run = FlashingRun();
    run.isNand = true;
    QTest::newRow("good NAND") << run << good;
    run.selfTestPasses = false;
    QTest::newRow("self-test fails")
        << run << good.mid(0, 5) + QStringList{"508 fail", "510 fail", "512 fail", "503 pass"};
    run = FlashingRun();
    run.outcome = FlashingRun::Outcome::NoRootfs;
    QTest::newRow("no rootfs") << run
                               << good.mid(0, 2) + QStringList{"504 pass", "506 fail"} +
                                      good.mid(5);
    run.outcome = FlashingRun::Outcome::NoUboot;
    QTest::newRow("no U-Boot") << run << good.mid(0, 3) + QStringList{"506 fail"} + good.mid(5);
    run.outcome = FlashingRun::Outcome::Stuck;
    QTest::newRow("stuck") << run << QStringList(good.mid(0, 3));
}

void FlashingLogParserTest::runIsJudgedWhateverItsChunks()
{
    QFETCH(FlashingRun, run);
    QFETCH(QStringList, results);
    for (const unsigned largestChunk : {1U, 2U, 7U, 64U, 1000U, 1000000U}) {
        run.seed = largestChunk;
        const QByteArray log = QByteArray::fromStdString(FlashingLog(run));
        std::mt19937 random(largestChunk);
        QList<QByteArray> chunks;
        for (int at = 0; at < log.size(); at += chunks.last().size()) {
            chunks << log.mid(at, 1 + static_cast<int>(random() % largestChunk));
        }
        FlashingLogParser parser;
        QCOMPARE(Results(parser, chunks), results);
    }

    // Bare returns end lines, too, when a slow port brings one line at a time.
    run.lineEnd = "\r";
    QList<QByteArray> lines;
    for (const QByteArray& line : QByteArray::fromStdString(FlashingLog(run)).split('\r')) {
        lines << line + '\r';
    }
    FlashingLogParser parser;
    QCOMPARE(Results(parser, lines), results);
}

void FlashingLogParserTest::lineIsJudgedByItsFirstMarker_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("result");

    const auto add = [](const char* name, const char* line, const char* result) {
        QTest::newRow(name) << QString(line) << QString(result);
    };
    add("nothing", "", "");
    add("a line of the log", "[116]HELLO! BOOT0 is starting!", "");
    add("fail is no marker", "[12]mmc 2 fail, err -110", "");
    add("erase begins", "[116]begin to erase flash", "515 pass");
    add("begun twice", "begin begin to erase flash", "515 pass");
    add("behind Chinese", "端口 mmc 2 exit", "503 pass");
    add("half of it", "begin to erase", "");
    add("erase done", "successed in erasing flash\r", "516 pass");
    add("erase done, other grammar", "success in erasing flash", "");
    add("rootfs", "[104.602] successed in download part rootfs", "505 pass");
    add("another part", "successed in download part boot", "");
    add("U-Boot", "[      5.344]successed in downloading uboot", "504 pass");
    add("case matters", "Successed in downloading uboot", "");
    add("sprite", "sprite success ", "506 fail");
    add("exit ok", "mmc 2 exit ok", "503 pass");
    add("exit failed", "mmc 2 exit failed", "503 pass");
    add("in the middle", "a40i login: sprite success [1]", "506 fail");

    add("first of two", "mmc 2 exit, sprite success", "506 fail");
    add("erase before all", "sprite success begin to erase flash", "515 pass");
    add("rootfs before U-Boot", "successed in downloading uboot successed in download part rootfs",
        "505 pass");
    add("exit before the self-test", "MOSK_HARD_NET: ok mmc 2 exit", "503 pass");
    add("network before eMMC", "MOSK_HARD_EMMC: ok MOSK_HARD_NET: ", "507 pass");
    add("eMMC before memory", "MOSK_HARD_DDR: ok MOSK_HARD_EMMC: ", "510 fail");

    add("network ok", "MOSK_HARD_NET: ok", "507 pass");
    add("network ok before", "is ok MOSK_HARD_NET:", "507 pass");
    add("network ok first only", "ok MOSK_HARD_NET: fail", "508 fail");
    add("network ok first and later", "ok MOSK_HARD_NET:ok", "507 pass");
    add("network OK", "MOSK_HARD_NET: OK", "508 fail");
    add("network fail-ok", "MOSK_HARD_NET:fail-ok", "507 pass");
    add("network without value", "MOSK_HARD_NET:", "508 fail");

    add("eMMC ok", "MOSK_HARD_EMMC: ok", "509 pass");
    add("eMMC ok, no blank", "MOSK_HARD_EMMC:ok", "509 pass");
    add("eMMC ok and size", "MOSK_HARD_EMMC:ok 7.1G", "509 pass");
    add("eMMC ok before", "is ok MOSK_HARD_EMMC: fail", "510 fail");
    add("eMMC OK", "MOSK_HARD_EMMC: OK", "510 fail");
    add("eMMC ok after the first of two", "MOSK_HARD_EMMC:ok MOSK_HARD_EMMC:", "509 pass");
    add("eMMC without value", "MOSK_HARD_EMMC:", "510 fail");

    add("memory ok", "MOSK_HARD_DDR: ok", "511 pass");
    add("memory ok, no blank", "MOSK_HARD_DDR:ok", "511 pass");
    add("memory fail-ok", "MOSK_HARD_DDR:fail-ok", "511 pass");
    add("memory ok before", "ok ok MOSK_HARD_DDR: fail", "512 fail");
    add("memory without value", "MOSK_HARD_DDR:", "512 fail");
    add("no colon", "MOSK_HARD_DDR ok", "");
}

void FlashingLogParserTest::lineIsJudgedByItsFirstMarker()
{
    QFETCH(QString, line);
    QFETCH(QString, result);
    QCOMPARE(Word(FlashingLogParser().Judge(line)), result);
}

QTEST_APPLESS_MAIN(FlashingLogParserTest)
#include "FlashingLogParserTest.moc"
