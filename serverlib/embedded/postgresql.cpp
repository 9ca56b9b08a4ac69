// Stores in PostgreSQL. Three timeouts: statement_timeout and lock_timeout, kept by the server, and
// response_timeout, kept by our watchdog. We send PREPARE/EXECUTE ourselves: QtSql prints warnings
// when it frees statements of a lost connection.

#include "database_p.h"
#include "postgresqlurl_p.h"
#include "schemacheck_p.h"
#include "serverprobe_p.h"
#include "socketcopy_p.h"

#include <QSqlDriver>

#include <memory>
#include <system_error>

#include <libpq-fe.h>

namespace TQServerInternal {

namespace {

// Null if the driver has no libpq connection. The handle's type name differs between Qt 5 and Qt 6.
PGconn *connectionOf(const QSqlDatabase &database)
{
    const QVariant handle = database.driver()->handle();
    const QByteArray type = handle.typeName();
    if (type != "PGconn*" && type != "pg_conn*") {
        return nullptr;
    }
    return *static_cast<PGconn *const *>(handle.constData());
}

// A value as part of a statement. It is null, bytes, text or a number; toString() of anything else
// would not be quoted.
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

class PostgresqlDatabase : public Database
{
public:
    using Database::Database;

    bool checkSchema() override
    {
        const auto count = ask(QLatin1String(dialect().hasSchema));
        if (!count) {
            return false;
        }
        return count->toInt() > 0 ? checkVersion(*this) : refuseStranger(*this);
    }

protected:
    bool connect(bool /*create*/) override
    {
        // QtSql has no time limit while it connects; a probe has.
        const QString reason = probeServer(conninfo(address()), address().responseTimeout);
        if (!reason.isEmpty()) {
            return refuse(causeOf(reason));
        }
        if (!openSql(address().database)) {
            return false;
        }
        PGconn *const connection = connectionOf(sql());
        if (!connection) {
            return fail(QStringLiteral("Qt's database driver has no libpq connection"));
        }
        // Otherwise notices would go to stderr.
        PQsetNoticeReceiver(
            connection, [](void *, const PGresult *) {}, nullptr);
        PQsetErrorVerbosity(connection, PQERRORS_TERSE);
        setServer({ PQhost(connection), QByteArray(PQport(connection)).toInt() });
        return startWatchdog(PQsocket(connection));
    }

    bool prepareStatement(Statement &statement, const QString &text) override
    {
        return statement.query.exec(
            QStringLiteral("PREPARE ") + statement.name + QStringLiteral(" AS ") + numbered(text, "$"));
    }

    bool runStatement(Statement &statement, const QVariantList &values) override
    {
        QString text = QStringLiteral("EXECUTE ") + statement.name;
        if (!values.isEmpty()) {
            QStringList literals;
            for (const QVariant &value : values) {
                literals += literal(connectionOf(sql()), value);
            }
            text += QLatin1Char('(') + literals.join(QLatin1Char(',')) + QLatin1Char(')');
        }
        return statement.query.exec(text);
    }

private:
    bool startWatchdog(int socketNumber)
    {
        try {
            // A copy, because libpq may close its descriptor and the number be reused.
            const auto socket = std::make_shared<SocketCopy>(socketNumber);
            setWatchdog(std::make_unique<Watchdog>(
                [socket] { socket->shutDown(); }, address().responseTimeout));
            return true;
        } catch (const std::system_error &error) {
            return refuse(QString::fromLocal8Bit(error.what()));
        }
    }
};

std::unique_ptr<Database> makeDatabase(const StoreAddress &address)
{
    return std::make_unique<PostgresqlDatabase>(address);
}

}  // namespace

const Dialect POSTGRESQL {
    /*form*/ "postgresql://USER@HOST:PORT/DB",
    /*isUrl*/ isPostgresqlUrl,
    /*parse*/ parsePostgresqlUrl,
    /*makeDatabase*/ makeDatabase,
    /*driver*/ "QPSQL",
    /*journal*/ nullptr,
    /*log*/ nullptr,
    /*blob*/ "BYTEA",
    /*collation*/ "\"C\"",
    /*hasSchema*/
    "SELECT count(*) FROM pg_tables WHERE tablename = 'tq_schema' "
    "AND schemaname = ANY (current_schemas(false))",
    /*beginReading*/ "BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY",
    /*beginWriting*/ "BEGIN ISOLATION LEVEL READ COMMITTED",
    // The number is an arbitrary key of our advisory lock.
    /*waitForWriters*/ "SELECT pg_advisory_xact_lock(8025545361711)",
};

}  // namespace TQServerInternal
