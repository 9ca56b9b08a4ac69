// The connection: lists of records, and how many queries failed.

#include "shop.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <tqcommserver.h>

namespace {

// The open shops by number. Several threads may open and close their connections at the same time.
std::mutex mutex;
std::map<unsigned int, Shop *> openShops;

}  // namespace

Shop *Shop::find(unsigned int number)
{
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = openShops.find(number);
    return found == openShops.end() ? nullptr : found->second;
}

struct TQCommServer::Connection
{
    // Runs a query, and fills its command record and its message identifier.
    template<typename Query>
    auto run(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, Query query)
    {
        message.id = ++messages;
        const unsigned int failures = shop.failures;
        const auto answer = query();
        command.status = shop.failures == failures ? 0 : 1;
        return answer;
    }

    // The rows of a table that belong to that owner, as a list of records, by name.
    TQLISTRECORD *list(PACKETDATATYPES type, unsigned int owner, SORTORDER order)
    {
        std::vector<Row> rows = shop.rows(type).value_or(std::vector<Row>());
        if (order == SORTORDER_ASCENDING) {
            std::reverse(rows.begin(), rows.end());  // each record goes before the last one
        }
        TQLISTRECORD *head = nullptr;
        for (const Row &row : rows) {
            if (row.owner == owner) {
                head = &Record::make(row, head)->shown.list;
            }
        }
        return head;
    }

    Shop shop;
    unsigned int messages = 0;
};

TQCommServer::TQCommServer(const char *url) : m_connection(new Connection)
{
    Shop &shop = m_connection->shop;
    shop.folder = url ? url : "";
    if (shop.rows(PACKETDATATYPE_OUTPUT)) {
        const std::lock_guard<std::mutex> lock(mutex);
        do {
            ++shop.number;
        } while (!openShops.emplace(shop.number, &shop).second);
    }
}

TQCommServer::~TQCommServer()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        openShops.erase(m_connection->shop.number);
    }
    delete m_connection;
}

TQLISTRECORD *TQCommServer::getDBList(
    TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type)
{
    return m_connection->run(command, message, [&]() -> TQLISTRECORD * {
        switch (type) {
        case PACKETDATATYPE_OUTPUTLIST:
            return m_connection->list(PACKETDATATYPE_OUTPUT, 0, SORTORDER_ASCENDING);
        case PACKETDATATYPE_BOOKOWNER:
            return m_connection->list(PACKETDATATYPE_BOOKOWNER, 0, SORTORDER_ASCENDING);
        default:
            return nullptr;
        }
    });
}

// This shop has one queue for each output, and one order.
TQJOB *TQCommServer::getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, TQQUEUE, SORTTYPE,
    SORTORDER sortOrder, int owner)
{
    return reinterpret_cast<TQJOB *>(m_connection->run(command, message,
        [&] { return m_connection->list(PACKETDATATYPE_JOB, unsigned(owner), sortOrder); }));
}

TQBOOK *TQCommServer::getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, SORTTYPE,
    SORTORDER sortOrder, const TQKEY_ELEMENT &owner)
{
    return reinterpret_cast<TQBOOK *>(m_connection->run(command, message, [&] {
        const unsigned int number = owner.hkey == PACKETDATATYPE_BOOKOWNER ? owner.key : 0;
        return m_connection->list(PACKETDATATYPE_BOOK, number, sortOrder);
    }));
}

ArchiveNode *TQCommServer::getArchiveNode(
    TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type, const TQKEY_ELEMENT &key)
{
    ArchiveNode *const node = m_connection->run(
        command, message, [&] { return loadArchive(m_connection->shop, type, key); });
    if (iserror(command)) {
        delete node;  // items are missing below it
        return nullptr;
    }
    return node;
}

int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key)
{
    return key.hkey == PACKETDATATYPE_OUTPUT ? static_cast<int>(key.key) : 0;
}

bool TQCommServer::iserror(TQLPCOMMANDS &command) { return command.status != 0; }
unsigned int TQCommServer::failures() const { return m_connection->shop.failures; }
const char *TQCommServer::errorText() const { return m_connection->shop.error.c_str(); }

const char *TQCommServer::getConnectedHostname() const
{
    return m_connection->shop.number != 0 ? "localhost" : nullptr;
}

int TQCommServer::getConnectedPortnum() const
{
    return static_cast<int>(m_connection->shop.number);
}
