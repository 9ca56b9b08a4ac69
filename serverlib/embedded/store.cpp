#include "tqstore.h"

#include "database_p.h"
#include "partfolder_p.h"
#include "schemacheck_p.h"
#include "seeder_p.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>

using namespace TQServerInternal;

namespace {

using Seed = std::function<bool(Database &database)>;

QString systemError(const QString &label, int number)
{
    return QStringLiteral("%1: %2").arg(label, QString::fromLocal8Bit(std::strerror(number)));
}

// In a store that is done readers hold up no writers, and writers no readers.
bool setJournal(Database &database)
{
    const QVariant mode = database.valueOf(QStringLiteral("PRAGMA journal_mode = WAL"));
    return mode.toString() == QLatin1String("wal") ||
        (!mode.isNull() &&
            database.fail(database.address().label() +
                QStringLiteral(": no write-ahead log can be kept there")));
}

bool fillFile(const StoreAddress &address, const Seed &seed, QString &error)
{
    Database database;
    // What is half made is thrown away whole, so it needs no journal.
    const bool filled = database.open(address, true) &&
        database.execute(QStringLiteral("PRAGMA journal_mode = OFF")) &&
        database.execute(QStringLiteral("PRAGMA synchronous = OFF")) && seed(database) &&
        setJournal(database);
    error = database.error();
    return filled;
}

QString existsAlready(const QString &label)
{
    return QStringLiteral("%1: exists already").arg(label);
}

// Why there cannot be a new file; empty when there can. SQLite would put what a journal or log
// holds, which another store of that name has left, into the new one.
QString obstacle(const QString &label, const QString &target)
{
    const QFileInfo file(target);
    if (file.exists() || file.isSymLink()) {
        return existsAlready(label);
    }
    for (const char *suffix : { "-journal", "-wal" }) {
        if (QFileInfo(target + QLatin1String(suffix)).size() > 0) {
            return existsAlready(label + QLatin1String(suffix)) +
                QStringLiteral(", of another store");
        }
    }
    return {};
}

// A new file is filled in a folder of its own first.
bool createFile(const StoreAddress &address, const Seed &seed, QString &error)
{
    const QString &target = address.path;
    const QString label = address.label();
    PartFolder::removeOrphans(target);
    error = obstacle(label, target);
    if (!error.isEmpty()) {
        return false;
    }
    PartFolder folder(target);
    if (!folder.exists()) {
        error = systemError(label, errno);
        return false;
    }
    StoreAddress part = address;
    part.path = folder.part();
    if (!fillFile(part, seed, error)) {
        return false;
    }
    if (!folder.holdsPartAlone()) {
        error = QStringLiteral("%1: a write-ahead log is left over").arg(label);
        return false;
    }
    if (!folder.moveToTarget()) {
        error = errno == EEXIST ? existsAlready(label) : systemError(label, errno);
        return false;
    }
    return true;
}

// The tables and all rows come into being with the end of one transaction.
bool createTables(const StoreAddress &address, const Seed &seed, QString &error)
{
    Database database;
    const bool created = database.open(address, false) && seed(database);
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

// One file after the other, as all of them may be too much for the memory.
bool storeProfiles(Database &database, const std::vector<std::string> &files,
    std::vector<TQKEY_ELEMENT> &keys, const TQPROGRESS &progress)
{
    for (const std::string &file : files) {
        QString error;
        const auto profile = IccProfile::read(QByteArray::fromStdString(file), error);
        if (!profile) {
            return database.fail(error);
        }
        const int id = storeProfile(database, *profile);
        if (id == 0) {
            return false;
        }
        keys.push_back({ unsigned(id), PACKETDATATYPE_ICCPROFILE });
        if (progress && !progress(keys.size(), files.size())) {
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
    const auto address = StoreAddress::parse(url ? url : "", reason);
    bool imported = false;
    if (address && address->isMemory()) {
        reason = QStringLiteral("a store in memory cannot be kept");
    } else if (address) {
        Database database;
        // The tables are checked in the transaction, so that nobody adds a trigger meanwhile.
        imported = database.open(*address, false) && database.beginWriting() &&
            checkSchema(database) && storeProfiles(database, files, stored, progress) &&
            database.commit();
        reason = database.error();
    }
    if (imported && keys) {
        *keys = stored;
    }
    error = imported ? std::string() : reason.toStdString();
    return imported;
}
