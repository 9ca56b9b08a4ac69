// The tables of a store. The statements are the same for all database systems, apart from the marks
// "%...%" in them, which stand for what a Dialect says.

#include "schema_p.h"

#include "dialect_p.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace TQServerInternal {

namespace {

// The schema. Programs may fill and change a store with plain SQL if they keep these rules:
// - An id is unique over all tables: each has a range of its own, which it checks. The next id of a
//   table is the highest that it has, plus one. Before you take one, begin the transaction as this
//   library does (see beginWriting), so that nobody else takes the same. An item's database key is
//   its id and its data type: 8 outputs, 21 jobs, 48 ICC profiles, 85 owners of books, 86 books.
// - Texts are UTF-8, hold no line feeds, and neither start nor end with white space, which items do
//   not keep. In a list of texts each entry is a line; in a list of numbers a blank separates the
//   entries.
// - Dates are ISO 8601: "2024-03-01", with a time of day "2024-03-01T09:30:00Z".
// - Null stands for no value.
// Whoever changes the tables raises the version: a library opens no store of another version. A
// store without the triggers of a watcher is of the same version.
constexpr const char *STATEMENTS[] = {
    "CREATE TABLE tq_schema (version INTEGER NOT NULL)",

    "CREATE TABLE tq_output ("
    " id %tq_output.id%,"
    " name TEXT COLLATE %collation% NOT NULL UNIQUE,"
    " technology TEXT,"  // platesetter, imagesetter, proofer, digital press
    " resolution INTEGER,"  // dots per inch
    " width DOUBLE PRECISION,"  // of the largest sheet, in points
    " height DOUBLE PRECISION,"
    " colours TEXT,"  // list of texts
    " rulings TEXT,"  // list of integers, lines per inch
    " location TEXT,"
    " installed TEXT)",  // date

    "CREATE TABLE tq_book_owner ("
    " id %tq_book_owner.id%,"
    " name TEXT COLLATE %collation% NOT NULL,"
    " city TEXT,"
    " country TEXT,"
    " founded INTEGER)",  // year

    "CREATE TABLE tq_book ("
    " id %tq_book.id%,"
    " owner_id INTEGER NOT NULL REFERENCES tq_book_owner (id),"
    " name TEXT COLLATE %collation% NOT NULL,"  // title
    " author TEXT,"
    " pages INTEGER,"
    " year INTEGER,"  // of the first publication
    " language TEXT,"  // tag
    " page_size TEXT,"  // width and height, list of numbers, millimetres
    " subjects TEXT)",  // list of texts
    "CREATE INDEX tq_book_by_owner ON tq_book (owner_id, name, id)",

    "CREATE TABLE tq_icc_profile ("
    " id %tq_icc_profile.id%,"
    " name TEXT COLLATE %collation% NOT NULL UNIQUE,"
    " file TEXT,"  // name of the file that it came from
    " device_class TEXT,"
    " colour_space TEXT,"
    " version TEXT,"
    " size INTEGER,"  // bytes; null when there are none
    " data %blob%)",

    "CREATE TABLE tq_publication ("  // an issue of a periodical
    " id %tq_publication.id%,"
    " name TEXT COLLATE %collation% NOT NULL,"
    " issued TEXT)",  // date

    "CREATE TABLE tq_job ("
    " id %tq_job.id%,"
    " output_id INTEGER NOT NULL REFERENCES tq_output (id),"
    " name TEXT COLLATE %collation% NOT NULL,"
    " publication_id INTEGER REFERENCES tq_publication (id),"
    " book_id INTEGER REFERENCES tq_book (id),"
    " profile_id INTEGER REFERENCES tq_icc_profile (id),"
    " proof_profile TEXT,"  // name of the ICC profile to proof with
    " page INTEGER NOT NULL,"
    " state INTEGER NOT NULL,"  // and queue: 0 waiting, 1 in progress, 2 done
    " priority INTEGER,"  // 0 low to 9 high
    " copies INTEGER,"
    " trim_box TEXT,"  // left, bottom, right, top: list of numbers, points
    " bleed DOUBLE PRECISION,"  // millimetres
    " colours TEXT,"  // list of texts
    " coverage TEXT,"  // per cent of each colour: list of integers
    " options INTEGER,"  // bits: 1 trapped, 2 overprinted, 4 proofed
    " created TEXT,"  // date and time
    " remark TEXT)",
    "CREATE INDEX tq_job_by_output ON tq_job (output_id, name, id)",
};

const FirstId *find(const char *table)
{
    return std::find_if(std::begin(FIRST_IDS), std::end(FIRST_IDS),
        [table](const FirstId &first) { return std::strcmp(first.table, table) == 0; });
}

// The type of a table's column of ids.
QString idColumn(const char *table)
{
    return QStringLiteral("INTEGER PRIMARY KEY CHECK (id BETWEEN %1 AND %2)")
        .arg(firstId(table))
        .arg(lastId(table));
}

}  // namespace

int firstId(const char *table) { return find(table)->id; }

int lastId(const char *table)
{
    const FirstId *next = find(table) + 1;
    return next == std::end(FIRST_IDS) ? std::numeric_limits<int>::max() : next->id - 1;
}

QStringList schemaStatements(const Dialect &dialect)
{
    QStringList statements;
    for (const char *text : STATEMENTS) {
        QString statement = QString::fromLatin1(text);
        statement.replace(QLatin1String("%collation%"), QLatin1String(dialect.collation));
        statement.replace(QLatin1String("%blob%"), QLatin1String(dialect.blob));
        for (const FirstId &first : FIRST_IDS) {
            const QString mark = QStringLiteral("%%1.id%").arg(QLatin1String(first.table));
            statement.replace(mark, idColumn(first.table));
        }
        statements.append(statement);
    }
    statements.append(QStringLiteral("INSERT INTO tq_schema VALUES (%1)").arg(SCHEMA_VERSION));
    return statements;
}

QStringList watchStatements(const Dialect &dialect)
{
    QStringList statements;
    if (dialect.announcer) {
        statements.append(QString::fromLatin1(dialect.announcer));
        for (const FirstId &first : FIRST_IDS) {
            QString trigger = QString::fromLatin1(dialect.trigger);
            trigger.replace(QLatin1String("%table%"), QLatin1String(first.table));
            statements.append(trigger);
        }
    }
    return statements;
}

}  // namespace TQServerInternal
