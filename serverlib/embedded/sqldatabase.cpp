// Connections and statements of QtSql. Each value in a statement has a name, because QtSql binds by
// name in a sixth of the time that it takes by position.

#include "sqldatabase_p.h"

#include <QSqlError>
#include <QSqlQuery>

#include <atomic>

namespace TQServerInternal {

namespace {

constexpr const char *NAME = ":v";  // and a number: a value

// Empty when there is no error.
QString messageOf(const QSqlError &error)
{
    for (const QString &text : { error.databaseText(), error.driverText() }) {
        if (!text.isEmpty()) {
            return text;
        }
    }
    return error.isValid() ? QStringLiteral("database error") : QString();
}

class SqlStatement : public Statement
{
public:
    SqlStatement(const QSqlDatabase &database, const QString &text)
        : m_query(database), m_text(text)
    {
        m_query.setForwardOnly(true);
    }

    bool run(const QVariantList &values) override
    {
        m_isPrepared = m_isPrepared || m_query.prepare(numbered(m_text, NAME));
        for (int i = int(m_names.size()); i < int(values.size()); ++i) {
            m_names += QLatin1String(NAME) + QString::number(i + 1);
        }
        for (int i = 0; i < int(values.size()); ++i) {
            m_query.bindValue(m_names.at(i), values.at(i));
        }
        return m_isPrepared && m_query.exec();
    }
    bool next() override { return m_query.next(); }
    QVariant value(int column) const override { return m_query.value(column); }
    int changedRows() const override { return m_query.numRowsAffected(); }
    void finish() override { m_query.finish(); }
    QString error() const override { return messageOf(m_query.lastError()); }

private:
    QSqlQuery m_query;
    const QString m_text;
    QStringList m_names;  // of the values
    bool m_isPrepared = false;
};

}  // namespace

std::unique_ptr<Statement> SqlDatabase::makeStatement(const QString &text, const QString &)
{
    return std::make_unique<SqlStatement>(m_sql, text);
}

bool SqlDatabase::openSql(const char *driver, const QString &databaseName)
{
    static std::atomic<int> connections { 0 };
    const QString driverName = QString::fromLatin1(driver);
    if (!QSqlDatabase::isDriverAvailable(driverName)) {
        return fail(QStringLiteral("Qt has no database driver %1").arg(driverName));
    }
    m_connection = QStringLiteral("tqserver-%1").arg(++connections);
    m_sql = QSqlDatabase::addDatabase(driverName, m_connection);
    m_sql.setDatabaseName(databaseName);
    m_sql.setConnectOptions(address().options);
    return m_sql.open() || failed(messageOf(m_sql.lastError()));
}

void SqlDatabase::disconnect()
{
    if (m_connection.isNull()) {
        return;
    }
    forgetStatements();
    m_sql = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
    m_connection = QString();
}

}  // namespace TQServerInternal
