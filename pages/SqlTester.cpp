#include "pages/SqlTester.h"

#include "instruments/ResultField.h"
#include "instruments/Rows.h"
#include "texts/MoskTranslator.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QVBoxLayout>

#include <initializer_list>

namespace
{

/// Shows the result of a step in its field. If a step fails, the fields of the later steps fail
/// too.
void Show(std::initializer_list<QLineEdit*> fields, bool ok)
{
    for (QLineEdit* field : fields) {
        ShowVerdict(field, MoskTranslator::Translate(ok ? "Label_1010001" : "Label_1010002"), ok);
    }
    PaintPage();
}

} // namespace

SqlTester::SqlTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 20, 40, 20);
    layout->setSpacing(20);

    auto* steps = new QWidget(this);
    steps->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    layout->addWidget(steps);
    auto* grid = new QGridLayout(steps);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(10);

    const QString resultText = MoskTranslator::Translate("Label_1000403");
    m_path = new QLineEdit("/var/log/sqlite.db", steps);
    m_path->setEnabled(false);
    m_create = new QLineEdit(resultText, steps);
    m_insert = new QLineEdit(resultText, steps);
    m_delete = new QLineEdit(resultText, steps);
    const QSize size(80, 30);
    QPushButton* test = AddRow(grid, 0, size, {"Label_1000400", m_path, {"Label_1000401"}});
    AddWideRow(grid, 1, size, {"Label_1000402", m_create});
    AddWideRow(grid, 2, size, {"Label_1000404", m_insert});
    AddWideRow(grid, 3, size, {"Label_1000405", m_delete});
    for (QLineEdit* field : {m_path, m_create, m_insert, m_delete}) {
        field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    }

    m_result = new QTableView(this);
    // The Tab key leaves the table. The operator taps its cells.
    m_result->setTabKeyNavigation(false);
    AddRow(layout, {"Label_1000406", m_result});

    connect(test, &QPushButton::clicked, this, &SqlTester::OnStartSqlTest);
}

SqlTester::~SqlTester()
{
    // Qt warns when a connection is removed that is still in use.
    m_model.clear();
    const QString connection = m_database.connectionName();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(connection);
}

void SqlTester::OnStartSqlTest(bool /*checked*/)
{
    m_database.close();
    ShowDetecting(m_create);

    const QString path = m_path->text();
    if (QFileInfo(path).isFile()) {
        QFile::remove(path);
    }
    // All runs use one connection. The rows on show belong to it, also when a later run fails.
    if (m_database.connectionName().isEmpty()) {
        m_database = QSqlDatabase::addDatabase("QSQLITE");
    }
    m_database.setDatabaseName(path);
    if (!m_database.open()) {
        qWarning() << "Cannot open" << path << m_database.lastError();
        Show({m_create, m_insert, m_delete}, false);
        return;
    }
    if (!Execute("CREATE TABLE t_student(id INT PRIMARY KEY NOT NULL,name TEXT NOT NULL,"
                 "score REAL NOT NULL);")) {
        Show({m_create, m_insert, m_delete}, false);
        return;
    }
    Show({m_create}, true);
    if (!InsertRows()) {
        Show({m_insert, m_delete}, false);
        return;
    }
    Show({m_insert}, true);
    if (!Execute(QString("DELETE FROM t_student WHERE id=%1;").arg(3))) {
        Show({m_delete}, false);
        return;
    }
    Show({m_delete}, true);
    m_model.setQuery("SELECT * FROM t_student", m_database);
    m_result->setModel(&m_model);
}

bool SqlTester::Execute(const QString& statement)
{
    QSqlQuery query(m_database);
    if (!query.exec(statement)) {
        qWarning() << statement << query.lastError();
        return false;
    }
    return true;
}

bool SqlTester::InsertRows()
{
    const char* const names[] = {"Label_1000407", "Label_1000408", "Label_1000409",
                                 "Label_1000410"};
    const char* const scores[] = {"96", "98", "95", "94"};
    for (int id = 1; id <= 4; ++id) {
        if (!Execute(QString("INSERT INTO t_student VALUES(%1, '%2', %3);")
                         .arg(id)
                         .arg(MoskTranslator::Translate(names[id - 1]))
                         .arg(scores[id - 1]))) {
            return false;
        }
    }
    return true;
}
