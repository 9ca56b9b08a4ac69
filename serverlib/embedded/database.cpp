#include "database_p.h"

#include "schemacheck_p.h"
#include "serverprobe_p.h"
#include "socketcopy_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QUrl>

#include <atomic>
#include <system_error>

#include <libpq-fe.h>

namespace TQServerInternal {

namespace {

// The name that SQLite opens a file by.
QString fileName(const StoreAddress &address, const char *mode)
{
    return QStringLiteral("file:") +
        QString::fromLatin1(QUrl::toPercentEncoding(address.path, "/")) + QStringLiteral("?mode=") +
        QLatin1String(mode);
}

QString missing(const StoreAddress &address)
{
    const QFileInfo file(address.path);
    if (!file.exists()) {
        return QStringLiteral("no such file");
    }
    return file.isFile() ? QString() : QStringLiteral("not a file");
}

bool isOpenElsewhere(const QString &path)
{
    return QFileInfo::exists(path + QLatin1String("-wal"));
}

// Changes with every change of a file, and while somebody has it open to write.
QString stampOf(const QString &path)
{
    const QFileInfo file(path);
    return QStringLiteral("%1 %2 %3")
        .arg(file.size())
        .arg(file.lastModified().toMSecsSinceEpoch())
        .arg(int(isOpenElsewhere(path)));
}

// Null when the driver has no connection of libpq's. Its type has another name on each Qt line.
PGconn *connectionOf(const QSqlDatabase &database)
{
    const QVariant handle = database.driver()->handle();
    const QByteArray type = handle.typeName();
    return type == "PGconn*" || type == "pg_conn*"
        ? *static_cast<PGconn *const *>(handle.constData())
        : nullptr;
}

// A value as part of a statement.
QString literal(PGconn *connection, const QVariant &value)
{
    if (value.isNull()) {
        return QStringLiteral("NULL");
    }
    if (value.userType() == QMetaType::QByteArray) {
        return QStringLiteral("decode('%1', 'hex')")
            .arg(QString::fromLatin1(value.toByteArray().toHex()));
    }
    if (value.userType() != QMetaType::QString) {
        return value.toString();
    }
    const QByteArray text = value.toString().toUtf8();
    char *const quoted = PQescapeLiteral(connection, text.constData(), size_t(text.size()));
    const QString result = QString::fromUtf8(quoted);
    PQfreemem(quoted);
    return result;
}

// The statement with "$1", "$2" ... in place of its "?".
QString numbered(const QString &statement)
{
    const QStringList parts = statement.split(QLatin1Char('?'));
    QString text = parts.first();
    for (int i = 1; i < int(parts.size()); ++i) {
        text += QLatin1Char('$') + QString::number(i) + parts.at(i);
    }
    return text;
}

// The cause alone: no severity, no part of a statement, no code.
QString oneLine(const QString &text)
{
    static const QRegularExpression severity(QStringLiteral("^(ERROR|FATAL|PANIC): +"));
    static const QRegularExpression behind(
        QStringLiteral("( at character \\d+)?( ?\\([0-9A-Z]{0,5}\\))?$"));
    const QString line = text.trimmed().section(QLatin1Char('\n'), 0, 0).simplified();
    const QString cause = QString(line).remove(severity).remove(behind);
    return cause.isEmpty() ? QStringLiteral("database error") : cause;
}

QString oneLine(const QSqlError &error)
{
    return oneLine(error.databaseText().isEmpty() ? error.driverText() : error.databaseText());
}

}  // namespace

bool Database::open(const StoreAddress &address, bool create)
{
    close();
    m_address = address;
    m_error.clear();
    m_stamp.clear();
    if (!QCoreApplication::instance()) {
        return fail(QStringLiteral("a database needs a QCoreApplication"));
    }
    if (!QSqlDatabase::isDriverAvailable(QLatin1String(address.dialect->driver))) {
        return fail(QStringLiteral("Qt has no database driver %1")
                        .arg(QLatin1String(address.dialect->driver)));
    }
    return address.dialect == &SQLITE ? openFile(create) : openServer();
}

bool Database::connect(const QString &databaseName)
{
    static std::atomic<int> connections { 0 };
    m_connection = QStringLiteral("tqserver-%1").arg(++connections);
    m_sql = QSqlDatabase::addDatabase(QLatin1String(m_address.dialect->driver), m_connection);
    m_sql.setDatabaseName(databaseName);
    m_sql.setHostName(m_address.host);
    m_sql.setUserName(m_address.user);
    m_sql.setConnectOptions(m_address.dialect == &SQLITE
            ? QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=%1").arg(m_address.busyTimeout)
            : m_address.options);
    m_suspect = !m_sql.open();
    return !m_suspect || failed(m_sql.lastError());
}

bool Database::openFile(bool create)
{
    m_server = { "localhost", 0 };
    if (m_address.isMemory()) {
        return connect(QStringLiteral(":memory:"));
    }
    const QString reason = create ? QString() : missing(m_address);
    if (!reason.isNull()) {
        return fail(QStringLiteral("%1: %2").arg(m_address.label(), reason));
    }
    // Who reads marks where in a file beside the store. Who may not write there reads without, as
    // long as nobody else has the store open; see isUntouched().
    const QFileInfo file(m_address.path);
    if (!create && !(file.isWritable() && QFileInfo(file.absolutePath()).isWritable()) &&
        !isOpenElsewhere(m_address.path)) {
        m_stamp = stampOf(m_address.path);
        return connect(fileName(m_address, "ro&immutable=1"));
    }
    return connect(fileName(m_address, create ? "rwc" : "rw"));
}

bool Database::openServer()
{
    const QString reason = probeServer(m_address);
    if (!reason.isEmpty()) {
        return fail(QStringLiteral("%1: %2").arg(m_address.label(), oneLine(reason)));
    }
    if (!connect(m_address.database)) {
        return false;
    }
    PGconn *const connection = connectionOf(m_sql);
    if (!connection) {
        return fail(QStringLiteral("Qt's database driver has no libpq connection"));
    }
    PQsetNoticeReceiver(
        connection, [](void *, const PGresult *) {}, nullptr);  // else on stderr
    PQsetErrorVerbosity(connection, PQERRORS_TERSE);
    m_server = { PQhost(connection), QByteArray(PQport(connection)).toInt() };
    try {
        const auto socket = std::make_shared<SocketCopy>(PQsocket(connection));
        m_watchdog =
            std::make_unique<Watchdog>([socket] { socket->shutDown(); }, m_address.responseTimeout);
    } catch (const std::system_error &error) {
        const QString text = QString::fromLocal8Bit(error.what());
        return fail(QStringLiteral("%1: %2").arg(m_address.label(), text));
    }
    return true;
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
    const QVariant count = valueOf(QLatin1String(m_address.dialect->hasSchema));
    return count.toInt() > 0;
}

bool Database::recover()
{
    if (!m_suspect || m_address.isMemory()) {
        return true;
    }
    m_suspect = !open(m_address, false) || !checkSchema(*this);
    return !m_suspect;
}

bool Database::prepare(const QString &text, Statement &statement)
{
    statement.query.setForwardOnly(true);
    if (m_address.dialect == &SQLITE) {
        return statement.query.prepare(text);
    }
    // Not by QtSql, which warns when it frees a statement of a connection that is lost.
    statement.name = QStringLiteral("tq%1").arg(m_statements.size());
    return statement.query.exec(
        QStringLiteral("PREPARE ") + statement.name + QStringLiteral(" AS ") + numbered(text));
}

QSqlQuery *Database::run(const QString &text, const QVariantList &values)
{
    const Watchdog::Wait wait(m_watchdog.get());
    auto found = m_statements.find(text);
    if (found == m_statements.end()) {
        Statement statement { QSqlQuery(m_sql), QString() };
        if (!prepare(text, statement)) {
            failed(statement.query.lastError());
            return nullptr;
        }
        found = m_statements.emplace(text, std::move(statement)).first;
    }
    const Statement &statement = found->second;
    QSqlQuery &query = found->second.query;
    bool isDone = false;
    if (m_address.dialect == &SQLITE) {
        for (int i = 0; i < values.size(); ++i) {
            query.bindValue(i, values.at(i));
        }
        isDone = query.exec();
    } else {
        QStringList literals;
        for (const QVariant &value : values) {
            literals += literal(connectionOf(m_sql), value);
        }
        isDone = query.exec(QStringLiteral("EXECUTE ") + statement.name +
            (literals.isEmpty()
                    ? QString()
                    : QLatin1Char('(') + literals.join(QLatin1Char(',')) + QLatin1Char(')')));
    }
    if (!isDone) {
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
    return error.isValid() ? failed(error) : isUntouched();
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

bool Database::beginReading() { return execute(QLatin1String(m_address.dialect->beginReading)); }

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
    execute(QStringLiteral("ROLLBACK"));
}

bool Database::isWhole()
{
    if (!m_address.isFile()) {
        return true;
    }
    const auto verdict = ask(QStringLiteral("PRAGMA integrity_check(1)"));
    return verdict &&
        (verdict->toString() == QLatin1String("ok") ||
            fail(m_address.label() + QStringLiteral(": database disk image is malformed")));
}

// A store that is read without locks must stay as it was when it was opened.
bool Database::isUntouched()
{
    if (m_stamp.isNull() || m_stamp == stampOf(m_address.path)) {
        return true;
    }
    m_suspect = true;
    return fail(
        QStringLiteral("%1: the store was changed while it was read").arg(m_address.label()));
}

bool Database::fail(const QString &error)
{
    m_error = error;
    return false;
}

bool Database::failed(const QSqlError &error)
{
    m_suspect = true;
    const bool isSilent = m_watchdog && m_watchdog->hasBitten();
    const QString reason = isSilent ? noAnswer(m_watchdog->limit()) : oneLine(error);
    return fail(QStringLiteral("%1: %2").arg(m_address.label(), reason));
}

}  // namespace TQServerInternal
