// Checks an SQLite file that is opened. It may come from anywhere, and SQLite lets it bring code
// along: a view in place of a table, a trigger, an index over an expression, a virtual table. So
// before a file is asked for anything, its list of tables and indexes must be the one that this
// library makes.

#include "sqlitecheck_p.h"

#include "database_p.h"
#include "schema_p.h"
#include "schemacheck_p.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace TQServerInternal {

namespace {

// A table or an index as the file lists it.
struct Entry
{
    QString type;
    QString name;
    QString table;
    QString sql;  // null for the indexes of constraints

    bool operator==(const Entry &other) const
    {
        return type == other.type && name == other.name && table == other.table && sql == other.sql;
    }
};
using Entries = std::vector<Entry>;

// What SQLite keeps for itself: the figures that ANALYZE gathers.
constexpr const char *FIGURES[] = { "CREATE TABLE sqlite_stat1(tbl,idx,stat)",
    "CREATE TABLE sqlite_stat4(tbl,idx,neq,nlt,ndlt,sample)" };

// A statement without what does not change its meaning; names get quotes when a table is renamed.
QString normalized(const QString &sql)
{
    static const QRegularExpression quoted(QStringLiteral("\"(\\w+)\""));
    return sql.simplified().replace(quoted, QStringLiteral("\\1"));
}

// What the library's own statements make.
Entries knownEntries()
{
    Entries entries;
    for (const QString &statement : schemaStatements(SQLITE)) {
        // CREATE TABLE name, CREATE INDEX name ON table
        const QStringList words = statement.split(QLatin1Char(' '));
        if (words[0] == QLatin1String("CREATE")) {
            const bool isTable = words[1] == QLatin1String("TABLE");
            entries.push_back({ words[1].toLower(), words[2], isTable ? words[2] : words[4],
                normalized(statement) });
        }
    }
    return entries;
}

bool isOfSqlite(const Entry &entry)
{
    if (entry.type == QLatin1String("index")) {
        return entry.name.startsWith(QLatin1String("sqlite_")) && entry.sql.isNull();
    }
    return std::any_of(std::begin(FIGURES), std::end(FIGURES),
        [&entry](const char *sql) { return entry.sql == QLatin1String(sql); });
}

// Lists what is in a file, without what is SQLite's own; false when that fails.
bool readEntries(Database &database, Entries &entries)
{
    Statement *query =
        database.run(QStringLiteral("SELECT type, name, tbl_name, sql FROM sqlite_master"));
    while (query && query->next()) {
        const QString sql =
            query->value(3).isNull() ? QString() : normalized(query->value(3).toString());
        Entry entry { query->value(0).toString(), query->value(1).toString(),
            query->value(2).toString(), sql };
        if (!isOfSqlite(entry)) {
            entries.push_back(std::move(entry));
        }
    }
    return query && database.finish(*query);
}

// How a file's list differs from the known one; empty when it does not.
QString difference(const Entries &known, const Entries &found)
{
    for (const Entry &entry : known) {
        if (std::count(found.begin(), found.end(), entry) != 1) {
            return QStringLiteral("%1 is missing or changed").arg(entry.name);
        }
    }
    return found.size() == known.size() ? QString()
                                        : QStringLiteral("it holds more than a store's tables");
}

// SQLite finds pages missing at the end of a file, but reads one that is cut off as if zeros
// followed, with rows missing in what it lists.
bool hasWholePages(Database &database)
{
    const QString &path = database.address().path;
    const int pageSize = database.valueOf(QStringLiteral("PRAGMA page_size")).toInt();
    if (pageSize == 0) {
        return false;  // the statement failed
    }
    return QFileInfo(path).size() % pageSize == 0 || database.refuse(QLatin1String(DAMAGED));
}

bool checkFile(Database &database)
{
    Entries found;
    if (!database.execute(QStringLiteral("PRAGMA trusted_schema = OFF")) ||
        !database.execute(QStringLiteral("PRAGMA cell_size_check = ON")) ||
        !readEntries(database, found)) {
        return false;
    }
    const Entries known = knownEntries();
    const auto versions = std::find_if(known.begin(), known.end(),
        [](const Entry &entry) { return entry.name == QLatin1String(VERSION_TABLE); });
    if (std::find(found.begin(), found.end(), *versions) == found.end()) {
        return refuseStranger(database);
    }
    if (!checkVersion(database)) {
        return false;
    }
    const QString different = difference(known, found);
    return different.isEmpty() || refuseStranger(database, different);
}

}  // namespace

bool checkSqliteSchema(Database &database)
{
    return checkFile(database) && (database.address().isMemory() || hasWholePages(database));
}

}  // namespace TQServerInternal
