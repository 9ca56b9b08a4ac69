#include "rowsource.h"

#include "sortedrows.h"

#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlcommserver.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"
#include "tqpacketable.h"
#include "tqstore.h"

#include <QBuffer>
#include <QCoreApplication>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

// Sends requests to the bridge and keeps the reply to one.
class Asker : public XMLAgent
{
public:
    static constexpr int TYPE = 1;

    Asker() : XMLAgent(TYPE) {}

    void receive(XMLPacket *packet) override { m_reply.reset(packet); }

    // The reply; null when there is none.
    std::unique_ptr<XMLPacket> ask(XMLAction &request)
    {
        XMLPacket *packet = getXMLPacket(router->getXMLCommServerID());
        packet->appendV(request);
        // Not every request gets a reply. But the bridge calls deleteLater() of each request that
        // it has served, so the request is destroyed after its reply was delivered.
        QObject::connect(packet, &QObject::destroyed, QCoreApplication::instance(),
            [] { QCoreApplication::quit(); });
        router->send(packet);
        QCoreApplication::exec();
        return std::move(m_reply);
    }

private:
    std::unique_ptr<XMLPacket> m_reply;
};

// A router over a connection, with one agent that asks.
struct Hub
{
    explicit Hub(TQCommServer *server) : router(server, nullptr, nullptr) { router.add(&asker); }
    ~Hub() { router.remove(&asker); }
    Hub(const Hub &) = delete;
    Hub &operator=(const Hub &) = delete;

    XMLRouter router;
    Asker asker;
};

// The records of one list, freed at the end.
class Records
{
public:
    Records(TQCommServer &server, PACKETDATATYPES type) : m_type(type)
    {
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        m_head = server.getDBList(command, message, type);
    }
    ~Records() { TQPacketFreeList(&m_head, m_type); }
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;

    // The first record, taken off the list; null at its end.
    TQLISTRECORD *take()
    {
        TQLISTRECORD *const first = m_head;
        RemoveItemFromList(&m_head, first);
        return first;
    }

private:
    const PACKETDATATYPES m_type;
    TQLISTRECORD *m_head = nullptr;
};

// The keys of all items of a type, in natural order of their names; none if the query fails.
std::vector<TQKEY_ELEMENT> allKeys(TQCommServer &server, PACKETDATATYPES type)
{
    const QCollator collator = naturalCollator();
    std::vector<TQNAMEDKEY> items;
    TQListKeys(server, type, items);
    std::vector<std::pair<QCollatorSortKey, TQKEY_ELEMENT>> sorted;
    for (const TQNAMEDKEY &item : items) {
        sorted.emplace_back(collator.sortKey(QString::fromStdString(item.name)), item.key);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
        [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<TQKEY_ELEMENT> keys;
    for (const auto &[name, key] : sorted) {
        keys.push_back(key);
    }
    return keys;
}

void setKeys(XMLAction &action, std::vector<TQKEY_ELEMENT> keys)
{
    QList<TQKEY_ELEMENT *> list;
    for (TQKEY_ELEMENT &key : keys) {
        list << &key;
    }
    if (!list.isEmpty()) {
        action.setTQKEYList(list);
    }
}

}  // namespace

bool RowSource::run(const TakeItem &take, const EndReply &endReply)
{
    return m_query.listing->request == 0 ? askConnection(take, endReply)
                                         : askBridge(take, endReply);
}

bool RowSource::askBridge(const TakeItem &take, const EndReply &endReply)
{
    const Listing &listing = *m_query.listing;
    const unsigned failures = m_server.failures();
    std::vector<TQKEY_ELEMENT> keys = m_query.keys;
    if (listing.isByOwner && keys.empty()) {
        keys = allKeys(m_server, listing.owner);
    }
    const size_t total = listing.isByOwner ? keys.size() : 1;
    Hub hub(&m_server);
    for (size_t done = 0; done < total && m_server.failures() == failures; ++done) {
        XMLAction request(QLatin1String(listing.name), listing.request, hub.asker.getAgentID());
        setKeys(request, listing.isByOwner ? std::vector { keys[done] } : keys);
        request.setExcludePublications(!m_query.includesPublications);
        const std::unique_ptr<XMLPacket> reply = hub.asker.ask(request);
        ItemSplitter splitter(take);
        if (m_server.failures() != failures || (reply && !reply->write(&splitter))) {
            return false;
        }
        if (!endReply(done + 1, total)) {
            return false;
        }
    }
    return m_server.failures() == failures;
}

bool RowSource::askConnection(const TakeItem &take, const EndReply &endReply)
{
    const unsigned failures = m_server.failures();
    Records records(m_server, m_query.listing->type);
    const std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(m_query.listing->type));
    ItemSplitter splitter(take);
    if (m_server.failures() != failures) {
        return false;
    }
    while (TQLISTRECORD *record = records.take()) {
        item->loadRecord(reinterpret_cast<unsigned char *>(record));
        XMLPacket packet;
        packet.appendV(*item, false);
        if (!packet.write(&splitter)) {
            return false;
        }
    }
    return endReply(1, 1);
}

QByteArray RowSource::emptyPacket()
{
    Hub hub(nullptr);
    XMLPacket packet;
    packet.setSourceAgentID(hub.router.getXMLCommServerID());
    packet.setDestinationAgentID(hub.asker.getAgentID());
    QBuffer text;
    text.open(QIODevice::WriteOnly);
    packet.write(&text);
    return text.data();
}
