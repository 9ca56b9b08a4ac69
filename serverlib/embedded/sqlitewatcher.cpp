// Watches an SQLite file by the number that SQLite changes for a connection whenever another one
// has committed. Numbers of two connections cannot be compared, so a file that was opened again
// counts as changed.

#include "sqlitewatcher_p.h"

#include "database_p.h"

#include <QFile>

#include <sys/stat.h>

namespace TQServerInternal {

namespace {

// Tells a file from another one that has taken its name.
struct FileIdentity
{
    dev_t device = 0;
    ino_t number = 0;

    static FileIdentity of(const QString &path)
    {
        struct stat status = {};
        ::stat(QFile::encodeName(path).constData(), &status);
        return { status.st_dev, status.st_ino };
    }
    bool operator!=(const FileIdentity &other) const
    {
        return device != other.device || number != other.number;
    }
};

class SqliteWatcher : public Watcher
{
public:
    SqliteWatcher(const StoreAddress &address, Notice notice)
        : Watcher(std::move(notice)), m_database(address.dialect->makeDatabase(address)),
          m_seen(version())
    {
    }

    void look() override
    {
        if (m_isOpen && FileIdentity::of(m_database->address().path) != m_file) {
            m_isOpen = false;
            m_seen.reset();
        }
        const auto found = version();
        if (found && found != m_seen) {
            notice();
        }
        m_seen = found;
    }

private:
    // None while the file cannot be read.
    std::optional<QVariant> version()
    {
        if (!m_isOpen) {
            m_file = FileIdentity::of(m_database->address().path);
            m_isOpen = m_database->open(false) && m_database->checkSchema();
        }
        const auto answer =
            m_isOpen ? m_database->ask(QStringLiteral("PRAGMA data_version")) : std::nullopt;
        m_isOpen = answer.has_value();
        return answer;
    }

    const std::unique_ptr<Database> m_database;
    FileIdentity m_file;  // when it was opened
    bool m_isOpen = false;
    std::optional<QVariant> m_seen;  // the last version; none if the file could not be read
};

}  // namespace

std::unique_ptr<Watcher> makeSqliteWatcher(const StoreAddress &address, Watcher::Notice notice)
{
    return std::make_unique<SqliteWatcher>(address, std::move(notice));
}

}  // namespace TQServerInternal
