#include "protocols/FlashingLog.h"

#include "simulated-board/devices/FlashingLog.h"

#include <QRegularExpression>
#include <QTest>

#include <random>

Q_DECLARE_METATYPE(LogMarker)

namespace
{

/// The pieces of a chunk, a line end shown as a bar: {"line|", "rest"}.
QStringList Pieces(const QByteArray& chunk)
{
    QStringList pieces;
    for (const LogPiece& piece : SplitLog(chunk)) {
        pieces << piece.text + (piece.lineEnd.isEmpty() ? "" : "|");
    }
    return pieces;
}

} // namespace

class FlashingLogTest : public QObject
{
    Q_OBJECT

private slots:
    void chunkIsCutIntoLines_data();
    void chunkIsCutIntoLines();
    void lineEndIsTheSeparatorOfItsChunk();

    void markerIsFound_data();
    void markerIsFound();

    void goodRunLooksAsRealOnesDo();
};

void FlashingLogTest::chunkIsCutIntoLines_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QStringList>("pieces");

    const QString none;
    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("no end") << QByteArray("abc") << QStringList{"abc"};
    QTest::newRow("line feed") << QByteArray("abc\n") << QStringList{"abc|", none};
    QTest::newRow("lines and a rest") << QByteArray("a\nb\nc") << QStringList{"a|", "b|", "c"};
    QTest::newRow("empty lines") << QByteArray("\n\n") << QStringList{"|", "|", none};
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QStringList{"a\r|", "b\r|", none};
    QTest::newRow("CR only") << QByteArray("a\rb\r") << QStringList{"a|", "b|", none};
    QTest::newRow("CR and a rest") << QByteArray("a\rb") << QStringList{"a|", "b"};
    QTest::newRow("CR first") << QByteArray("\rabc") << QStringList{"\rabc"};
    QTest::newRow("CR first, then more") << QByteArray("\ra\rb\r") << QStringList{"\ra\rb\r"};
    QTest::newRow("CR alone") << QByteArray("\r") << QStringList{"\r"};
    QTest::newRow("CR first, with LF") << QByteArray("\ra\nb") << QStringList{"\ra|", "b"};
    QTest::newRow("CR before LF stays") << QByteArray("a\rb\nc") << QStringList{"a\rb|", "c"};
    QTest::newRow("NUL") << QByteArray("ab\0cd\nef\0\n\0gh", 13) << QStringList{"ab|", "ef|", none};
    QTest::newRow("not ASCII") << QByteArray("端口\n收") << QStringList{"端口|", "收"};
    QTest::newRow("broken character") << QByteArray("a\xe7\nb") << QStringList{"a\ufffd|", "b"};
}

void FlashingLogTest::chunkIsCutIntoLines()
{
    QFETCH(QByteArray, chunk);
    QFETCH(QStringList, pieces);
    QCOMPARE(Pieces(chunk), pieces);
}

void FlashingLogTest::lineEndIsTheSeparatorOfItsChunk()
{
    QCOMPARE(SplitLog("a\nb").first().lineEnd, QString("\n"));
    QCOMPARE(SplitLog("a\rb").first().lineEnd, QString("\r"));
    QCOMPARE(SplitLog("a\r\nb").first().lineEnd, QString("\n"));
}

void FlashingLogTest::markerIsFound_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<LogMarker>("marker");

    QTest::newRow("nothing") << "" << LogMarker::None;
    QTest::newRow("a line of the log") << "[116]HELLO! BOOT0 is starting!" << LogMarker::None;
    QTest::newRow("fail is no marker") << "[12]mmc 2 fail, err -110" << LogMarker::None;
    QTest::newRow("erase begins") << "[116]begin to erase flash" << LogMarker::EraseBegun;
    QTest::newRow("half of it") << "begin to erase" << LogMarker::None;
    QTest::newRow("erase done") << "successed in erasing flash\r" << LogMarker::EraseDone;
    QTest::newRow("erase done, other grammar") << "success in erasing flash" << LogMarker::None;
    QTest::newRow("rootfs") << "[104.602] successed in download part rootfs"
                            << LogMarker::RootfsDone;
    QTest::newRow("another part") << "successed in download part boot" << LogMarker::None;
    QTest::newRow("U-Boot") << "[      5.344]successed in downloading uboot"
                            << LogMarker::UbootDone;
    QTest::newRow("case matters") << "Successed in downloading uboot" << LogMarker::None;
    QTest::newRow("sprite") << "sprite success " << LogMarker::SpriteDone;
    QTest::newRow("exit ok") << "mmc 2 exit ok" << LogMarker::Shutdown;
    QTest::newRow("exit failed") << "mmc 2 exit failed" << LogMarker::Shutdown;
    QTest::newRow("in the middle") << "a40i login: sprite success [1]" << LogMarker::SpriteDone;

    QTest::newRow("first of two") << "mmc 2 exit, sprite success" << LogMarker::SpriteDone;
    QTest::newRow("erase before all")
        << "sprite success begin to erase flash" << LogMarker::EraseBegun;
    QTest::newRow("rootfs before U-Boot")
        << "successed in downloading uboot successed in download part rootfs"
        << LogMarker::RootfsDone;
    QTest::newRow("exit before the self-test")
        << "MOSK_HARD_NET: ok mmc 2 exit" << LogMarker::Shutdown;
    QTest::newRow("network before eMMC")
        << "MOSK_HARD_EMMC: ok MOSK_HARD_NET: " << LogMarker::NetworkOk;
    QTest::newRow("eMMC before memory")
        << "MOSK_HARD_DDR: ok MOSK_HARD_EMMC: " << LogMarker::EmmcBad;

    QTest::newRow("network ok") << "MOSK_HARD_NET: ok" << LogMarker::NetworkOk;
    QTest::newRow("network ok before") << "is ok MOSK_HARD_NET:" << LogMarker::NetworkOk;
    QTest::newRow("network ok first only") << "ok MOSK_HARD_NET: fail" << LogMarker::NetworkBad;
    QTest::newRow("network ok first and later") << "ok MOSK_HARD_NET:ok" << LogMarker::NetworkOk;
    QTest::newRow("network OK") << "MOSK_HARD_NET: OK" << LogMarker::NetworkBad;
    QTest::newRow("network fail-ok") << "MOSK_HARD_NET:fail-ok" << LogMarker::NetworkOk;
    QTest::newRow("network without value") << "MOSK_HARD_NET:" << LogMarker::NetworkBad;

    QTest::newRow("eMMC ok") << "MOSK_HARD_EMMC: ok" << LogMarker::EmmcOk;
    QTest::newRow("eMMC ok, no blank") << "MOSK_HARD_EMMC:ok" << LogMarker::EmmcOk;
    QTest::newRow("eMMC ok and size") << "MOSK_HARD_EMMC:ok 7.1G" << LogMarker::EmmcOk;
    QTest::newRow("eMMC ok before") << "is ok MOSK_HARD_EMMC: fail" << LogMarker::EmmcBad;
    QTest::newRow("eMMC OK") << "MOSK_HARD_EMMC: OK" << LogMarker::EmmcBad;
    QTest::newRow("eMMC without value") << "MOSK_HARD_EMMC:" << LogMarker::EmmcBad;

    QTest::newRow("memory ok") << "MOSK_HARD_DDR: ok" << LogMarker::DdrOk;
    QTest::newRow("memory ok, no blank") << "MOSK_HARD_DDR:ok" << LogMarker::DdrOk;
    QTest::newRow("memory fail-ok") << "MOSK_HARD_DDR:fail-ok" << LogMarker::DdrOk;
    QTest::newRow("memory ok before") << "ok ok MOSK_HARD_DDR: fail" << LogMarker::DdrBad;
    QTest::newRow("memory without value") << "MOSK_HARD_DDR:" << LogMarker::DdrBad;
    QTest::newRow("no colon") << "MOSK_HARD_DDR ok" << LogMarker::None;
}

void FlashingLogTest::markerIsFound()
{
    QFETCH(QString, line);
    QFETCH(LogMarker, marker);
    QVERIFY(FindMarker(line) == marker);
}

// The log that the other tests play is worth something only while it has what real ones have.
void FlashingLogTest::goodRunLooksAsRealOnesDo()
{
    const QString log = QString::fromStdString(FlashingLog({}));
    QVERIFY(log.count('\n') > 1000);
    const QString beforeSuccess = log.left(log.indexOf("sprite success"));
    QVERIFY(beforeSuccess.count("fail") + beforeSuccess.count("err") >= 29);
    QVERIFY(log.contains(QRegularExpression("^\\[\\d+\\]", QRegularExpression::MultilineOption)));
    QVERIFY(log.contains(QRegularExpression("\n\\[\\d+\\.\\d+\\] ")));
    QVERIFY(log.contains(QRegularExpression("\n\\[ +\\d+\\.\\d+\\] ")));
    QVERIFY(log.contains(QRegularExpression("\n\\[\\d+\\][^\r\n]*\\[\\d+\\.\\d+\\]")));
    QVERIFY(log.contains(QRegularExpression("[^\r\n]+a40i login: [^\r\n]+\r\n")));
    QVERIFY(log.contains("]begin to erase\r\n"));
    QVERIFY(log.endsWith("\r\n"));
    QVERIFY(QString::fromStdString(FlashingLog({})) == log);
}

QTEST_MAIN(FlashingLogTest)
#include "FlashingLogTest.moc"
