#include "database_p.h"

#include "rows_p.h"
#include "schemacheck_p.h"
#include "storageclass_p.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace {

constexpr int DEFAULT_PORT = 5432;
constexpr const char *SQLITE_OPTIONS = "QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=3000";
// The client library would print notices on standard error.
constexpr const char *POSTGRESQL_OPTIONS =
    "connect_timeout=5;options='-c client_min_messages=error'";

// Every store that items can load more from.
std::vector<Database *> &published()
{
    static std::vector<Database *> databases;
    return databases;
}

// The name that SQLite opens an existing file, or for create also a missing one, by.
QString sqliteName(const StoreAddress &address, bool create)
{
    if (address.isMemory()) {
        return QStringLiteral(":memory:");
    }
    const QString path = QFileInfo(address.path).absoluteFilePath();
    return QStringLiteral("file:") + QString::fromLatin1(QUrl::toPercentEncoding(path, "/")) +
        (create ? QStringLiteral("?mode=rwc") : QStringLiteral("?mode=rw"));
}

QString missing(const StoreAddress &address)
{
    const QFileInfo file(address.path);
    if (!file.exists()) {
        return QStringLiteral("%1: no such file").arg(address.path);
    }
    return file.isFile() ? QString() : QStringLiteral("%1: not a file").arg(address.path);
}

// What messages say of a URL that may hold a password.
QString withoutPassword(QString url)
{
    static const QRegularExpression password(
        QStringLiteral("(://[^:]*:).*@"), QRegularExpression::DotMatchesEverythingOption);
    return url.replace(password, QStringLiteral("\\1...@"));
}

std::optional<StoreAddress> parseNetwork(const QString &text, QString &error)
{
    const QUrl url(text, QUrl::StrictMode);
    StoreAddress address;
    address.dialect = &POSTGRESQL;
    address.host = url.host();
    address.port = url.port(DEFAULT_PORT);
    address.user = url.userName(QUrl::FullyDecoded);
    address.database = url.path(QUrl::FullyDecoded).mid(1);
    if (!url.password().isEmpty()) {
        error = QStringLiteral("no password in a database URL, please: set PGPASSWORD");
    } else if (!url.isValid() || address.host.isEmpty() || address.database.isEmpty() ||
        url.hasQuery() || url.hasFragment()) {
        error = QStringLiteral("%1: not of the form postgresql://USER@HOST:PORT/DB")
                    .arg(withoutPassword(text));
    } else {
        return address;
    }
    return {};
}

// Keeps what Qt says about statements of a lost connection off standard error. Messages of other
// threads go where they always went.
class Silence
{
public:
    Silence()
    {
        silent = true;
        previous = qInstallMessageHandler(pass);
    }
    ~Silence()
    {
        qInstallMessageHandler(previous);
        silent = false;
    }
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

private:
    static void pass(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (!silent && previous) {
            previous(type, context, text);
        }
    }

    static thread_local bool silent;
    static QtMessageHandler previous;
};

thread_local bool Silence::silent = false;
QtMessageHandler Silence::previous = nullptr;

QString oneLine(const QSqlError &error)
{
    const QString text = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    const QString line = text.simplified();
    return line.isEmpty() ? QStringLiteral("database error") : line;
}

}  // namespace

std::optional<StoreAddress> StoreAddress::parse(const char *url, QString &error)
{
    const QString text = QString::fromUtf8(url);
    const QString file = QStringLiteral("sqlite:");
    if (text.startsWith(QLatin1String("postgresql://"))) {
        return parseNetwork(text, error);
    }
    if (text == file) {
        error = QStringLiteral("no database is named");
        return {};
    }
    // A path with "://" is a URL of another kind, which the command takes for a path.
    if (!text.startsWith(file) || text.indexOf(QLatin1String("://"), file.size()) >= 0) {
        error = QStringLiteral("%1: not a database URL (sqlite:PATH, sqlite::memory: or "
                               "postgresql://USER@HOST:PORT/DB)")
                    .arg(withoutPassword(text));
        return {};
    }
    StoreAddress address;
    address.dialect = &SQLITE;
    address.path = text.mid(file.size());
    if (address.path == QLatin1String(":memory:")) {
        address.path.clear();
    }
    return address;
}

Database::~Database()
{
    std::vector<Database *> &known = published();
    known.erase(std::remove(known.begin(), known.end(), this), known.end());
    close();
}

bool Database::open(const StoreAddress &address, bool create)
{
    static int connections = 0;
    m_address = address;
    m_error.clear();
    const QString driver = QLatin1String(address.dialect->driver);
    if (!QCoreApplication::instance()) {
        return fail(QStringLiteral("a database needs a QCoreApplication"));
    }
    if (!QSqlDatabase::isDriverAvailable(driver)) {
        return fail(QStringLiteral("Qt has no database driver %1").arg(driver));
    }
    if (address.isFile() && !create && !missing(address).isNull()) {
        return fail(missing(address));
    }
    m_connection = QStringLiteral("tqserver-%1").arg(++connections);
    m_sql = QSqlDatabase::addDatabase(driver, m_connection);
    if (address.dialect == &SQLITE) {
        m_sql.setDatabaseName(sqliteName(address, create));
        m_sql.setConnectOptions(QLatin1String(SQLITE_OPTIONS));
    } else {
        m_sql.setDatabaseName(address.database);
        m_sql.setHostName(address.host);
        m_sql.setPort(address.port);
        m_sql.setUserName(address.user);
        m_sql.setConnectOptions(QLatin1String(POSTGRESQL_OPTIONS));
    }
    m_suspect = !m_sql.open();
    return !m_suspect || failed(m_sql.lastError());
}

void Database::close()
{
    if (m_connection.isNull()) {
        return;
    }
    const Silence silence;
    m_queries.clear();
    m_sql = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
    m_connection = QString();
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
    close();
    return open(m_address, false) && checkSchema(*this);
}

QSqlQuery *Database::run(const QString &statement, const QVariantList &values)
{
    auto found = m_queries.find(statement);
    if (found == m_queries.end()) {
        QSqlQuery query(m_sql);
        query.setForwardOnly(true);
        if (!query.prepare(statement)) {
            failed(query.lastError());
            return nullptr;
        }
        found = m_queries.emplace(statement, std::move(query)).first;
    }
    QSqlQuery &query = found->second;
    for (int i = 0; i < values.size(); ++i) {
        query.bindValue(i, values.at(i));
    }
    if (!query.exec()) {
        failed(query.lastError());
        query.finish();
        return nullptr;
    }
    return &query;
}

bool Database::finish(QSqlQuery &query)
{
    const QSqlError error = query.lastError();
    query.finish();  // an unfinished query keeps the store locked
    return !error.isValid() || failed(error);
}

QVariant Database::valueOf(const QString &statement, const QVariantList &values)
{
    QSqlQuery *query = run(statement, values);
    const QVariant value = query && query->next() ? query->value(0) : QVariant();
    return query && finish(*query) ? value : QVariant();
}

bool Database::execute(const QString &statement)
{
    QSqlQuery query(m_sql);
    return query.exec(statement) || failed(query.lastError());
}

bool Database::begin() { return m_sql.transaction() || failed(m_sql.lastError()); }

bool Database::beginWriting()
{
    return execute(QLatin1String(dialect().beginWriting)) &&
        (!dialect().waitForWriters || execute(QLatin1String(dialect().waitForWriters)));
}

bool Database::commit()
{
    for (auto &query : m_queries) {
        query.second.finish();
    }
    return m_sql.commit() || failed(m_sql.lastError());
}

bool Database::fail(const QString &error)
{
    m_error = error;
    return false;
}

bool Database::failed(const QSqlError &error)
{
    m_suspect = true;
    return fail(QStringLiteral("%1: %2").arg(m_address.label(), oneLine(error)));
}

void Database::publish()
{
    std::vector<Database *> &known = published();
    m_host = m_address.dialect == &SQLITE ? "localhost" : m_address.host.toStdString();
    m_port = m_address.port;
    const auto isTaken = [&](int port) {
        return std::any_of(known.begin(), known.end(), [&](const Database *other) {
            return other->m_host == m_host && other->m_port == port;
        });
    };
    while (m_address.dialect == &SQLITE && (m_port == 0 || isTaken(m_port))) {
        ++m_port;
    }
    known.push_back(this);
}

std::optional<Database::FieldValue> Database::profileBytes(
    const std::string &host, int port, const TQKEY_ELEMENT &key, const char *name)
{
    const StorageClass *profiles = storageClass(PACKETDATATYPE_ICCPROFILE);
    const bool byKey = TQKEY_CC::isValid(key);
    if (byKey ? key.hkey != profiles->type() : !name) {
        return {};
    }
    const QVariant value = byKey ? QVariant(key.key) : QVariant(QString::fromUtf8(name));
    for (Database *database : published()) {
        const bool asked = database->m_host == host && database->m_port == port;
        if (asked && database->recover()) {
            if (auto field = readBinaryField(*database, *profiles, byKey ? "id" : "name", value)) {
                return field;
            }
        }
    }
    return {};
}
