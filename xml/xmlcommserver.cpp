#include "xmlcommserver.h"

#include "linkedlist_p.h"
#include "xmlaction.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"
#include "tqitems.h"

#include <QPointer>
#include <QtAlgorithms>

#include <map>
#include <memory>
#include <utility>

using namespace TQXmlInternal;

namespace {

// The bridge asks for the jobs of all queues, and for jobs and books in ascending order of names.
constexpr TQQUEUE QUEUE = TQQUEUE_ALL;
constexpr SORTTYPE SORT_BY = SORTTYPE_NAME;
constexpr SORTORDER SORT_ORDER = SORTORDER_ASCENDING;

// Owners are outputs, which own jobs, and owners of books. TQPacketFreeList() gets this type for
// the records of both.
constexpr PACKETDATATYPES OWNER_RECORDS = PACKETDATATYPE_OUTPUT;

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

// A record that was taken off its list and is freed unless an item takes it over.
struct RecordDeleter
{
    PACKETDATATYPES recordType;
    void operator()(TQLISTRECORD *record) const { TQPacketFreeItem(record, recordType); }
};
using OwnedRecord = std::unique_ptr<TQLISTRECORD, RecordDeleter>;

// A list of records of one type, freed at the end. A list that links back to itself is cut after
// its last record.
class RecordList
{
public:
    RecordList(PACKETDATATYPES type, TQLISTRECORD *records)
        : m_type(type), m_head(records), m_tail(cutCycle(records))
    {
    }
    RecordList(RecordList &&other) noexcept
        : m_type(other.m_type), m_head(other.release()), m_tail(other.m_tail)
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
        if (!records) {
            return;
        }
        // AddListList() goes to the end of the list that it gets, so it gets the last record alone.
        TQLISTRECORD *last = m_tail;
        AddListList(&last, records);
        if (!m_head) {
            m_head = last;
        }
        m_tail = cutCycle(records);
    }

    bool isEmpty() const { return !m_head; }
    TQLISTRECORD *head() const { return m_head; }
    TQLISTRECORD *release() { return std::exchange(m_head, nullptr); }
    void free() { TQPacketFreeList(&m_head, m_type); }

    // Unlinks each record and hands it to use. It is freed unless use releases it.
    template<typename Use>
    void handEachTo(Use use)
    {
        for (TQLISTRECORD *record = m_head; record;) {
            TQLISTRECORD *const next = record->next;
            RemoveItemFromList(&m_head, record);
            OwnedRecord taken(record, RecordDeleter { m_type });
            use(taken);
            record = next;
        }
    }

private:
    // Returns the last record, with nothing after it.
    static TQLISTRECORD *cutCycle(TQLISTRECORD *records)
    {
        TQLISTRECORD *const last = lastOf(records);
        if (last) {
            last->next = nullptr;
        }
        return last;
    }

    const PACKETDATATYPES m_type;
    TQLISTRECORD *m_head;
    TQLISTRECORD *m_tail;
};

struct OwnedKeys
{
    QList<TQKEY_ELEMENT *> keys;
    ~OwnedKeys() { qDeleteAll(keys); }
};

// The queries and the reply of one call of the bridge. During a query the server library may run an
// event loop, and in it the router may be deleted, together with the bridge. Therefore a session
// does not refer to the bridge, and makes no further query when the router is gone. Without a
// router, as in the functions that return records, it is never over.
class Session
{
public:
    explicit Session(TQCommServer *server, XMLRouter *router = nullptr)
        : m_server(server), m_router(router), m_hadRouter(router)
    {
    }

    bool isOver() const { return m_hadRouter && !m_router; }
    TQLISTRECORD *owners(PACKETDATATYPES type) const;
    TQLISTRECORD *jobs(const TQKEY_ELEMENT &owner) const;
    TQLISTRECORD *books(const TQKEY_ELEMENT &owner) const;
    void send(std::unique_ptr<XMLPacket> packet) const;

private:
    bool canAsk() const { return m_server && !isOver(); }

    TQCommServer *const m_server;
    const QPointer<XMLRouter> m_router;
    const bool m_hadRouter;
};

TQLISTRECORD *Session::owners(PACKETDATATYPES type) const
{
    if (!canAsk()) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    TQLISTRECORD *records = m_server->getDBList(command, message, type);
    if (records && (isOver() || m_server->iserror(command))) {
        TQPacketFreeList(&records, OWNER_RECORDS);
        return nullptr;
    }
    return records;
}

TQLISTRECORD *Session::jobs(const TQKEY_ELEMENT &owner) const
{
    if (!canAsk()) {
        return nullptr;
    }
    const int id = m_server->getidfromtqkey(owner);
    if (isOver()) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    return asList(m_server->getJobqueue(command, message, QUEUE, SORT_BY, SORT_ORDER, id));
}

TQLISTRECORD *Session::books(const TQKEY_ELEMENT &owner) const
{
    if (!canAsk()) {
        return nullptr;
    }
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    return asList(m_server->getBooks(command, message, SORT_BY, SORT_ORDER, owner));
}

void Session::send(std::unique_ptr<XMLPacket> packet) const
{
    if (m_router) {
        m_router->send(packet.release());
    }
}

// The type of a listing's records, the type of their owners, and the query for one owner.
struct Listing
{
    PACKETDATATYPES recordType;
    PACKETDATATYPES ownerType;
    bool freesEmptyList;  // TQPacketFreeList() is called for an empty list of owners, too
    TQLISTRECORD *(*query)(const Session &session, const TQKEY_ELEMENT &owner);
};
constexpr Listing BOOKS { PACKETDATATYPE_BOOK, PACKETDATATYPE_BOOKOWNER, true,
    [](const Session &session, const TQKEY_ELEMENT &owner) { return session.books(owner); } };
constexpr Listing JOBS { PACKETDATATYPE_JOB, PACKETDATATYPE_OUTPUTLIST, false,
    [](const Session &session, const TQKEY_ELEMENT &owner) { return session.jobs(owner); } };

// The records of all keys in one list.
RecordList gather(
    const Listing &listing, const Session &session, const QList<TQKEY_ELEMENT *> &keys)
{
    RecordList records(listing.recordType, nullptr);
    for (const TQKEY_ELEMENT *key : keys) {
        if (key) {
            records.append(listing.query(session, *key));
        }
    }
    return records;
}

// Calls use with the records of each key in the request or, if there is none, of each owner. The
// next query is made after use has returned, so only one owner's records exist at a time.
template<typename Use>
void forEachOwner(const Listing &listing, const Session &session, const XMLAction *request, Use use)
{
    OwnedKeys list;
    if (request && request->hasTQKEYList()) {
        list.keys = request->getTQKEYList();
    }
    if (!list.keys.isEmpty()) {
        for (const TQKEY_ELEMENT *key : std::as_const(list.keys)) {
            use(RecordList(listing.recordType, listing.query(session, *key)));
        }
        return;
    }
    RecordList owners(OWNER_RECORDS, session.owners(listing.ownerType));
    for (TQLISTRECORD *record = owners.head(); record; record = record->next) {
        const TQOWNER *owner = as<TQOWNER>(record);
        const TQKEY_ELEMENT key { owner->key, owner->hkey };
        use(RecordList(listing.recordType, listing.query(session, key)));
    }
    if (owners.isEmpty() && listing.freesEmptyList) {
        owners.free();
    }
}

// Chooses one job for each publication: the one with the lowest page number, and of several with
// the same number the first. They are sorted by ascending publication identifier.
class Publications
{
public:
    // Keeps the job, or frees it.
    void offer(OwnedRecord job)
    {
        const TQJOB *offered = as<TQJOB>(job.get());
        if (!offered->publicationName) {
            return;
        }
        const auto [entry, isNew] = m_chosen.try_emplace(offered->publicationId);
        if (isNew || pageOf(job) < pageOf(entry->second)) {
            entry->second = std::move(job);
        }
    }

    template<typename Use>
    void handEachTo(Use use)
    {
        for (auto &[id, job] : m_chosen) {
            use(job);
        }
    }

private:
    static int pageOf(const OwnedRecord &job) { return TQJOB_CC::pageNumber(as<TQJOB>(job.get())); }

    std::map<unsigned int, OwnedRecord> m_chosen;
};

// Appends a job to the packet under that name.
void appendJob(XMLPacket &packet, TQJOB_CC &item, const char *name, OwnedRecord &record)
{
    item.setName(textOf(name));
    TQJOB_CC::trimLists(as<TQJOB>(record.get()));
    item.setData(asBytes(record.release()));
    packet.appendV(item, false);
}

// The action of a packet itself, without a copy.
class Request : public XMLAction
{
public:
    explicit Request(const QDomElement &action) { setElement(action); }
};

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
        Request request(actions.front().toElement());
        serve(packet->getSourceAgentID(), request);
    }
    packet->deleteLater();
    owned.release();
}

void XMLCommServer::serve(int source, XMLAction &request) const
{
    switch (REQUEST(request.getType())) {  // the compiler warns when a request has no case
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

TQLISTRECORD *XMLCommServer::getDBList(PACKETDATATYPES type) const
{
    return Session(m_commServer).owners(type);
}

TQJOB *XMLCommServer::getTQJOBs(TQKEY_ELEMENT key) const
{
    return as<TQJOB>(Session(m_commServer).jobs(key));
}

TQJOB *XMLCommServer::getTQJOBs(const QList<TQKEY_ELEMENT *> &keys) const
{
    return as<TQJOB>(gather(JOBS, Session(m_commServer), keys).release());
}

TQBOOK *XMLCommServer::getBooks(TQKEY_ELEMENT key) const
{
    return as<TQBOOK>(Session(m_commServer).books(key));
}

TQBOOK *XMLCommServer::getBooks(const QList<TQKEY_ELEMENT *> &keys) const
{
    return as<TQBOOK>(gather(BOOKS, Session(m_commServer), keys).release());
}

// After its first query none of the functions below uses the bridge: it may have been deleted. The
// header says when a reply without items is sent.

void XMLCommServer::sendOUTPUTs(int destinationAgentID) const
{
    const Session session(m_commServer, router);
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    RecordList outputs(OWNER_RECORDS, session.owners(PACKETDATATYPE_OUTPUTLIST));
    if (outputs.isEmpty() || session.isOver()) {
        return;
    }
    const std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(PACKETDATATYPE_OUTPUT));
    if (!item) {
        return;
    }
    outputs.handEachTo([&](OwnedRecord &record) {
        item->loadRecord(asBytes(record.release()));
        packet->appendV(*item, false);
    });
    session.send(std::move(packet));
}

void XMLCommServer::sendBooks(int destinationAgentID, XMLAction *request) const
{
    const Session session(m_commServer, router);
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    BOOK_CC item;
    forEachOwner(BOOKS, session, request, [&](RecordList books) {
        books.handEachTo([&](OwnedRecord &record) {
            item.setName(textOf(as<TQBOOK>(record.get())->name));
            item.setData(asBytes(record.release()));
            packet->appendV(item, false);
        });
    });
    if (!packet->isEmpty()) {
        session.send(std::move(packet));
    }
}

void XMLCommServer::sendTQJOBs(int destinationAgentID, XMLAction *request) const
{
    // True when absent, unlike XMLAction::getExcludePublications().
    const bool exclude =
        !request || !request->hasExcludePublications() || request->getExcludePublications();
    const Session session(m_commServer, router);
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    TQJOB_CC item;
    forEachOwner(JOBS, session, request, [&](RecordList jobs) {
        jobs.handEachTo([&](OwnedRecord &record) {
            const TQJOB *job = as<TQJOB>(record.get());
            if (!exclude || !job->publicationName) {
                appendJob(*packet, item, job->name, record);
            }
        });
    });
    session.send(std::move(packet));
}

void XMLCommServer::sendPublications(int destinationAgentID, XMLAction *request) const
{
    const Session session(m_commServer, router);
    std::unique_ptr<XMLPacket> packet(getXMLPacket(destinationAgentID));
    bool foundJobs = false;
    Publications publications;
    forEachOwner(JOBS, session, request, [&](RecordList jobs) {
        foundJobs = foundJobs || !jobs.isEmpty();
        jobs.handEachTo([&](OwnedRecord &job) { publications.offer(std::move(job)); });
    });
    if (!foundJobs) {
        return;
    }
    TQJOB_CC item;
    publications.handEachTo([&](OwnedRecord &record) {
        appendJob(*packet, item, as<TQJOB>(record.get())->publicationName, record);
    });
    session.send(std::move(packet));
}
