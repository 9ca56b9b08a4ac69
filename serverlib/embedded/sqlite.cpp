// Stores in SQLite: a file, or memory for as long as the connection is open. A file is kept in
// write-ahead mode: readers see one moment and hold up no writers. They mark what they read in a
// file next to the store, so a reader that may not write there reads without these marks. That is
// safe as long as nobody has the store open to write, so the file is compared after each query.

#include "sqldatabase_p.h"
#include "sqlitecheck_p.h"
#include "sqlitewatcher_p.h"
#include "urlparts_p.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <memory>

namespace TQServerInternal {

namespace {

constexpr const char *SCHEME = "sqlite:";
constexpr int BUSY_TIMEOUT = 3000;  // ms to wait for a lock
constexpr const char *DRIVER = "QSQLITE";
constexpr const char *LOG = "-wal";

bool isUrl(const QString &url)
{
    // A path with "://" is a URL of another kind, which the command takes for a path.
    const QLatin1String scheme(SCHEME);
    return url.startsWith(scheme) && url.indexOf(QLatin1String("://"), scheme.size()) < 0;
}

QString connectOptions(int busyTimeout)
{
    return QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeout);
}

std::optional<StoreAddress> parse(const QString &url, QString &error)
{
    StoreAddress address;
    address.dialect = &SQLITE;
    address.label = QStringLiteral("memory");
    address.options = connectOptions(BUSY_TIMEOUT);
    const QString rest = url.mid(QLatin1String(SCHEME).size());
    if (rest == QLatin1String(":memory:")) {
        return address;
    }
    UrlParts parts(rest);
    const QString given = parts.parameters.take("busy_timeout");
    bool isNumber = true;
    const int busyTimeout = given.isNull() ? BUSY_TIMEOUT : given.toInt(&isNumber);
    const QString path = decoded(parts.address, error);
    if (!error.isEmpty()) {
        return {};
    }
    if (!isNumber || busyTimeout < 0 || !parts.parameters.rest().isEmpty()) {
        error = notOfTheForm(url, QStringLiteral("sqlite:PATH?busy_timeout=MILLISECONDS"));
        return {};
    }
    if (path.isEmpty()) {
        error = QStringLiteral("no database is named");
        return {};
    }
    address.place = StoreAddress::Place::File;
    address.label = withoutPassword(path);
    address.options = connectOptions(busyTimeout);
    // Not by QFileInfo, which takes ":a" for one of the program's resources.
    const bool isAbsolute = path.startsWith(QLatin1Char('/'));
    address.path = isAbsolute ? path : QDir::currentPath() + QLatin1Char('/') + path;
    return address;
}

// The name that SQLite opens a file by.
QString fileName(const StoreAddress &address, const char *mode)
{
    return QStringLiteral("file:") +
        QString::fromLatin1(QUrl::toPercentEncoding(address.path, "/")) + QStringLiteral("?mode=") +
        QLatin1String(mode);
}

QString whyMissing(const QFileInfo &file)
{
    if (!file.exists()) {
        return QStringLiteral("no such file");
    }
    return file.isFile() ? QString() : QStringLiteral("not a file");
}

bool isOpenElsewhere(const QString &path) { return QFileInfo::exists(path + QLatin1String(LOG)); }

bool isWritable(const QFileInfo &file)
{
    return file.isWritable() && QFileInfo(file.absolutePath()).isWritable();
}

// Changes with every change of a file, and while somebody has it open to write.
QString stampOf(const QString &path)
{
    const QFileInfo file(path);
    return QStringLiteral("%1 %2 %3")
        .arg(file.size())
        .arg(file.lastModified().toMSecsSinceEpoch())
        .arg(isOpenElsewhere(path) ? QStringLiteral("open") : QString());
}

class SqliteDatabase : public SqlDatabase
{
public:
    using SqlDatabase::SqlDatabase;

    bool checkSchema() override { return checkSqliteSchema(*this); }

    // What is half made is thrown away whole, so it needs no journal.
    bool beginFilling() override
    {
        return execute(QStringLiteral("PRAGMA journal_mode = OFF")) &&
            execute(QStringLiteral("PRAGMA synchronous = OFF"));
    }

    bool endFilling() override
    {
        const QVariant mode = valueOf(QStringLiteral("PRAGMA journal_mode = WAL"));
        if (mode.isNull()) {
            return false;  // the statement failed
        }
        return mode.toString() == QLatin1String("wal") ||
            refuse(QStringLiteral("no write-ahead log can be kept there"));
    }

    // SQLite finds damage where it comes across it, but an index that lacks entries only gives
    // fewer rows.
    bool isWhole() override
    {
        if (address().isMemory()) {
            return true;
        }
        const auto verdict = ask(QStringLiteral("PRAGMA integrity_check(1)"));
        return verdict &&
            (verdict->toString() == QLatin1String("ok") || refuse(QLatin1String(DAMAGED)));
    }

protected:
    bool connect(bool create) override
    {
        setServer({ "localhost", 0 });
        m_stamp.clear();
        if (address().isMemory()) {
            return openSql(DRIVER, QStringLiteral(":memory:"));
        }
        if (create) {
            return openSql(DRIVER, fileName(address(), "rwc"));
        }
        const QFileInfo file(address().path);
        const QString reason = whyMissing(file);
        if (!reason.isNull()) {
            return refuse(reason);
        }
        if (!isWritable(file) && !isOpenElsewhere(address().path)) {
            m_stamp = stampOf(address().path);
            return openSql(DRIVER, fileName(address(), "ro&immutable=1"));
        }
        return openSql(DRIVER, fileName(address(), "rw"));
    }

    bool isTrustworthy() override
    {
        if (m_stamp.isNull() || m_stamp == stampOf(address().path)) {
            return true;
        }
        suspect();
        return refuse(QStringLiteral("the store was changed while it was read"));
    }

private:
    QString m_stamp;  // of a file that is read without marks, when it was opened; null otherwise
};

std::unique_ptr<Database> makeDatabase(const StoreAddress &address)
{
    return std::make_unique<SqliteDatabase>(address);
}

}  // namespace

const Dialect SQLITE {
    /*form*/ "sqlite:PATH, sqlite::memory:",
    /*isUrl*/ isUrl,
    /*parse*/ parse,
    /*makeDatabase*/ makeDatabase,
    /*journal*/ "-journal",
    /*log*/ LOG,
    /*blob*/ "BLOB",
    /*collation*/ "BINARY",
    /*hasSchema*/ "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'tq_schema'",
    /*beginReading*/ "BEGIN",
    /*beginWriting*/ "BEGIN IMMEDIATE",
    /*waitForWriters*/ nullptr,
    /*makeWatcher*/ makeSqliteWatcher,
    /*announcer*/ nullptr,
    /*trigger*/ nullptr,
};

}  // namespace TQServerInternal
