#include "tqstore.h"

#include "database_p.h"
#include "schemacheck_p.h"
#include "seeder_p.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

using Seed = std::function<bool(Database &database)>;

// Behind a new store's path as long as it is being filled; the process's id follows.
constexpr const char *PART_SUFFIX = ".init-";

QString systemError(const QString &path, int number)
{
    return QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(number)));
}

// Writes a file's or folder's content out to the disk.
bool flush(const QString &path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool flushed = file >= 0 && ::fsync(file) == 0;
    const int number = errno;
    if (file >= 0) {
        ::close(file);
    }
    errno = number;
    return flushed;
}

// Gives a file its final name unless that is taken.
bool renameToNew(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // File systems without that kind of renaming have links.
    return ::link(source.constData(), target.constData()) == 0 && ::unlink(source.constData()) == 0;
}

bool isRunning(int process)
{
    if (::kill(process, 0) != 0 && errno == ESRCH) {
        return false;
    }
    // One that has ended, but was not waited for, has no arguments any more.
    QFile arguments(QStringLiteral("/proc/%1/cmdline").arg(process));
    return !arguments.open(QIODevice::ReadOnly) || !arguments.readAll().isEmpty();
}

// Removes what processes that were killed while they created this store have left.
void removeOrphans(const QFileInfo &target)
{
    const QString prefix = target.fileName() + QLatin1String(PART_SUFFIX);
    QDir folder = target.absoluteDir();
    for (const QString &name : folder.entryList(QDir::Files)) {
        bool isNumber = false;
        const int process = name.startsWith(prefix) ? name.mid(prefix.size()).toInt(&isNumber) : 0;
        if (isNumber && process > 0 && !isRunning(process)) {
            folder.remove(name);
        }
    }
}

bool fillFile(const StoreAddress &address, const Seed &seed, QString &error)
{
    Database database;
    // What is half made is thrown away whole, so it needs no journal.
    const bool filled = database.open(address, true) &&
        database.execute(QStringLiteral("PRAGMA journal_mode = OFF")) &&
        database.execute(QStringLiteral("PRAGMA synchronous = OFF")) && seed(database);
    error = database.error();
    return filled;
}

// A new file is filled under another name first.
bool createFile(const StoreAddress &address, const Seed &seed, QString &error)
{
    const QFileInfo target(address.path);
    if (target.exists() || target.isSymLink()) {
        error = QStringLiteral("%1: exists already").arg(address.path);
        return false;
    }
    removeOrphans(target);
    StoreAddress part = address;
    part.path = target.absoluteFilePath() + QLatin1String(PART_SUFFIX) +
        QString::number(QCoreApplication::applicationPid());
    QFile::remove(part.path);
    bool created = fillFile(part, seed, error);
    if (!created) {
        error.replace(part.path, address.path);
    } else if (!flush(part.path) || !renameToNew(part.path, target.absoluteFilePath())) {
        error = systemError(address.path, errno);
        created = false;
    }
    if (created) {
        flush(target.absolutePath());
    } else {
        QFile::remove(part.path);
    }
    return created;
}

// The tables and all rows come into being with the end of one transaction.
bool createTables(const StoreAddress &address, const Seed &seed, QString &error)
{
    Database database;
    const bool opened = database.open(address, false);
    if (opened && database.hasSchema()) {
        database.fail(QStringLiteral("%1: holds a store already").arg(address.label()));
    }
    const bool created = opened && database.error().isEmpty() && seed(database);
    error = database.error();
    return created;
}

bool createStore(const char *url, const Seed &seed, std::string &error)
{
    QString reason;
    const auto address = StoreAddress::parse(url ? url : "", reason);
    bool created = false;
    if (address && address->isMemory()) {
        reason = QStringLiteral("a store in memory cannot be kept");
    } else if (address) {
        created = address->isFile() ? createFile(*address, seed, reason)
                                    : createTables(*address, seed, reason);
    }
    error = created ? std::string() : reason.toStdString();
    return created;
}

bool readProfiles(
    const std::vector<std::string> &files, std::vector<IccProfile> &profiles, QString &error)
{
    for (const std::string &file : files) {
        auto profile = IccProfile::read(QByteArray::fromStdString(file), error);
        if (!profile) {
            return false;
        }
        profiles.push_back(std::move(*profile));
    }
    return true;
}

bool storeProfiles(Database &database, const std::vector<IccProfile> &profiles,
    std::vector<TQKEY_ELEMENT> &keys, const TQPROGRESS &progress)
{
    size_t done = 0;
    for (const IccProfile &profile : profiles) {
        const int id = storeProfile(database, profile);
        if (id == 0) {
            return false;
        }
        keys.push_back({ unsigned(id), PACKETDATATYPE_ICCPROFILE });
        if (progress && !progress(++done, profiles.size())) {
            return database.fail(QLatin1String(INTERRUPTED));
        }
    }
    return true;
}

}  // namespace

bool TQCreateSampleStore(const char *url, const TQPROGRESS &progress, std::string &error)
{
    return createStore(
        url, [&](Database &database) { return seedSample(database, progress); }, error);
}

bool TQCreateGeneratedStore(
    const char *url, size_t jobs, const TQPROGRESS &progress, std::string &error)
{
    return createStore(
        url, [&](Database &database) { return seedGenerated(database, jobs, progress); }, error);
}

bool TQImportProfiles(const char *url, const std::vector<std::string> &files,
    const TQPROGRESS &progress, std::string &error, std::vector<TQKEY_ELEMENT> *keys)
{
    QString reason;
    std::vector<TQKEY_ELEMENT> stored;
    std::vector<IccProfile> profiles;
    const auto address = StoreAddress::parse(url ? url : "", reason);
    bool imported = false;
    if (address && address->isMemory()) {
        reason = QStringLiteral("a store in memory cannot be kept");
    } else if (address && readProfiles(files, profiles, reason)) {
        Database database;
        // The tables are checked in the transaction, so that nobody adds a trigger meanwhile.
        imported = database.open(*address, false) && database.begin() && checkSchema(database) &&
            storeProfiles(database, profiles, stored, progress) && database.commit();
        reason = database.error();
    }
    if (imported && keys) {
        *keys = stored;
    }
    error = imported ? std::string() : reason.toStdString();
    return imported;
}
