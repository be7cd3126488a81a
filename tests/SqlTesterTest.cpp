#include "pages/SqlTester.h"
#include "frame/BodyWidget.h"
#include "simulated-board/Board.h"
#include "tests/OpenDescriptors.h"
#include "tests/PageFixture.h"
#include "tests/Warnings.h"

#include <QDir>
#include <QHeaderView>
#include <QProcess>
#include <QPushButton>
#include <QTableView>

namespace
{

const char* const database = "/var/log/sqlite.db";
const QColor black(0, 0, 0);
const QColor green(12, 141, 66);
const QColor red(255, 0, 0);

enum Row { Path, Create, Insert, Delete };

/// The answer of the sqlite3 tool to a query of the file.
QString Ask(const QString& query)
{
    QProcess sqlite;
    sqlite.start("sqlite3", {database, query});
    sqlite.waitForFinished();
    return QString::fromUtf8(sqlite.readAll());
}

/// Mounts a file system of its own at /var/log.
void Mount(const QString& options)
{
    QCOMPARE(QProcess::execute("mount", {"-t", "tmpfs", "-o", options, "tmpfs", "/var/log"}), 0);
}

void FillTheStorage()
{
    QFile file("/var/log/filler");
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered));
    while (file.write(QByteArray(512, 'x')) > 0) {
    }
}

} // namespace

class SqlTesterTest : public PageFixture<SqlTester>
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void goodStoragePassesEachStep();
    void resultIsTheRowsThatAreLeft();
    void tabKeyLeavesTheResult();
    void namesAreOfTheLanguage();
    void fileIsThereForOthers();
    void stepsAreShownAsTheyHappen();

    void secondRunBeginsAnew();
    void leftoverFileIsReplaced_data();
    void leftoverFileIsReplaced();
    void runsAndPageChangesLeaveNothingToWarnOf();

    void storageThatCannotBeWrittenFailsEachStep_data();
    void storageThatCannotBeWrittenFailsEachStep();
    void failureLeavesTheResultAsItWas();
    void storageThatFillsUpFailsFromThereOn_data();
    void storageThatFillsUpFailsFromThereOn();
    void repairedStoragePassesAgain();

private:
    QWidget* Steps() { return m_page->layout()->itemAt(0)->widget(); }
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(Steps(), row, 1); }
    QTableView* Result() { return m_page->findChild<QTableView*>(); }
    QStringList ResultRows();
    void Test() { QTest::mouseClick(InGrid<QPushButton>(Steps(), 0, 2), Qt::LeftButton); }
    void CompareVerdicts(const QList<bool>& passed);

    bool m_mounted = false;
};

void SqlTesterTest::init()
{
    Board::Become("language english\n");
    Speak("english");
    QProcess::execute("rm", {"-rf", database});
    Rebuild();
}

void SqlTesterTest::cleanup()
{
    m_page.reset();
    if (m_mounted) {
        QCOMPARE(QProcess::execute("umount", {"/var/log"}), 0);
        m_mounted = false;
    }
}

QStringList SqlTesterTest::ResultRows()
{
    QStringList rows;
    const QAbstractItemModel* model = Result()->model();
    for (int row = 0; model != nullptr && row < model->rowCount(); ++row) {
        QStringList columns;
        for (int column = 0; column < model->columnCount(); ++column) {
            columns += model->index(row, column).data().toString();
        }
        rows += columns.join('|');
    }
    return rows;
}

void SqlTesterTest::CompareVerdicts(const QList<bool>& passed)
{
    for (int i = 0; i < 3; ++i) {
        QLineEdit* field = Field(Row(Create + i));
        QCOMPARE(field->text(), QString(passed[i] ? "Succeeded!" : "Failed!"));
        QCOMPARE(TextColour(field), passed[i] ? green : red);
    }
}

void SqlTesterTest::goodStoragePassesEachStep()
{
    QCOMPARE(TextColour(Field(Create)), black);

    Test();

    CompareVerdicts({true, true, true});
}

void SqlTesterTest::resultIsTheRowsThatAreLeft()
{
    QVERIFY(Result()->model() == nullptr);

    Test();

    QCOMPARE(ResultRows(), QStringList({"1|Zhang San|96", "2|Li Si|98", "4|Zhao Liu|94"}));
    QStringList headers;
    for (int column = 0; column < 3; ++column) {
        headers += Result()->model()->headerData(column, Qt::Horizontal).toString();
    }
    QCOMPARE(headers, QStringList({"id", "name", "score"}));
}

void SqlTesterTest::tabKeyLeavesTheResult()
{
    Test();
    m_page->activateWindow();
    Result()->setFocus();
    QTRY_VERIFY(Result()->hasFocus());
    Result()->setCurrentIndex(Result()->model()->index(0, 0));

    QTest::keyClick(Result(), Qt::Key_Tab);

    QVERIFY(!Result()->hasFocus());
}

void SqlTesterTest::namesAreOfTheLanguage()
{
    Speak("chinese");
    Rebuild();

    Test();

    QCOMPARE(Field(Delete)->text(), QString("成功！"));
    QCOMPARE(ResultRows(), QStringList({"1|张三|96", "2|李四|98", "4|赵六|94"}));
    QCOMPARE(Ask("SELECT name FROM t_student"), QString("张三\n李四\n赵六\n"));
}

void SqlTesterTest::fileIsThereForOthers()
{
    Test();

    QCOMPARE(Ask("SELECT * FROM t_student"),
             QString("1|Zhang San|96.0\n2|Li Si|98.0\n4|Zhao Liu|94.0\n"));
    QCOMPARE(Ask("PRAGMA integrity_check"), QString("ok\n"));
    QCOMPARE(Ask("SELECT name, type, \"notnull\", pk FROM pragma_table_info('t_student')"),
             QString("id|INT|1|1\nname|TEXT|1|0\nscore|REAL|1|0\n"));
    m_page.reset();
    QCOMPARE(Ask("SELECT count(*) FROM t_student"), QString("3\n"));
}

void SqlTesterTest::stepsAreShownAsTheyHappen()
{
    QStringList shown;
    for (const Row row : {Create, Insert, Delete}) {
        connect(Field(row), &QLineEdit::textChanged, this,
                [&shown, row](const QString& text) { shown += QString::number(row) + ' ' + text; });
    }

    Test();
    QCOMPARE(shown,
             QStringList({"1 Detecting...", "1 Succeeded!", "2 Succeeded!", "3 Succeeded!"}));

    // The later fields keep what they showed until their step has run again.
    shown.clear();
    Test();
    QCOMPARE(shown, QStringList({"1 Detecting...", "1 Succeeded!"}));
}

void SqlTesterTest::secondRunBeginsAnew()
{
    Test();
    Test();

    CompareVerdicts({true, true, true});
    QCOMPARE(ResultRows().size(), 3);

    Rebuild();
    Test();

    CompareVerdicts({true, true, true});
    QCOMPARE(Ask("SELECT count(*) FROM t_student"), QString("3\n"));
}

void SqlTesterTest::leftoverFileIsReplaced_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("garbage") << QByteArray(100000, '\xA5');
    QTest::newRow("a torn database") << QByteArray("SQLite format 3\0\x10\0\1\1", 20);
}

void SqlTesterTest::leftoverFileIsReplaced()
{
    QFETCH(QByteArray, content);
    Board::WriteFile(database, content);

    Test();

    CompareVerdicts({true, true, true});
    QCOMPARE(ResultRows().size(), 3);
}

void SqlTesterTest::runsAndPageChangesLeaveNothingToWarnOf()
{
    BodyWidget body(nullptr);
    body.resize(1024, 550);
    body.show();
    const int before = OpenDescriptors();
    const Warnings warnings;

    for (int visit = 0; visit < 10; ++visit) {
        body.OpenPage(BodyWidget::DatabasePage);
        auto* page = body.findChild<SqlTester*>();
        auto* button = page->findChild<QPushButton*>();
        for (int run = 0; run < 10; ++run) {
            QTest::mouseClick(button, Qt::LeftButton);
        }
        body.OpenPage(BodyWidget::BasicPage);
    }
    body.OpenPage(BodyWidget::DatabasePage);
    body.OpenPage(BodyWidget::NoPage);

    QCOMPARE(Warnings::Texts().filter("QSql"), QStringList());
    QCOMPARE(OpenDescriptors(), before);
}

void SqlTesterTest::storageThatCannotBeWrittenFailsEachStep_data()
{
    QTest::addColumn<QString>("storage");
    QTest::newRow("read-only") << "ro";
    QTest::newRow("full") << "full";
    QTest::newRow("a folder in the file's place") << "folder";
    QTest::newRow("no folder for it") << "missing";
}

void SqlTesterTest::storageThatCannotBeWrittenFailsEachStep()
{
    QFETCH(QString, storage);
    if (storage == "ro") {
        Mount("ro");
        m_mounted = true;
    } else if (storage == "full") {
        Mount("size=64k");
        m_mounted = true;
        FillTheStorage();
    } else if (storage == "folder") {
        QVERIFY(QDir().mkpath(database));
    } else {
        QVERIFY(QDir().rename("/var/log", "/var/log.away"));
    }

    Test();
    if (storage == "missing") {
        QVERIFY(QDir().rename("/var/log.away", "/var/log"));
    }

    CompareVerdicts({false, false, false});
    QVERIFY(Result()->model() == nullptr);
}

void SqlTesterTest::failureLeavesTheResultAsItWas()
{
    Test();
    const QStringList rows = ResultRows();
    QCOMPARE(rows.size(), 3);

    Mount("ro");
    m_mounted = true;
    Test();

    CompareVerdicts({false, false, false});
    QCOMPARE(ResultRows(), rows);
    QVERIFY(!Result()->grab().isNull());
}

void SqlTesterTest::storageThatFillsUpFailsFromThereOn_data()
{
    QTest::addColumn<int>("after");
    QTest::addColumn<QList<bool>>("passed");
    QTest::newRow("after the table was created") << int(Create) << QList<bool>{true, false, false};
    QTest::newRow("after the rows were inserted") << int(Insert) << QList<bool>{true, true, false};
}

void SqlTesterTest::storageThatFillsUpFailsFromThereOn()
{
    QFETCH(int, after);
    QFETCH(QList<bool>, passed);
    Mount("size=64k");
    m_mounted = true;
    connect(Field(Row(after)), &QLineEdit::textChanged, this, [](const QString& text) {
        if (text == "Succeeded!") {
            FillTheStorage();
        }
    });

    Test();

    CompareVerdicts(passed);
    QVERIFY(Result()->model() == nullptr);
}

void SqlTesterTest::repairedStoragePassesAgain()
{
    QVERIFY(QDir().mkpath(database));
    Test();
    CompareVerdicts({false, false, false});

    QVERIFY(QDir().rmdir(database));
    Test();

    CompareVerdicts({true, true, true});
    QCOMPARE(ResultRows().size(), 3);
}

QTEST_MAIN(SqlTesterTest)
#include "SqlTesterTest.moc"
