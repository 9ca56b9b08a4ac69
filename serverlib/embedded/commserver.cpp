// The connection of the interface: each query becomes one selection of rows. A query that cannot be
// asked because of its arguments finds nothing and has not failed.

#include "tqcommserver.h"

#include "archivist_p.h"
#include "rows_p.h"
#include "tqstore.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

using namespace TQServerInternal;

namespace {

enum Command { ListCommand = 1, JobsCommand, BooksCommand, ArchiveCommand };
enum Status { Succeeded = 0, Failed = 1 };

// The listings that getDBList() knows: the data type that is asked for, and that of the items.
struct List
{
    PACKETDATATYPES asked;
    PACKETDATATYPES items;
};
constexpr List LISTS[] = {
    { PACKETDATATYPE_OUTPUTLIST, PACKETDATATYPE_OUTPUT },
    { PACKETDATATYPE_BOOKOWNER, PACKETDATATYPE_BOOKOWNER },
    { PACKETDATATYPE_ICCPROFILE, PACKETDATATYPE_ICCPROFILE },
};

// Which rows a query selects; "A" stands for the table of their type.
constexpr const char *ALL = "";
constexpr const char *BOOKS_OF_OWNER = "A.owner_id = ?";
constexpr const char *JOBS_OF_OUTPUT = "A.output_id = ? AND A.state BETWEEN ? AND ?";

// The order of a listing. Every sort type other than by name sorts by age: ids count up.
const char *orderOf(SORTTYPE type, SORTORDER order)
{
    const bool isDescending = order == SORTORDER_DESCENDING;
    if (type == SORTTYPE_NAME) {
        return isDescending ? "A.name DESC, A.id DESC" : "A.name, A.id";
    }
    return isDescending ? "A.id DESC" : "A.id";
}

// The lowest and the highest state of the jobs in a queue. A queue has one state, or all.
std::pair<int, int> statesOf(TQQUEUE queue)
{
    if (queue == TQQUEUE_ALL) {
        return { std::numeric_limits<int>::min(), std::numeric_limits<int>::max() };
    }
    return { queue, queue };
}

bool isStored(PACKETDATATYPES type)
{
    const StorageClass *known = storageClass(type);
    return known && known->source();
}

// The id of a stored item, which is the first word of its key; 0 for keys that no item has.
int idOf(const TQKEY_ELEMENT &key)
{
    const bool isId = key.key <= unsigned(std::numeric_limits<int>::max());
    return isId && isStored(static_cast<PACKETDATATYPES>(key.hkey)) ? int(key.key) : 0;
}

}  // namespace

struct __attribute__((visibility("hidden"))) TQCommServer::Connection
{
    explicit Connection(const TQCommServer *owner) : store(owner) {}

    // Fills the records of a query. False when the store cannot be reached; the query has failed.
    bool start(TQLPCOMMANDS &record, ZQ_MESSAGE_ID &message, Command command);
    void finish(TQLPCOMMANDS &record, bool succeeded);
    // Runs a query for items of that type.
    TQLISTRECORD *list(TQLPCOMMANDS &record, PACKETDATATYPES type, const Selection &selection,
        const QVariantList &values);

    OpenStore store;
    unsigned messages = 0;
};

bool TQCommServer::Connection::start(TQLPCOMMANDS &record, ZQ_MESSAGE_ID &message, Command command)
{
    message.id = ++messages;
    record = { command, Succeeded };
    const bool reached = store.reach();
    if (!reached) {
        finish(record, false);
    }
    return reached;
}

void TQCommServer::Connection::finish(TQLPCOMMANDS &record, bool succeeded)
{
    record.status = succeeded ? Succeeded : Failed;
    if (!succeeded) {
        store.fail();
    }
}

TQLISTRECORD *TQCommServer::Connection::list(TQLPCOMMANDS &record, PACKETDATATYPES type,
    const Selection &selection, const QVariantList &values)
{
    TQLISTRECORD *records = nullptr;
    finish(record, readRecords(store, *storageClass(type), selection, values, &records));
    return records;
}

TQCommServer::TQCommServer(const char *url) : m_connection(new Connection(this))
{
    m_connection->store.open(url ? url : "");
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
    const OpenStore &store = m_connection->store;
    return store.isOpen() ? store.host().c_str() : nullptr;
}

int TQCommServer::getConnectedPortnum() const { return m_connection->store.port(); }

ArchiveNode *TQCommServer::getArchiveNode(
    TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type, const TQKEY_ELEMENT &key)
{
    if (!m_connection->start(command, message, ArchiveCommand) || key.hkey != type || !idOf(key)) {
        return nullptr;
    }
    Archivist archivist(m_connection->store);
    std::unique_ptr<ArchiveNode> node = archivist.load(type, idOf(key));
    m_connection->finish(command, !archivist.failed());
    return archivist.failed() ? nullptr : node.release();
}

unsigned int TQCommServer::failures() const { return m_connection->store.failures(); }

const char *TQCommServer::errorText() const { return m_connection->store.error().constData(); }

TQReadTransaction::TQReadTransaction(TQCommServer &server) : m_connection(0)
{
    if (OpenStore *store = OpenStore::find(&server)) {
        m_connection = store->number();
        store->beginReading();
    }
}

TQReadTransaction::~TQReadTransaction()
{
    if (OpenStore *store = OpenStore::find(m_connection)) {
        store->endReading();
    }
}

bool TQListKeys(TQCommServer &server, PACKETDATATYPES type, std::vector<TQNAMEDKEY> &keys)
{
    keys.clear();
    OpenStore *const store = OpenStore::find(&server);
    if (!store) {
        return false;  // the connection is another thread's
    }
    const bool isListed =
        store->reach() && (!isStored(type) || readKeys(*store, *storageClass(type), keys));
    if (!isListed) {
        store->fail();
    }
    return isListed;
}
