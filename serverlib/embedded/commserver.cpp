#include "tqcommserver.h"

#include "database_p.h"
#include "rows_p.h"
#include "schemacheck_p.h"
#include "seeder_p.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

enum Command { ListCommand = 1, JobsCommand, BooksCommand, ArchiveCommand };
enum Status { Succeeded = 0, Failed = 1 };

// Bounds of an archive tree.
constexpr size_t MAX_ARCHIVE_DEPTH = 64;
constexpr size_t MAX_ARCHIVE_ITEMS = 100000;

// What a listing holds: the data type it is asked by, that of its items.
struct List
{
    PACKETDATATYPES asked;
    PACKETDATATYPES items;
};
constexpr List LISTS[] = {
    { PACKETDATATYPE_OUTPUTLIST, PACKETDATATYPE_OUTPUT },
    { PACKETDATATYPE_BOOKOWNER, PACKETDATATYPE_BOOKOWNER },
};

// The selections; "A" is the alias of the selected type's own table.
constexpr const char *ALL = "";
constexpr const char *BY_KEY = "A.id = ?";
constexpr const char *BY_NAME = "A.name = ?";
constexpr const char *BOOKS_OF_OWNER = "A.owner_id = ?";
constexpr const char *JOBS_OF_OUTPUT = "A.output_id = ? AND A.state BETWEEN ? AND ?";
constexpr const char *UNORDERED = "";

// The order of a listing; every sort type but by name means by age, which is by id.
const char *orderOf(SORTTYPE type, SORTORDER order)
{
    const bool down = order == SORTORDER_DESCENDING;
    if (type == SORTTYPE_NAME) {
        return down ? "A.name DESC, A.id DESC" : "A.name, A.id";
    }
    return down ? "A.id DESC" : "A.id";
}

// The states of the jobs in a queue: one each, or all.
std::pair<int, int> statesOf(TQQUEUE queue)
{
    return queue == TQQUEUE_ALL
        ? std::make_pair(std::numeric_limits<int>::min(), std::numeric_limits<int>::max())
        : std::make_pair(int(queue), int(queue));
}

bool isStored(PACKETDATATYPES type)
{
    const StorageClass *known = storageClass(type);
    return known && known->source();
}

// Id of a stored item; 0 for keys that no item of this store has.
int idOf(const TQKEY_ELEMENT &key)
{
    const bool fits = key.key <= unsigned(std::numeric_limits<int>::max());
    return fits && isStored(static_cast<PACKETDATATYPES>(key.hkey)) ? int(key.key) : 0;
}

// Makes archive trees.
class Archivist
{
public:
    explicit Archivist(Database &database) : m_database(database) {}

    // The item of that type with that id or name and what it refers to; null when there is none.
    std::unique_ptr<ArchiveNode> load(
        PACKETDATATYPES type, const char *where, const QVariant &value)
    {
        std::unique_ptr<TQPacketable> item = loadItem(type, where, value);
        if (!item) {
            return nullptr;
        }
        const TQKEY_ELEMENT key = item->dbkey;
        auto node = std::make_unique<ArchiveNode>(item.release());
        // What is referred to by name is known by its name alone.
        if (where == BY_NAME) {
            node->packetable->dbkey = TQKEY_CC::getNullKey();
        }
        m_path.push_back(key);
        addReferred(*node);
        m_path.pop_back();
        return node;
    }

    bool failed() const { return m_failed; }

private:
    std::unique_ptr<TQPacketable> loadItem(
        PACKETDATATYPES type, const char *where, const QVariant &value)
    {
        const StorageClass *known = storageClass(type);
        if (!isStored(type) || m_items == MAX_ARCHIVE_ITEMS) {
            return nullptr;
        }
        TQLISTRECORD *list = nullptr;
        m_failed =
            !readRecords(m_database, *known, { where, UNORDERED }, { value }, &list) || m_failed;
        Record *record = Record::of(list);
        if (!record || isOnPath(record->key)) {
            TQPacketFreeList(&list, type);
            return nullptr;
        }
        TQLISTRECORD *others = std::exchange(list->next, nullptr);
        TQPacketFreeList(&others, type);
        std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(type));
        item->loadRecord(reinterpret_cast<unsigned char *>(list));
        item->setName(record->name.c_str());
        ++m_items;
        return item;
    }

    void addReferred(ArchiveNode &node)
    {
        if (m_path.size() > MAX_ARCHIVE_DEPTH) {
            return;
        }
        TQDB_REFERENCE *reference = nullptr;
        node.packetable->getReferences(0, &reference, 0);
        for (; reference; reference = reference->next) {
            if (node.findNode(reference)) {
                continue;
            }
            const bool byKey = TQKEY_CC::isValid(reference->key);
            std::unique_ptr<ArchiveNode> child = byKey
                ? load(
                      static_cast<PACKETDATATYPES>(reference->key.hkey), BY_KEY, reference->key.key)
                : load(reference->datatype, BY_NAME, QString::fromUtf8(reference->name));
            node.add(child.release());
        }
    }

    bool isOnPath(const TQKEY_ELEMENT &key) const
    {
        return std::any_of(m_path.begin(), m_path.end(), [&key](const TQKEY_ELEMENT &above) {
            return above.key == key.key && above.hkey == key.hkey;
        });
    }

    Database &m_database;
    std::vector<TQKEY_ELEMENT> m_path;  // from the root to the node that is being loaded
    size_t m_items = 0;
    bool m_failed = false;
};

}  // namespace

struct __attribute__((visibility("hidden"))) TQCommServer::Connection
{
    bool open(const char *url);
    // Starts a command; false, with the command failed, when the store cannot be reached.
    bool start(TQLPCOMMANDS &record, ZQ_MESSAGE_ID &message, Command command);
    void finish(TQLPCOMMANDS &record, bool succeeded);
    void fail();
    TQLISTRECORD *list(TQLPCOMMANDS &record, PACKETDATATYPES type, const Selection &selection,
        const QVariantList &values);

    Database database;
    QByteArray error;  // of the last failure
    unsigned failures = 0;
    unsigned messages = 0;
};

bool TQCommServer::Connection::open(const char *url)
{
    QString reason;
    const auto address = StoreAddress::parse(url, reason);
    if (!address) {
        return database.fail(reason);
    }
    const bool opened = database.open(*address, address->isMemory()) &&
        (!address->isMemory() || seedSample(database, {})) && checkSchema(database);
    if (opened) {
        database.publish();
    }
    return opened;
}

bool TQCommServer::Connection::start(TQLPCOMMANDS &record, ZQ_MESSAGE_ID &message, Command command)
{
    message.id = ++messages;
    record = { command, Succeeded };
    const bool reached = database.port() != 0 && database.recover();
    if (!reached) {
        finish(record, false);
    }
    return reached;
}

void TQCommServer::Connection::finish(TQLPCOMMANDS &record, bool succeeded)
{
    record.status = succeeded ? Succeeded : Failed;
    if (!succeeded) {
        fail();
    }
}

void TQCommServer::Connection::fail()
{
    ++failures;
    error = database.error().toUtf8();
}

TQLISTRECORD *TQCommServer::Connection::list(TQLPCOMMANDS &record, PACKETDATATYPES type,
    const Selection &selection, const QVariantList &values)
{
    TQLISTRECORD *records = nullptr;
    finish(record, readRecords(database, *storageClass(type), selection, values, &records));
    return records;
}

TQCommServer::TQCommServer(const char *url) : m_connection(new Connection)
{
    if (!m_connection->open(url ? url : "")) {
        m_connection->fail();
    }
}

TQCommServer::~TQCommServer() { delete m_connection; }

TQLISTRECORD *TQCommServer::getDBList(
    TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type)
{
    const auto list = std::find_if(std::begin(LISTS), std::end(LISTS),
        [type](const List &candidate) { return candidate.asked == type; });
    if (!m_connection->start(command, message, ListCommand) || list == std::end(LISTS)) {
        return nullptr;
    }
    return m_connection->list(
        command, list->items, { ALL, orderOf(SORTTYPE_NAME, SORTORDER_ASCENDING) }, {});
}

TQJOB *TQCommServer::getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, TQQUEUE queue,
    SORTTYPE sortType, SORTORDER sortOrder, int owner)
{
    if (!m_connection->start(command, message, JobsCommand)) {
        return nullptr;
    }
    const std::pair<int, int> states = statesOf(queue);
    return reinterpret_cast<TQJOB *>(m_connection->list(command, PACKETDATATYPE_JOB,
        { JOBS_OF_OUTPUT, orderOf(sortType, sortOrder) }, { owner, states.first, states.second }));
}

TQBOOK *TQCommServer::getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, SORTTYPE sortType,
    SORTORDER sortOrder, const TQKEY_ELEMENT &owner)
{
    if (!m_connection->start(command, message, BooksCommand)) {
        return nullptr;
    }
    const int id = owner.hkey == PACKETDATATYPE_BOOKOWNER ? idOf(owner) : 0;
    return reinterpret_cast<TQBOOK *>(m_connection->list(
        command, PACKETDATATYPE_BOOK, { BOOKS_OF_OWNER, orderOf(sortType, sortOrder) }, { id }));
}

int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key) { return idOf(key); }

bool TQCommServer::iserror(TQLPCOMMANDS &command) { return command.status != Succeeded; }

const char *TQCommServer::getConnectedHostname() const
{
    const std::string &host = m_connection->database.host();
    return host.empty() ? nullptr : host.c_str();
}

int TQCommServer::getConnectedPortnum() const { return m_connection->database.port(); }

ArchiveNode *TQCommServer::getArchiveNode(
    TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type, const TQKEY_ELEMENT &key)
{
    if (!m_connection->start(command, message, ArchiveCommand) || key.hkey != type || !idOf(key)) {
        return nullptr;
    }
    Archivist archivist(m_connection->database);
    std::unique_ptr<ArchiveNode> node = archivist.load(type, BY_KEY, idOf(key));
    m_connection->finish(command, !archivist.failed());
    return archivist.failed() ? nullptr : node.release();
}

unsigned int TQCommServer::failures() const { return m_connection->failures; }

const char *TQCommServer::errorText() const { return m_connection->error.constData(); }

TQReadTransaction::TQReadTransaction(TQCommServer &) : m_connection(0) {}

TQReadTransaction::~TQReadTransaction() = default;
