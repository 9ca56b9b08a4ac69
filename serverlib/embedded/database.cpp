// What all stores have in common: prepared statements, transactions, errors.

#include "database_p.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace TQServerInternal {

bool Database::open(bool create)
{
    disconnect();
    m_error.clear();
    m_isSuspect = false;
    if (!QCoreApplication::instance()) {
        return fail(QStringLiteral("a database needs a QCoreApplication"));
    }
    return connect(create);
}

void Database::forgetStatements() { m_statements.clear(); }

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

Statement *Database::run(const QString &text, const QVariantList &values)
{
    auto found = m_statements.find(text);
    if (found == m_statements.end()) {
        const QString name = QStringLiteral("tq%1").arg(m_statements.size());
        found = m_statements.emplace(text, makeStatement(text, name)).first;
    }
    Statement &statement = *found->second;
    if (!statement.run(values)) {
        failed(statement.error());
        statement.finish();
        return nullptr;
    }
    return &statement;
}

bool Database::finish(Statement &statement)
{
    const QString error = statement.error();
    statement.finish();  // an unfinished one keeps the store locked
    return error.isEmpty() ? isTrustworthy() : failed(error);
}

std::optional<QVariant> Database::ask(const QString &text, const QVariantList &values)
{
    Statement *statement = run(text, values);
    if (!statement) {
        return {};
    }
    const QVariant value = statement->next() ? statement->value(0) : QVariant();
    return finish(*statement) ? std::make_optional(value) : std::nullopt;
}

QVariant Database::valueOf(const QString &statement, const QVariantList &values)
{
    return ask(statement, values).value_or(QVariant());
}

bool Database::execute(const QString &text)
{
    const auto statement = makeStatement(text, QString());
    return statement->run({}) || failed(statement->error());
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
        statement.second->finish();
    }
    return execute(QStringLiteral("COMMIT"));
}

void Database::rollback()
{
    for (auto &statement : m_statements) {
        statement.second->finish();
    }
    if (isConnected()) {  // a lost connection has ended its transaction, too
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

bool Database::failed(const QString &message)
{
    m_isSuspect = true;
    return refuse(causeOf(message));
}

QString Statement::numbered(const QString &statement, const char *prefix)
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
