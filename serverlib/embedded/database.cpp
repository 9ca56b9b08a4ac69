// What all stores have in common: the QtSql connection, prepared statements, transactions, errors.

#include "database_p.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSqlError>

#include <atomic>

namespace TQServerInternal {

bool Database::open(bool create)
{
    close();
    m_error.clear();
    if (!QCoreApplication::instance()) {
        return fail(QStringLiteral("a database needs a QCoreApplication"));
    }
    const QLatin1String driver(dialect().driver);
    if (!QSqlDatabase::isDriverAvailable(driver)) {
        return fail(QStringLiteral("Qt has no database driver %1").arg(driver));
    }
    return connect(create);
}

bool Database::openSql(const QString &databaseName)
{
    static std::atomic<int> connections { 0 };
    m_connection = QStringLiteral("tqserver-%1").arg(++connections);
    m_sql = QSqlDatabase::addDatabase(QLatin1String(dialect().driver), m_connection);
    m_sql.setDatabaseName(databaseName);
    m_sql.setHostName(m_address.host);
    m_sql.setUserName(m_address.user);
    m_sql.setConnectOptions(m_address.options);
    m_isSuspect = !m_sql.open();
    return !m_isSuspect || failed(m_sql.lastError());
}

void Database::close()
{
    if (m_connection.isNull()) {
        return;
    }
    m_statements.clear();
    m_sql = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
    m_connection = QString();
    m_watchdog.reset();
}

bool Database::hasSchema()
{
    const QVariant count = valueOf(QLatin1String(dialect().hasSchema));
    return count.toInt() > 0;
}

bool Database::recover()
{
    if (!m_isSuspect || m_address.isMemory()) {
        return true;
    }
    m_isSuspect = !open(false) || !checkSchema();
    return !m_isSuspect;
}

QSqlQuery *Database::run(const QString &text, const QVariantList &values)
{
    const Watchdog::Wait wait(m_watchdog.get());
    auto found = m_statements.find(text);
    if (found == m_statements.end()) {
        Statement statement { QSqlQuery(m_sql), QStringLiteral("tq%1").arg(m_statements.size()) };
        statement.query.setForwardOnly(true);
        if (!prepareStatement(statement, text)) {
            failed(statement.query.lastError());
            return nullptr;
        }
        found = m_statements.emplace(text, std::move(statement)).first;
    }
    QSqlQuery &query = found->second.query;
    if (!runStatement(found->second, values)) {
        failed(query.lastError());
        query.finish();
        return nullptr;
    }
    return &query;
}

bool Database::next(QSqlQuery &query)
{
    const Watchdog::Wait wait(m_watchdog.get());
    return query.next();
}

bool Database::finish(QSqlQuery &query)
{
    const Watchdog::Wait wait(m_watchdog.get());
    const QSqlError error = query.lastError();
    query.finish();  // an unfinished query keeps the store locked
    return error.isValid() ? failed(error) : isTrustworthy();
}

std::optional<QVariant> Database::ask(const QString &statement, const QVariantList &values)
{
    QSqlQuery *query = run(statement, values);
    if (!query) {
        return {};
    }
    const QVariant value = next(*query) ? query->value(0) : QVariant();
    return finish(*query) ? std::make_optional(value) : std::nullopt;
}

QVariant Database::valueOf(const QString &statement, const QVariantList &values)
{
    return ask(statement, values).value_or(QVariant());
}

bool Database::execute(const QString &statement)
{
    const Watchdog::Wait wait(m_watchdog.get());
    QSqlQuery query(m_sql);
    return query.exec(statement) || failed(query.lastError());
}

bool Database::beginReading() { return execute(QLatin1String(dialect().beginReading)); }

bool Database::beginWriting()
{
    return execute(QLatin1String(dialect().beginWriting)) &&
        (!dialect().waitForWriters || execute(QLatin1String(dialect().waitForWriters)));
}

bool Database::commit()
{
    for (auto &statement : m_statements) {
        statement.second.query.finish();
    }
    return execute(QStringLiteral("COMMIT"));
}

void Database::rollback()
{
    for (auto &statement : m_statements) {
        statement.second.query.finish();
    }
    if (m_sql.isOpen()) {  // a lost connection has ended its transaction, too
        execute(QStringLiteral("ROLLBACK"));
    }
}

bool Database::fail(const QString &error)
{
    m_error = error;
    return false;
}

bool Database::refuse(const QString &reason)
{
    return fail(QStringLiteral("%1: %2").arg(m_address.label, reason));
}

bool Database::failed(const QSqlError &error)
{
    m_isSuspect = true;
    if (m_watchdog && m_watchdog->hasBitten()) {
        return refuse(noAnswer(m_watchdog->limit()));
    }
    return refuse(
        causeOf(error.databaseText().isEmpty() ? error.driverText() : error.databaseText()));
}

QString Database::numbered(const QString &statement, const char *prefix)
{
    const QStringList parts = statement.split(QLatin1Char('?'));
    QString text = parts.first();
    for (int i = 1; i < int(parts.size()); ++i) {
        text += QLatin1String(prefix) + QString::number(i) + parts.at(i);
    }
    return text;
}

QString Database::causeOf(const QString &message)
{
    // "ERROR:  division by zero at character 8 (22012)"
    static const QRegularExpression severity(QStringLiteral("^(ERROR|FATAL|PANIC): +"));
    static const QRegularExpression place(
        QStringLiteral("( at character \\d+)?( ?\\([0-9A-Z]{0,5}\\))?$"));
    const QString line = message.trimmed().section(QLatin1Char('\n'), 0, 0).simplified();
    const QString cause = QString(line).remove(severity).remove(place);
    return cause.isEmpty() ? QStringLiteral("database error") : cause;
}

}  // namespace TQServerInternal
