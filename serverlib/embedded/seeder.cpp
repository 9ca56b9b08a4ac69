// Fills stores: with the sample content, or with as many generated jobs as are wanted. Every value
// of a generated row follows from its serial number, so the same number of jobs gives the same
// store. Remainders such as serial % 7 have no meaning of their own: they vary the values, and
// leave fields empty in some rows.

#include "seeder_p.h"

#include "sample_p.h"
#include "schema_p.h"

#include <QDate>

#include <algorithm>
#include <iterator>
#include <map>
#include <vector>

namespace TQServerInternal {

namespace {

static_assert(std::size(Sample::BOOKS) == 60, "the sample's books");

// A table that rows go to.
struct Target
{
    const char *table;
    const char *columns;  // after the id
};
constexpr Target OUTPUT { "tq_output",
    "name, technology, resolution, width, height, colours, rulings, location, installed" };
constexpr Target OWNER { "tq_book_owner", "name, city, country, founded" };
constexpr Target BOOK { "tq_book",
    "owner_id, name, author, pages, year, language, page_size, subjects" };
constexpr Target PROFILE { "tq_icc_profile",
    "name, file, device_class, colour_space, version, size, data" };
constexpr Target PUBLICATION { "tq_publication", "name, issued" };
constexpr Target JOB { "tq_job",
    "output_id, name, publication_id, book_id, profile_id, proof_profile, page, state, priority, "
    "copies, trim_box, bleed, colours, coverage, options, created, remark" };

constexpr const char *BOOK_PAGE_SIZES[] = { "129 198", "111 178", "135 216" };  // mm
constexpr const char *BOOK_TRIM_BOXES[] = { "0 0 365.669 561.26", "0 0 314.646 504.567",
    "0 0 382.677 612.283" };  // the same in points
constexpr const char *ISSUE_TRIM_BOX = "0 0 595.276 841.89";

// Sizes of what is seeded.
constexpr int BOOK_SAMPLE_PAGES = 4;
constexpr int ISSUE_SAMPLE_PAGES = 9;
constexpr int GENERATED_ISSUE_PAGES = 24;
constexpr size_t JOBS_PER_OUTPUT = 250;
constexpr size_t JOBS_PER_BOOK = 20;
constexpr size_t JOBS_PER_OWNER = 1000;
constexpr size_t PROGRESS_STEP = 64;  // rows

QString utf8(const char *text) { return QString::fromUtf8(text); }

template<typename T, size_t N>
const T &cycled(const T (&table)[N], size_t index)
{
    return table[index % N];
}

QString insertStatement(const Target &target)
{
    const QString columns = QLatin1String(target.columns);
    return QStringLiteral("INSERT INTO %1 (id, %2) VALUES (?%3)")
        .arg(QLatin1String(target.table), columns,
            QStringLiteral(", ?").repeated(columns.count(QLatin1Char(',')) + 1));
}

QString createdText(size_t serial)
{
    const QDate day = QDate(2024, 3, 1).addDays(static_cast<qint64>(serial / 48));
    return QStringLiteral("%1T%2:%3:00Z")
        .arg(day.toString(Qt::ISODate))
        .arg(6 + serial % 12, 2, 10, QLatin1Char('0'))
        .arg(serial * 7 % 60, 2, 10, QLatin1Char('0'));
}

// Adds rows to an empty store; the ids of each table count up from its first one. After a failure
// nothing more is done.
class Seeder
{
public:
    Seeder(Database &database, const TQPROGRESS &progress, size_t total)
        : m_database(database), m_progress(progress), m_total(total)
    {
    }

    bool ok() const { return m_ok; }

    int output(const Sample::Output &output, const QString &name)
    {
        return insert(OUTPUT,
            { name, utf8(output.technology), output.resolution, output.width, output.height,
                utf8(output.colours), utf8(output.rulings), utf8(output.location),
                utf8(output.installed) });
    }

    int owner(const Sample::Owner &owner, const QString &name)
    {
        return insert(OWNER, { name, utf8(owner.city), utf8(owner.country), owner.founded });
    }

    int book(const Sample::Book &book, const QString &title, int owner, size_t serial)
    {
        return insert(BOOK,
            { owner, title, utf8(book.author), book.pages, book.year, utf8(book.language),
                utf8(cycled(BOOK_PAGE_SIZES, serial)), utf8(book.subjects) });
    }

    int publication(const QString &name, const QDate &issued)
    {
        return insert(PUBLICATION, { name, issued.toString(Qt::ISODate) });
    }

    void profiles()
    {
        for (const Sample::Profile &known : Sample::PROFILES) {
            const QString file = utf8(known.file);
            QString error;
            const auto profile =
                IccProfile::read(QByteArray(Sample::PROFILE_FOLDER) + known.file, error);
            const QVariant size = profile ? QVariant(int(profile->bytes.size())) : QVariant();
            m_profiles.push_back(insert(PROFILE,
                { profileName(known), file, utf8(known.deviceClass), utf8(known.colourSpace),
                    profile ? profile->version : QString(), size,
                    profile ? QVariant(profile->bytes) : QVariant() }));
        }
    }

    void bookPage(int output, const QString &title, int book, size_t bookSerial, int page)
    {
        const size_t serial = m_jobs++;
        const size_t gray = Sample::FIRST_GRAY + serial % Sample::GRAYS;
        job({ output, pageName(title, page), QVariant(), book,
                serial % 7 == 3 ? QVariant() : QVariant(m_profiles[gray]), QVariant(), page },
            { utf8(cycled(BOOK_TRIM_BOXES, bookSerial)), QVariant(), QStringLiteral("Black"),
                QString::number(5 + serial % 20) },
            serial);
    }

    void issuePage(int output, const QString &issue, int publication, int page)
    {
        const size_t serial = m_jobs++;
        const bool spot = serial % 11 == 5;
        QString colours = QStringLiteral("Cyan\nMagenta\nYellow\nBlack");
        QString coverage = QStringLiteral("%1 %2 %3 %4")
                               .arg(10 + serial % 31)
                               .arg(12 + serial % 29)
                               .arg(9 + serial % 23)
                               .arg(15 + serial % 17);
        if (spot) {
            colours += QStringLiteral("\nBleu Étain 12");
            coverage += QStringLiteral(" 4");
        }
        const size_t profile = serial % Sample::FIRST_GRAY;
        const Sample::Profile &proof = Sample::PROFILES[(profile + 1) % Sample::FIRST_GRAY];
        job({ output, pageName(issue, page), publication, QVariant(), m_profiles[profile],
                serial % 4 == 2 ? QVariant(profileName(proof)) : QVariant(), page },
            { utf8(ISSUE_TRIM_BOX), 3.5, colours, coverage }, serial);
    }

private:
    static QString profileName(const Sample::Profile &profile)
    {
        return IccProfile::nameOf(utf8(profile.file));
    }

    static QString pageName(const QString &title, int page)
    {
        return title + QStringLiteral(" p. ") + QString::number(page);
    }

    // The values are in the order of JOB's columns: those from output_id to page, then what is made
    // of the serial number here, print (from trim_box to coverage), and again what is made here.
    void job(QVariantList values, const QVariantList &print, size_t serial)
    {
        constexpr const char *REMARKS[] = { "Réimpression", "Proof approved",
            "Hold for the editor" };
        constexpr int STATES[] = { 0, 1, 2, 2, 2 };  // 0 is waiting, 2 is done
        values << cycled(STATES, serial) << int(serial % 10)
               << (serial % 4 == 0 ? 1 : int(500 * (serial % 9 + 1)));
        values << print << int(serial % 8) << createdText(serial);
        values << (serial % 13 == 6 ? QVariant(utf8(cycled(REMARKS, serial))) : QVariant());
        insert(JOB, values);
    }

    // A table's INSERT statement, and the id of its next row.
    struct Table
    {
        explicit Table(const Target &target)
            : statement(insertStatement(target)), nextId(firstId(target.table))
        {
        }
        QString statement;
        int nextId;
    };

    int insert(const Target &target, QVariantList values)
    {
        Table &table = m_tables.try_emplace(&target, target).first->second;
        const int id = table.nextId++;
        values.prepend(id);
        m_ok = m_ok && m_database.run(table.statement, values);
        ++m_done;
        if (m_done % PROGRESS_STEP == 0 || m_done == m_total) {
            report();
        }
        return id;
    }

    void report()
    {
        if (m_ok && m_progress && !m_progress(m_done, m_total)) {
            m_ok = m_database.fail(QLatin1String(INTERRUPTED));
        }
    }

    Database &m_database;
    const TQPROGRESS &m_progress;
    size_t m_total;
    bool m_ok = true;
    size_t m_done = 0;  // rows
    size_t m_jobs = 0;
    std::vector<int> m_profiles;
    std::map<const Target *, Table> m_tables;
};

QDate issueDate(const Sample::Periodical &periodical, int issue)
{
    return QDate(2022, 1, 15).addMonths(periodical.months * issue);
}

void fillSample(Seeder &seeder)
{
    std::vector<int> outputs;
    std::vector<int> owners;
    for (const Sample::Output &output : Sample::OUTPUTS) {
        outputs.push_back(seeder.output(output, utf8(output.name)));
    }
    for (const Sample::Owner &owner : Sample::OWNERS) {
        owners.push_back(seeder.owner(owner, utf8(owner.name)));
    }
    seeder.profiles();
    size_t serial = 0;
    for (const Sample::Book &book : Sample::BOOKS) {
        const QString title = utf8(book.title);
        const int id = seeder.book(book, title, owners[size_t(book.owner)], serial);
        for (int i = 0; i < BOOK_SAMPLE_PAGES; ++i) {
            const int output = outputs[(serial + size_t(i) / 2) % outputs.size()];
            seeder.bookPage(output, title, id, serial, 12 + i * (book.pages / 5));
        }
        ++serial;
    }
    for (const Sample::Periodical &periodical : Sample::PERIODICALS) {
        for (int issue = 0; issue < periodical.issues; ++issue) {
            const QString name =
                utf8(periodical.name) + QLatin1Char(' ') + QString::number(issue + 1);
            const int id = seeder.publication(name, issueDate(periodical, issue));
            // Pages that begin with 4, 7 or 10: by name, page 10 comes before page 4.
            const int first = 1 + issue % 4 * 3;
            for (int page = first; page < first + ISSUE_SAMPLE_PAGES; ++page) {
                seeder.issuePage(
                    outputs[size_t(issue + page / 8) % outputs.size()], name, id, page);
            }
        }
    }
}

// The number of rows of each table in a generated store.
struct GeneratedSizes
{
    explicit GeneratedSizes(size_t jobCount)
        : jobs(jobCount), outputs(std::size(Sample::OUTPUTS) + jobs / JOBS_PER_OUTPUT),
          owners(std::size(Sample::OWNERS) + jobs / JOBS_PER_OWNER),
          books(std::size(Sample::BOOKS) + jobs / JOBS_PER_BOOK),
          publications((jobs / 2 + GENERATED_ISSUE_PAGES - 1) / GENERATED_ISSUE_PAGES)
    {
    }
    size_t rows() const
    {
        return jobs + outputs + owners + books + publications + std::size(Sample::PROFILES);
    }

    size_t jobs;
    size_t outputs;
    size_t owners;
    size_t books;
    size_t publications;
};

struct Named
{
    QString name;
    int id;
};

// Jobs are pages of books and pages of issues by turns.
void fillGeneratedJobs(Seeder &seeder, size_t jobs, const std::vector<int> &outputs,
    const std::vector<Named> &books, const std::vector<Named> &issues)
{
    for (size_t i = 0; i < jobs && seeder.ok(); ++i) {
        const int output = outputs[i / GENERATED_ISSUE_PAGES % outputs.size()];
        const size_t pair = i / 2;
        if (i % 2 == 1) {
            const Named &issue = issues[pair / GENERATED_ISSUE_PAGES];
            const int page = 1 + int(pair % GENERATED_ISSUE_PAGES);
            seeder.issuePage(output, issue.name, issue.id, page);
        } else {
            const size_t book = pair % books.size();
            const auto pages = static_cast<size_t>(cycled(Sample::BOOKS, book).pages);
            const int page = 1 + int(pair / books.size() * 7 % pages);
            seeder.bookPage(output, books[book].name, books[book].id, book, page);
        }
    }
}

void fillGenerated(Seeder &seeder, const GeneratedSizes &sizes)
{
    const auto numbered = [](const char *name, size_t number) {
        return utf8(name) + QStringLiteral(" %1").arg(number + 1, 5, 10, QLatin1Char('0'));
    };
    std::vector<int> outputs;
    std::vector<int> owners;
    std::vector<Named> books;
    std::vector<Named> issues;
    for (size_t i = 0; i < sizes.outputs && seeder.ok(); ++i) {
        const Sample::Output &output = cycled(Sample::OUTPUTS, i);
        outputs.push_back(seeder.output(output, numbered(output.name, i)));
    }
    for (size_t i = 0; i < sizes.owners && seeder.ok(); ++i) {
        const Sample::Owner &owner = cycled(Sample::OWNERS, i);
        owners.push_back(seeder.owner(owner, numbered(owner.name, i)));
    }
    seeder.profiles();
    for (size_t i = 0; i < sizes.books && seeder.ok(); ++i) {
        const Sample::Book &book = cycled(Sample::BOOKS, i);
        const QString title = numbered(book.title, i);
        books.push_back({ title, seeder.book(book, title, owners[i % owners.size()], i) });
    }
    for (size_t i = 0; i < sizes.publications && seeder.ok(); ++i) {
        const QString name = numbered(cycled(Sample::PERIODICALS, i).name, i);
        const QDate issued = QDate(2000, 1, 1).addDays(static_cast<qint64>(i));
        issues.push_back({ name, seeder.publication(name, issued) });
    }
    fillGeneratedJobs(seeder, sizes.jobs, outputs, books, issues);
}

bool execute(Database &database, const QStringList &statements)
{
    return std::all_of(statements.begin(), statements.end(),
        [&database](const QString &statement) { return database.execute(statement); });
}

// Makes the tables and calls fill, in one transaction.
template<typename Fill>
bool seed(Database &database, Fill fill)
{
    if (!database.beginWriting()) {
        return false;
    }
    if (database.hasSchema()) {
        return database.refuse(QStringLiteral("holds a store already"));
    }
    // The triggers come last, so that they do not run for each of the rows.
    return execute(database, schemaStatements(database.dialect())) && fill() &&
        execute(database, watchStatements(database.dialect())) && database.commit();
}

size_t sampleRows()
{
    size_t rows = std::size(Sample::OUTPUTS) + std::size(Sample::OWNERS) +
        std::size(Sample::PROFILES) + std::size(Sample::BOOKS) * (1 + BOOK_SAMPLE_PAGES);
    for (const Sample::Periodical &periodical : Sample::PERIODICALS) {
        rows += size_t(periodical.issues) * (1 + ISSUE_SAMPLE_PAGES);
    }
    return rows;
}

}  // namespace

bool seedSample(Database &database, const TQPROGRESS &progress)
{
    return seed(database, [&] {
        Seeder seeder(database, progress, sampleRows());
        fillSample(seeder);
        return seeder.ok();
    });
}

bool seedGenerated(Database &database, size_t jobs, const TQPROGRESS &progress)
{
    return seed(database, [&] {
        const GeneratedSizes sizes(jobs);
        Seeder seeder(database, progress, sizes.rows());
        fillGenerated(seeder, sizes);
        return seeder.ok();
    });
}

int storeProfile(Database &database, const IccProfile &profile)
{
    const QVariantList values { profile.file, profile.deviceClass, profile.colourSpace,
        profile.version, int(profile.bytes.size()), profile.bytes, profile.name };
    Statement *query = database.run(
        QStringLiteral("UPDATE tq_icc_profile SET file = ?, device_class = ?, colour_space = ?, "
                       "version = ?, size = ?, data = ? WHERE name = ?"),
        values);
    if (!query) {
        return 0;
    }
    if (query->changedRows() > 0) {
        const QString statement = QStringLiteral("SELECT id FROM tq_icc_profile WHERE name = ?");
        return database.valueOf(statement, { profile.name }).toInt();
    }
    // The id after the highest one; in an empty table, the table's first id.
    const QVariant highest =
        database.valueOf(QStringLiteral("SELECT coalesce(max(id), %1) FROM tq_icc_profile")
                             .arg(firstId(PROFILE.table) - 1));
    if (highest.isNull()) {
        return 0;
    }
    if (highest.toInt() == lastId(PROFILE.table)) {
        database.refuse(QStringLiteral("no id is left for an ICC profile"));
        return 0;
    }
    const int id = highest.toInt() + 1;
    query = database.run(insertStatement(PROFILE),
        { id, profile.name, profile.file, profile.deviceClass, profile.colourSpace, profile.version,
            int(profile.bytes.size()), profile.bytes });
    return query ? id : 0;
}

}  // namespace TQServerInternal
