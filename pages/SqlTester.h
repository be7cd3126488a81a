#pragma once

#include <QSqlDatabase>
#include <QSqlQueryModel>
#include <QWidget>

class QLineEdit;
class QTableView;

/// Checks the SQLite driver and the storage below it: creates a new database, fills it, deletes a
/// row and shows the others.
class SqlTester : public QWidget
{
    Q_OBJECT

public:
    explicit SqlTester(QWidget* parent);

    /// Closes the database; its file stays.
    ~SqlTester() override;

private slots:
    void OnStartSqlTest(bool checked);

private:
    bool Execute(const QString& statement);
    bool InsertRows();

    QSqlDatabase m_database;
    QSqlQueryModel m_model;
    QLineEdit* m_path = nullptr;
    QLineEdit* m_create = nullptr;
    QLineEdit* m_insert = nullptr;
    QLineEdit* m_delete = nullptr;
    QTableView* m_result = nullptr;
};
