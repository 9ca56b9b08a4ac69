#include "xmlcommserver.h"

#include "linkedlist_p.h"
#include "xmlaction.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"
#include "tqitems.h"

#include <QtAlgorithms>

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace {

// What the server is asked for; the meaning of the numbers is its own.
constexpr TQQUEUE QUEUE = TQQUEUE_ALL;
constexpr SORTTYPE SORT_BY = SORTTYPE_NAME;
constexpr SORTORDER SORT_ORDER = SORTORDER_ASCENDING;

// The family that lists of owners are freed as, books' owners too.
constexpr PACKETDATATYPES FREE_OWNERS = PACKETDATATYPE_OUTPUT;

TQLISTRECORD *asList(TQJOB *jobs) { return reinterpret_cast<TQLISTRECORD *>(jobs); }
TQLISTRECORD *asList(TQBOOK *books) { return reinterpret_cast<TQLISTRECORD *>(books); }
unsigned char *asBytes(TQLISTRECORD *record) { return reinterpret_cast<unsigned char *>(record); }
template<typename Record>
Record *as(TQLISTRECORD *record)
{
    return reinterpret_cast<Record *>(record);
}

// A record's text; never null.
const char *textOf(const char *text) { return text ? text : ""; }

// A record on its way from a list to the item that takes it over.
struct FreeRecord
{
    PACKETDATATYPES family;
    void operator()(TQLISTRECORD *record) const { TQPacketFreeItem(record, family); }
};
using OwnedRecord = std::unique_ptr<TQLISTRECORD, FreeRecord>;

// Records of one family, joined from several queries. What is appended is walked once, and what
// is there already not again. A list that links back to itself is cut open.
class RecordList
{
public:
    RecordList(PACKETDATATYPES family, TQLISTRECORD *records)
        : m_family(family), m_head(records), m_tail(cutOpen(records))
    {
    }
    RecordList(RecordList &&other) noexcept
        : m_family(other.m_family), m_head(other.release()), m_tail(other.m_tail)
    {
    }
    RecordList &operator=(RecordList &&) = delete;
    ~RecordList()
    {
        if (m_head) {
            free();
        }
    }

    void append(TQLISTRECORD *records)
    {
        if (records) {
            TQLISTRECORD *end = m_tail;
            AddListList(m_tail ? &end : &m_head, records);
            m_tail = cutOpen(records);
        }
    }

    bool isEmpty() const { return !m_head; }
    TQLISTRECORD *head() const { return m_head; }
    TQLISTRECORD *release() { return std::exchange(m_head, nullptr); }
    void free() { TQPacketFreeList(&m_head, m_family); }

    // Unlinks every record and hands it to use.
    template<typename Use>
    void takeEach(Use use)
    {
        for (TQLISTRECORD *record = m_head; record;) {
            TQLISTRECORD *const next = record->next;
            RemoveItemFromList(&m_head, record);
            OwnedRecord taken(record, FreeRecord { m_family });
            use(taken);
            record = next;
        }
    }

    // Unlinks the records that are chosen, in one walk: each heads the rest of the list when it
    // goes.
    template<typename IsChosen>
    void unlinkIf(IsChosen isChosen)
    {
        TQLISTRECORD *previous = nullptr;
        for (TQLISTRECORD *record = m_head; record;) {
            TQLISTRECORD *const next = record->next;
            if (!isChosen(record)) {
                previous = record;
            } else {
                TQLISTRECORD *from = record;
                RemoveItemFromList(&from, record);
                (previous ? previous->next : m_head) = next;
            }
            record = next;
        }
    }

private:
    // Returns the last record.
    static TQLISTRECORD *cutOpen(TQLISTRECORD *records)
    {
        TQLISTRECORD *const last = lastOf(records);
        if (last) {
            last->next = nullptr;
        }
        return last;
    }

    const PACKETDATATYPES m_family;
    TQLISTRECORD *m_head;
    TQLISTRECORD *m_tail;
};

struct DeleteKeys
{
    QList<TQKEY_ELEMENT *> keys;
    ~DeleteKeys() { qDeleteAll(keys); }
};

template<typename Query>
RecordList gatherByKeys(PACKETDATATYPES family, const QList<TQKEY_ELEMENT *> &keys, Query query)
{
    RecordList records(family, nullptr);
    for (const TQKEY_ELEMENT *key : keys) {
        if (key) {
            records.append(asList(query(*key)));
        }
    }
    return records;
}

// Gathers from all owners of a type. An empty list of books' owners is freed like any other.
template<typename Query>
RecordList gatherByOwners(
    PACKETDATATYPES family, const XMLCommServer &server, PACKETDATATYPES ownerType, Query query)
{
    RecordList owners(FREE_OWNERS, server.getDBList(ownerType));
    RecordList records(family, nullptr);
    for (TQLISTRECORD *record = owners.head(); record; record = record->next) {
        const TQOWNER *owner = as<TQOWNER>(record);
        records.append(asList(query(TQKEY_ELEMENT { owner->key, owner->hkey })));
    }
    if (!owners.isEmpty() || ownerType == PACKETDATATYPE_BOOKOWNER) {
        owners.free();
    }
    return records;
}

// The records for the keys of the request or, without any, for all owners of that type.
template<typename Query>
RecordList gather(PACKETDATATYPES family, const XMLAction *request, const XMLCommServer &server,
    PACKETDATATYPES ownerType, Query query)
{
    DeleteKeys list;
    if (request && request->hasTQKEYList()) {
        list.keys = request->getTQKEYList();
    }
    return list.keys.isEmpty() ? gatherByOwners(family, server, ownerType, query)
                               : gatherByKeys(family, list.keys, query);
}

// By publication identifier, the job to send for it.
using Publications = std::map<unsigned int, TQJOB *>;

Publications choosePublications(TQLISTRECORD *jobs)
{
    Publications chosen;
    for (TQLISTRECORD *record = jobs; record; record = record->next) {
        TQJOB *const job = as<TQJOB>(record);
        if (!job->publicationName) {
            continue;
        }
        TQJOB *&entry = chosen[job->publicationId];
        if (!entry || TQJOB_CC::pageNumber(job) < TQJOB_CC::pageNumber(entry)) {
            entry = job;
        }
    }
    return chosen;
}

// Takes one job for each publication off the list, by ascending publication identifier.
std::vector<OwnedRecord> takePublications(RecordList &jobs)
{
    const Publications chosen = choosePublications(jobs.head());
    std::vector<OwnedRecord> taken;
    taken.reserve(chosen.size());
    jobs.unlinkIf([&chosen](TQLISTRECORD *record) {
        const TQJOB *job = as<TQJOB>(record);
        return job->publicationName && chosen.at(job->publicationId) == job;
    });
    for (const auto &[id, job] : chosen) {
        taken.emplace_back(asList(job), FreeRecord { PACKETDATATYPE_JOB });
    }
    return taken;
}

}  // namespace

XMLCommServer::XMLCommServer(TQCommServer *server) : XMLAgent(0), m_commServer(server) {}

XMLCommServer::~XMLCommServer() = default;

void XMLCommServer::receive(XMLPacket *packet)
{
    if (!packet) {
        return;
    }
    std::unique_ptr<XMLPacket> owned(packet);
    if (packet->isEmpty()) {
        return;
    }
    std::list<QDomNode> actions;
    packet->getNodesOfType(XMLObject::XMLOBJECT_ACTION, actions);
    actions.remove_if([](const QDomNode &node) { return !node.isElement(); });
    if (!actions.empty()) {
        XMLAction request;
        request.setNode(actions.front().toElement());
        serve(packet->getSourceAgentID(), request);
    }
    packet->deleteLater();
    owned.release();
}

void XMLCommServer::serve(int source, XMLAction &request) const
{
    switch (request.getType()) {
    case REQUEST_OUTPUTS:
        return sendOUTPUTs(source);
    case REQUEST_PUBLICATIONS:
        return sendPublications(source, &request);
    case REQUEST_BOOKS:
        return sendBooks(source, &request);
    case REQUEST_JOBS:
        return sendTQJOBs(source, &request);
    }
}

void XMLCommServer::reply(std::unique_ptr<XMLPacket> packet) const
{
    if (router) {
        router->send(packet.get());
        packet.release();
    }
}

TQLISTRECORD *XMLCommServer::getDBList(PACKETDATATYPES type) const
{
    if (!m_commServer) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    TQLISTRECORD *records = m_commServer->getDBList(command, message, type);
    if (records && m_commServer->iserror(command)) {
        TQPacketFreeList(&records, FREE_OWNERS);
        return nullptr;
    }
    return records;
}

TQJOB *XMLCommServer::getTQJOBs(TQKEY_ELEMENT key) const
{
    if (!m_commServer) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const int owner = m_commServer->getidfromtqkey(key);
    return m_commServer->getJobqueue(command, message, QUEUE, SORT_BY, SORT_ORDER, owner);
}

TQJOB *XMLCommServer::getTQJOBs(const QList<TQKEY_ELEMENT *> &keys) const
{
    const auto query = [this](TQKEY_ELEMENT key) { return getTQJOBs(key); };
    return as<TQJOB>(gatherByKeys(PACKETDATATYPE_JOB, keys, query).release());
}

TQBOOK *XMLCommServer::getBooks(TQKEY_ELEMENT key) const
{
    if (!m_commServer) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    return m_commServer->getBooks(command, message, SORT_BY, SORT_ORDER, key);
}

TQBOOK *XMLCommServer::getBooks(const QList<TQKEY_ELEMENT *> &keys) const
{
    const auto query = [this](TQKEY_ELEMENT key) { return getBooks(key); };
    return as<TQBOOK>(gatherByKeys(PACKETDATATYPE_BOOK, keys, query).release());
}

void XMLCommServer::sendOUTPUTs(int destinationAgentID) const
{
    RecordList outputs(FREE_OWNERS, getDBList(PACKETDATATYPE_OUTPUTLIST));
    if (outputs.isEmpty()) {
        return;
    }
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    const std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(PACKETDATATYPE_OUTPUT));
    if (!item) {
        return;
    }
    outputs.takeEach([&](OwnedRecord &record) {
        item->loadRecord(asBytes(record.release()));
        packet->append(*item, false);
    });
    reply(std::move(packet));
}

void XMLCommServer::sendBooks(int destinationAgentID, XMLAction *request) const
{
    RecordList books = gather(PACKETDATATYPE_BOOK, request, *this, PACKETDATATYPE_BOOKOWNER,
        [this](TQKEY_ELEMENT key) { return getBooks(key); });
    if (books.isEmpty()) {
        return;
    }
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    BOOK_CC item;
    books.takeEach([&](OwnedRecord &record) {
        item.setName(textOf(as<TQBOOK>(record.get())->name));
        item.setData(asBytes(record.release()));
        packet->append(item, false);
    });
    reply(std::move(packet));
    books.free();
}

void XMLCommServer::sendTQJOBs(int destinationAgentID, XMLAction *request) const
{
    // Unlike the value's own default, a request that does not say leaves publications out.
    const bool exclude =
        !request || !request->hasExcludePublications() || request->getExcludePublications();
    RecordList jobs = gather(PACKETDATATYPE_JOB, request, *this, PACKETDATATYPE_OUTPUTLIST,
        [this](TQKEY_ELEMENT key) { return getTQJOBs(key); });
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    TQJOB_CC item;
    jobs.takeEach([&](OwnedRecord &record) {
        TQJOB *const job = as<TQJOB>(record.get());
        if (exclude && job->publicationName) {
            return;
        }
        item.setName(textOf(job->name));
        TQJOB_CC::trimLists(job);
        item.setData(asBytes(record.release()));
        packet->appendV(item, false);
    });
    reply(std::move(packet));
}

void XMLCommServer::sendPublications(int destinationAgentID, XMLAction *request) const
{
    RecordList jobs = gather(PACKETDATATYPE_JOB, request, *this, PACKETDATATYPE_OUTPUTLIST,
        [this](TQKEY_ELEMENT key) { return getTQJOBs(key); });
    if (jobs.isEmpty()) {
        return;
    }
    std::vector<OwnedRecord> publications = takePublications(jobs);
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    TQJOB_CC item;
    for (OwnedRecord &record : publications) {
        TQJOB *const job = as<TQJOB>(record.get());
        item.setName(textOf(job->publicationName));
        TQJOB_CC::trimLists(job);
        item.setData(asBytes(record.release()));
        packet->append(item, false);
    }
    reply(std::move(packet));
    jobs.free();
}
