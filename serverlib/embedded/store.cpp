// Makes stores, and puts ICC profiles into them. A new file appears under its name when it is
// complete; in a database on a server all happens in one transaction.

#include "tqstore.h"

#include "database_p.h"
#include "partfolder_p.h"
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

// Makes the tables and all rows: in a new file at the address, or in the database that is there.
bool fill(const StoreAddress &address, const Seed &seed, QString &error)
{
    const auto database = address.dialect->makeDatabase(address);
    const bool isFilled = database->open(address.isFile()) && database->beginFilling() &&
        seed(*database) && database->endFilling();
    error = database->error();
    return isFilled;
}

QString existsAlready(const QString &label)
{
    return QStringLiteral("%1: exists already").arg(label);
}

// Why there cannot be a new file; empty when there can. What the journal or the log of an earlier
// store of that name still holds would become part of the new one.
QString obstacle(const StoreAddress &address)
{
    const QFileInfo file(address.path);
    if (file.exists() || file.isSymLink()) {
        return existsAlready(address.label);
    }
    for (const char *suffix : { address.dialect->journal, address.dialect->log }) {
        if (QFileInfo(address.path + QLatin1String(suffix)).size() > 0) {
            return existsAlready(address.label + QLatin1String(suffix)) +
                QStringLiteral(", of another store");
        }
    }
    return {};
}

// A new file is filled in a folder of its own, and then moved to where it belongs.
bool createFile(const StoreAddress &address, const Seed &seed, QString &error)
{
    PartFolder::removeOrphans(address.path);
    error = obstacle(address);
    if (!error.isEmpty()) {
        return false;
    }
    PartFolder folder(address.path);
    if (!folder.exists()) {
        error = systemError(address.label, errno);
        return false;
    }
    StoreAddress part = address;
    part.path = folder.part();
    if (!fill(part, seed, error)) {
        return false;
    }
    if (!folder.holdsPartAlone()) {
        error = QStringLiteral("%1: a write-ahead log is left over").arg(address.label);
        return false;
    }
    if (!folder.moveToTarget()) {
        error = errno == EEXIST ? existsAlready(address.label) : systemError(address.label, errno);
        return false;
    }
    return true;
}

bool createStore(const char *url, const Seed &seed, std::string &error)
{
    QString reason;
    const auto address = StoreAddress::parse(url ? url : "", reason);
    bool created = false;
    if (address && address->isMemory()) {
        reason = QStringLiteral("a store in memory cannot be kept");
    } else if (address) {
        created =
            address->isFile() ? createFile(*address, seed, reason) : fill(*address, seed, reason);
    }
    error = created ? std::string() : reason.toStdString();
    return created;
}

// One file at a time: all of them together may be more than the memory.
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
        const auto database = address->dialect->makeDatabase(*address);
        // The tables are checked in the transaction, so that nobody adds a trigger meanwhile.
        imported = database->open(false) && database->beginWriting() && database->checkSchema() &&
            storeProfiles(*database, files, stored, progress) && database->commit();
        reason = database->error();
    }
    if (imported && keys) {
        *keys = stored;
    }
    error = imported ? std::string() : reason.toStdString();
    return imported;
}
