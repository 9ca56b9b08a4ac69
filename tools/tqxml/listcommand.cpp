#include "command.h"
#include "itemtable.h"
#include "streams.h"
#include "values.h"
#include "xmlwriter.h"

#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlcommserver.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

namespace {

const QString KEY_OPTION = QStringLiteral("key");
const QString PUBLICATIONS_OPTION = QStringLiteral("include-publications");
const QString DATABASE_OPTION = QStringLiteral("database");
const QString FORMAT_OPTION = QStringLiteral("format");
const QString TABLE = QStringLiteral("table");
const QString XML = QStringLiteral("xml");

struct Listing
{
    const char *name;
    int request;  // request type of the bridge
    PACKETDATATYPES owner;  // data type that --key takes; NONE if it takes no keys
    std::vector<unsigned> tags;  // the name's, for its heading, then those of the columns
};

const Listing LISTINGS[] = {
    { "outputs", XMLCommServer::REQUEST_OUTPUTS, PACKETDATATYPE_NONE,
        { 0x1, 0x2, 0x3, 0x4, 0x5, 0x6, 0x8, 0x9 } },
    { "publications", XMLCommServer::REQUEST_PUBLICATIONS, PACKETDATATYPE_OUTPUT,
        { 0x5, 0x2, 0x6, 0x7, 0xf } },
    { "books", XMLCommServer::REQUEST_BOOKS, PACKETDATATYPE_BOOKOWNER,
        { 0x1, 0x2, 0x4, 0x5, 0x6, 0x7, 0x3 } },
    { "jobs", XMLCommServer::REQUEST_JOBS, PACKETDATATYPE_OUTPUT,
        { 0x1, 0x2, 0x5, 0x6, 0x7, 0x9, 0xc, 0x3, 0x4 } },
};

// Receives and keeps the reply to one request.
class Asker : public XMLAgent
{
public:
    static constexpr int TYPE = 1;

    Asker() : XMLAgent(TYPE) {}

    void receive(XMLPacket *packet) override { m_reply.reset(packet); }
    std::unique_ptr<XMLPacket> takeReply() { return std::move(m_reply); }

private:
    std::unique_ptr<XMLPacket> m_reply;
};

struct Request
{
    const Listing *listing = nullptr;
    std::vector<TQKEY_ELEMENT> keys;
    bool includesPublications = false;
};

void fill(XMLAction &action, Request &request)
{
    QList<TQKEY_ELEMENT *> keys;
    for (TQKEY_ELEMENT &key : request.keys) {
        keys << &key;
    }
    if (!keys.isEmpty()) {
        action.setTQKEYList(keys);
    }
    action.setExcludePublications(!request.includesPublications);
}

// The bridge's reply; null when it sent none.
std::unique_ptr<XMLPacket> ask(TQCommServer &server, Request &request)
{
    XMLRouter router(&server, nullptr, nullptr);
    Asker asker;
    router.add(&asker);
    XMLAction action(
        QLatin1String(request.listing->name), request.listing->request, asker.getAgentID());
    fill(action, request);
    XMLPacket *packet = asker.getXMLPacket(router.getXMLCommServerID());
    packet->appendV(action);
    // Not every request gets a reply. But the bridge calls deleteLater() of each request that it
    // has served, so the request is destroyed after its reply was delivered.
    QObject::connect(packet, &QObject::destroyed, QCoreApplication::instance(),
        [] { QCoreApplication::quit(); });
    router.send(packet);
    QCoreApplication::exec();
    router.remove(&asker);
    return asker.takeReply();
}

int print(const XMLPacket *reply, const Listing &listing, bool asXml)
{
    std::list<QDomNode> items;
    if (!reply || reply->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, items) == 0) {
        note(QStringLiteral("no %1 found").arg(QLatin1String(listing.name)));
        return DONE;
    }
    return asXml ? printXml(items.front().ownerDocument().documentElement())
                 : writeOutput(itemTable(items, listing.tags));
}

int list(Request &request, const QByteArray &url, bool asXml)
{
    TQCommServer server(url.constData());
    std::unique_ptr<XMLPacket> reply;
    if (server.failures() == 0) {
        const TQReadTransaction oneMoment(server);
        reply = ask(server, request);
    }
    if (server.failures() != 0) {
        return fail(QString::fromUtf8(server.errorText()));  // rows may be missing
    }
    return print(reply.get(), *request.listing, asXml);
}

const Listing *findListing(const QStringList &arguments)
{
    const auto found = std::find_if(
        std::begin(LISTINGS), std::end(LISTINGS), [&arguments](const Listing &listing) {
            return arguments == QStringList(QLatin1String(listing.name));
        });
    return found == std::end(LISTINGS) ? nullptr : found;
}

// Reads the keys of --key into the request. Returns what is wrong with one, or an empty text.
QString readKeys(const QStringList &texts, Request &request)
{
    const PACKETDATATYPES owner = request.listing->owner;
    for (const QString &text : texts) {
        if (owner == PACKETDATATYPE_NONE) {
            return QStringLiteral("outputs are not listed by key");
        }
        const std::optional<TQKEY_ELEMENT> key = readKey(text);
        const QString wrong = key ? wrongKey(*key, owner) : noKey(text);
        if (!wrong.isEmpty()) {
            return wrong;
        }
        request.keys.push_back(*key);
    }
    return QString();
}

void declareOptions(QCommandLineParser &parser)
{
    parser.addOption({ KEY_OPTION, QString(), KEY_OPTION });
    parser.addOption({ PUBLICATIONS_OPTION, QString() });
    parser.addOption({ DATABASE_OPTION, QString(), DATABASE_OPTION });
    parser.addOption({ FORMAT_OPTION, QString(), FORMAT_OPTION, TABLE });
}

int run(const Command &command, const QCommandLineParser &parser)
{
    Request request;
    request.listing = findListing(parser.positionalArguments());
    if (!request.listing) {
        const QString words = parser.positionalArguments().join(QLatin1Char(' '));
        return misuse(command,
            words.isEmpty() ? QStringLiteral("name one thing to list")
                            : QStringLiteral("there is no list \"%1\"").arg(words));
    }
    const QString format = parser.value(FORMAT_OPTION);
    if (format != XML && format != TABLE) {
        return misuse(command, QStringLiteral("there is no format \"%1\"").arg(format));
    }
    const QString wrong = readKeys(parser.values(KEY_OPTION), request);
    if (!wrong.isEmpty()) {
        return misuse(command, wrong);
    }
    request.includesPublications = parser.isSet(PUBLICATIONS_OPTION);
    return list(request,
        parser.isSet(DATABASE_OPTION) ? databaseUrl(parser.value(DATABASE_OPTION)) : sampleUrl(),
        format == XML);
}

}  // namespace

const Command LIST_COMMAND = {
    "list",
    "outputs|publications|books|jobs [--key KEY:HKEY]... [--include-publications]"
    " [--database DATABASE] [--format xml|table]",
    "Lists what a store holds; by default all, from the sample that comes with tqxml.\n\n"
    "  --key KEY:HKEY         Only what belongs to this owner of books, or to this output.\n"
    "  --include-publications List the jobs of publications, too.\n"
    "  --database DATABASE    The store.\n"
    "  --format xml|table     The reply packet as XML, or a table for people (the default).\n",
    declareOptions,
    run,
};
