// Stores in PostgreSQL, by libpq. It keeps connect_timeout, the server keeps statement_timeout and
// lock_timeout, and PostgresqlConnection keeps response_timeout. Each statement takes one round
// trip, also the first time, when it is prepared.

#include "database_p.h"
#include "postgresqlconnection_p.h"
#include "postgresqlurl_p.h"
#include "postgresqlwatcher_p.h"
#include "schemacheck_p.h"

#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace TQServerInternal {

namespace {

// Data types of columns, as PostgreSQL's pg_type.dat numbers them.
enum ColumnType : Oid { Bytes = 17, Int8 = 20, Int2 = 21, Int4 = 23, Float4 = 700, Float8 = 701 };

QByteArray unescaped(const char *text)
{
    struct Free
    {
        void operator()(unsigned char *bytes) const { PQfreemem(bytes); }
    };
    size_t size = 0;
    const std::unique_ptr<unsigned char, Free> bytes(
        PQunescapeBytea(reinterpret_cast<const unsigned char *>(text), &size));
    return QByteArray(reinterpret_cast<const char *>(bytes.get()), int(size));
}

// The values of a statement as libpq takes them: bytes as they are, all others as text.
class Parameters
{
public:
    explicit Parameters(const QVariantList &values)
    {
        m_contents.reserve(size_t(values.size()));
        for (const QVariant &value : values) {
            const bool isBinary = value.userType() == QMetaType::QByteArray;
            m_contents.push_back(isBinary ? value.toByteArray() : textOf(value));
            m_values.push_back(value.isNull() ? nullptr : m_contents.back().constData());
            m_lengths.push_back(int(m_contents.back().size()));
            m_formats.push_back(isBinary ? 1 : 0);
        }
    }

    bool send(PGconn *connection, const char *statement) const
    {
        return PQsendQueryPrepared(connection, statement, int(m_values.size()), m_values.data(),
                   m_lengths.data(), m_formats.data(), 0) == 1;
    }

private:
    static QByteArray textOf(const QVariant &value)
    {
        const bool isReal = value.userType() == QMetaType::Double;
        return isReal
            ? QByteArray::number(value.toDouble(), 'g', std::numeric_limits<double>::max_digits10)
            : value.toString().toUtf8();
    }

    std::vector<QByteArray> m_contents;
    std::vector<const char *> m_values;
    std::vector<int> m_lengths;
    std::vector<int> m_formats;
};

class PostgresqlStatement : public Statement
{
public:
    PostgresqlStatement(PostgresqlConnection &connection, const QString &text, const QString &name)
        : m_connection(connection), m_text(numbered(text, "$").toUtf8()), m_name(name.toUtf8())
    {
    }

    bool run(const QVariantList &values) override
    {
        m_connection.drain();
        m_error.clear();
        const bool isSent = (m_isPrepared || sendPreparation()) &&
            Parameters(values).send(m_connection.get(), m_name.constData());
        if (!isSent) {
            setError(nullptr);
        }
        m_connection.sync();
        m_isPrepared = m_isPrepared || (isSent && takePrepared());
        if (!isSent || !m_isPrepared) {
            return false;
        }
        PQsetSingleRowMode(m_connection.get());
        // The statement may fail before its first row, so that row is fetched here.
        m_isRowPending = fetch();
        return m_error.isEmpty();
    }
    bool next() override
    {
        const bool isFetched = std::exchange(m_isRowPending, false);
        return isFetched || (m_hasRow && fetch());
    }
    QVariant value(int column) const override
    {
        if (PQgetisnull(m_row.get(), 0, column) == 1) {
            return {};
        }
        const char *text = PQgetvalue(m_row.get(), 0, column);
        const int size = PQgetlength(m_row.get(), 0, column);
        switch (PQftype(m_row.get(), column)) {
        case Bytes:
            return unescaped(text);
        case Int8:
        case Int2:
        case Int4:
            return QByteArray::fromRawData(text, size).toLongLong();
        case Float4:
        case Float8:
            return QByteArray::fromRawData(text, size).toDouble();
        default:
            return QString::fromUtf8(text, size);
        }
    }
    int changedRows() const override { return QByteArray(PQcmdTuples(m_row.get())).toInt(); }
    void finish() override
    {
        m_connection.drain();
        m_row.reset();
        m_isRowPending = false;
        m_hasRow = false;
    }
    QString error() const override { return m_error; }

private:
    bool sendPreparation() const
    {
        return PQsendPrepare(
                   m_connection.get(), m_name.constData(), m_text.constData(), 0, nullptr) == 1;
    }
    bool takePrepared()
    {
        const PostgresqlConnection::Result result = m_connection.takeResult();
        m_connection.takeResult();  // null: there are no more results of the preparation
        const bool isPrepared = PQresultStatus(result.get()) == PGRES_COMMAND_OK;
        if (!isPrepared) {
            setError(result);
        }
        return isPrepared;
    }
    // Goes to the next row; false at the end and on failure.
    bool fetch()
    {
        m_row = m_connection.takeResult();
        const ExecStatusType status = PQresultStatus(m_row.get());
        m_hasRow = status == PGRES_SINGLE_TUPLE;
        if (!m_hasRow && status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
            setError(m_row);
        }
        return m_hasRow;
    }
    void setError(const PostgresqlConnection::Result &result)
    {
        const QString error = m_connection.errorOf(result);
        m_error = error.isEmpty() ? QStringLiteral("the connection is lost") : error;
    }

    PostgresqlConnection &m_connection;
    const QByteArray m_text;
    const QByteArray m_name;  // of the prepared statement in the server
    bool m_isPrepared = false;
    bool m_isRowPending = false;  // run() has fetched the first row, and next() was not called yet
    bool m_hasRow = false;  // the last fetch() got a row
    PostgresqlConnection::Result m_row;
    QString m_error;
};

class PostgresqlDatabase : public Database
{
public:
    using Database::Database;
    ~PostgresqlDatabase() override { disconnect(); }

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
        m_connection =
            std::make_unique<PostgresqlConnection>(conninfo(address()), address().responseTimeout);
        if (!m_connection->isOpen()) {
            return failed(m_connection->errorOf(nullptr));
        }
        setServer({ PQhost(m_connection->get()), QByteArray(PQport(m_connection->get())).toInt() });
        return true;
    }

    void disconnect() override
    {
        forgetStatements();
        m_connection.reset();
    }

    bool isConnected() const override { return m_connection && m_connection->isOpen(); }

    std::unique_ptr<Statement> makeStatement(const QString &text, const QString &name) override
    {
        return std::make_unique<PostgresqlStatement>(*m_connection, text, name);
    }

private:
    std::unique_ptr<PostgresqlConnection> m_connection;  // null before the first one
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
    /*makeWatcher*/ makePostgresqlWatcher,
    /*announcer*/ POSTGRESQL_ANNOUNCER,
    /*trigger*/ POSTGRESQL_TRIGGER,
};

}  // namespace TQServerInternal
