#include "reader.h"

#include "bridge.h"
#include "itemagent.h"
#include "itemfields.h"
#include "reading.h"
#include "requestagent.h"
#include "rowreader.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include "tqstorewatch.h"

#include <QCoreApplication>

namespace {

constexpr size_t BATCH = 1000;  // rows that the window takes at a time
constexpr int MAX_BATCHES = 8;  // on their way

JobRow jobOf(const ReadItem &item)
{
    const auto text = [&item](unsigned tag) {
        const ReadItem::Value field = item.fields.value(tag);
        return fieldText(PACKETDATATYPE_JOB, tag, field.value, field.entries);
    };
    const auto number = [&item](unsigned tag) {
        bool isNumber = false;
        const int value = item.fields.value(tag).value.toInt(&isNumber);
        return isNumber ? value : JobRow::ABSENT;
    };
    JobRow row;
    row.key = item.key;
    row.book = item.fields.value(JobField::Book).key;
    row.name = item.name;
    row.output = text(JobField::Output);
    row.publication = text(JobField::Publication);
    row.colours = text(JobField::Colours);
    row.created = text(JobField::Created);
    row.state = number(JobField::State);
    row.copies = number(JobField::Copies);
    row.priority = number(JobField::Priority);
    return row;
}

// Keys and names of owners of books.
Sources bookOwners(const Bridge &bridge)
{
    Sources owners;
    TQLISTRECORD *records = bridge.getDBList(PACKETDATATYPE_BOOKOWNER);
    for (TQLISTRECORD *record = records; record; record = record->next) {
        const auto *owner = reinterpret_cast<const TQOWNER *>(record);
        owners.push_back({ Source::Books, {}, { owner->key, owner->hkey } });
    }
    TQPacketFreeList(&records, PACKETDATATYPE_OUTPUT);
    return owners;
}

}  // namespace

// All that uses one connection.
struct Reader::Session
{
    Session(const QByteArray &url, XMLRouterObserver *observer)
        : server(url.constData()), router(nullptr, nullptr, "jobboard"), bridge(server, router),
          lists(bridge, router), items(server, router)
    {
        router.setObserver(observer);
    }
    ~Session()
    {
        lists.stop();
        lists.disconnect();
        router.remove(&bridge);
        router.remove(&lists);
        router.send();  // deletes queued packets, whose receivers are gone
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    TQCommServer server;
    XMLRouter router;
    Bridge bridge;
    RequestAgent lists;
    ItemAgent items;
};

Reader::Reader(const QByteArray &url) : m_url(url), m_room(MAX_BATCHES) {}

Reader::~Reader() = default;

// A connection that could not be opened fails for ever, so another one takes its place.
QString Reader::open()
{
    if (m_session && m_session->server.getConnectedHostname()) {
        return QString();
    }
    if (!m_watch) {  // before anything is read, so that no change is missed
        m_watch =
            std::make_unique<TQStoreWatch>(m_url.constData(), [this] { Q_EMIT storeChanged(); });
    }
    m_session.reset();
    m_items.clear();
    m_session = std::make_unique<Session>(m_url, m_observer.get());
    nameAgents();
    connect(&m_session->lists, &RequestAgent::replied, this, &Reader::takeReply);
    connect(&m_session->lists, &RequestAgent::served, this, &Reader::checkServed);
    connect(&m_session->lists, &RequestAgent::itemReplied, this, &Reader::takeItem);
    return m_session->server.failures() == 0 ? QString()
                                             : QString::fromUtf8(m_session->server.errorText());
}

void Reader::nameAgents()
{
    Q_EMIT agentNamed(m_session->bridge.getAgentID(), tr("Server bridge"));
    Q_EMIT agentNamed(m_session->lists.getAgentID(), tr("Job list"));
    Q_EMIT agentNamed(m_session->items.getAgentID(), tr("Items"));
}

void Reader::load(int run)
{
    m_run = run;
    m_isLoading = true;
    m_requests = 0;
    m_unreadable.clear();
    const QString error = open();
    m_session->lists.stop();
    if (!error.isEmpty()) {
        end(error);
        return;
    }
    ask(XMLCommServer::REQUEST_OUTPUTS, {}, tr("outputs"));
    askBooks();
}

void Reader::ask(int type, const TQKEY_ELEMENT &owner, const QString &name)
{
    ++m_requests;
    m_session->lists.ask({ type, owner, name });
}

void Reader::prefer(const Source &source)
{
    if (m_session && source.kind == Source::Output) {
        m_session->lists.prefer(XMLCommServer::REQUEST_JOBS, source.key);
    } else if (m_session && source.kind == Source::Books) {
        m_session->lists.prefer(XMLCommServer::REQUEST_BOOKS, {});
    }
}

void Reader::stop()
{
    if (m_session) {
        m_session->lists.stop();
    }
}

void Reader::takeReply(int type, const XMLPacket &reply)
{
    switch (type) {
    case XMLCommServer::REQUEST_OUTPUTS:
        m_unreadable = takeSources(Source::Output, reply);
        return m_session->lists.prefer(XMLCommServer::REQUEST_JOBS, {});
    case XMLCommServer::REQUEST_BOOKS:
        m_unreadable = takeSources(Source::Book, reply);
        return;
    default:
        m_unreadable = takeJobs(reply);
    }
}

QString Reader::takeSources(Source::Kind kind, const XMLPacket &reply)
{
    Sources sources;
    RowReader reader([&sources, kind](const ReadItem &item) {
        sources.push_back({ kind, item.name, item.key });
    });
    reply.write(&reader);
    Q_EMIT sourcesRead(m_run, sources);
    if (kind == Source::Output) {
        for (const Source &output : sources) {
            ask(XMLCommServer::REQUEST_JOBS, output.key, tr("jobs on %1").arg(output.name));
        }
    }
    return reader.isWhole() ? QString() : tr("a reply cannot be read");
}

void Reader::askBooks()
{
    const Reading reading(m_session->server);
    const Sources owners = bookOwners(m_session->bridge);
    m_unreadable = reading.error();
    for (const Source &owner : owners) {
        ask(XMLCommServer::REQUEST_BOOKS, owner.key, tr("books"));
    }
}

QString Reader::takeJobs(const XMLPacket &reply)
{
    JobRows rows;
    RowReader reader([this, &rows](const ReadItem &item) {
        rows.push_back(jobOf(item));
        if (rows.size() == BATCH) {
            hand(rows);
            rows.clear();
        }
    });
    reply.write(&reader);
    hand(rows);
    return reader.isWhole() ? QString() : tr("a reply cannot be read");
}

void Reader::hand(const JobRows &rows)
{
    m_room.acquire();
    Q_EMIT jobsRead(m_run, rows);
}

void Reader::checkServed(const QString &error)
{
    if (!m_isLoading) {
        return;
    }
    const QString problem = error.isEmpty() ? m_unreadable : error;
    if (!problem.isEmpty()) {
        m_session->lists.stop();
    }
    const int pending = m_session->lists.pending();
    Q_EMIT progressed(m_run, m_requests - pending, m_requests);
    if (pending == 0) {
        end(problem);
    }
}

void Reader::end(const QString &error)
{
    m_isLoading = false;
    Q_EMIT loaded(m_run, error);
}

void Reader::readItem(const TQKEY_ELEMENT &key, const QString &name)
{
    const QString error = open();
    if (error.isEmpty()) {
        m_items.push_back(key);
        m_session->lists.askItem(key, name, m_session->items.getAgentID());
    } else {
        Q_EMIT itemRead({ key, error, {}, {} });
    }
}

void Reader::takeItem(const XMLPacket &reply)
{
    const TQKEY_ELEMENT key = m_items.front();
    m_items.pop_front();
    std::list<QDomNode> nodes;
    if (reply.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes) > 0) {
        XMLPacketable item;
        item.setNode(nodes.front().toElement());
        Q_EMIT itemRead({ key, {}, fieldsOf(nodes.front().toElement()), item.toString() });
        return;
    }
    reply.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes);
    XMLMessage error;
    error.setNode(nodes.empty() ? QDomElement() : nodes.front().toElement());
    Q_EMIT itemRead({ key, error.getMessage(), {}, {} });
}
