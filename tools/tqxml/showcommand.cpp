#include "command.h"
#include "commandline.h"
#include "items.h"
#include "listings.h"
#include "rowwriter.h"
#include "streams.h"
#include "values.h"
#include "xmlwriter.h"

#include "xmlpacketable.h"
#include "xpkreference.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <memory>

namespace {

constexpr QLatin1String XML("xml");
// What is shown of a publication is one of its jobs.
const QString PUBLICATION = QStringLiteral("publication");
constexpr int PUBLICATION_TAG = 0x5;  // of a job: the publication's name

// Loads an item and everything that it refers to. Null, with an error, if there is no such item or
// a query failed.
std::unique_ptr<XMLPacketable> load(
    const QByteArray &url, PACKETDATATYPES type, const TQKEY_ELEMENT &key, QString &error)
{
    TQCommServer server(url.constData());
    std::unique_ptr<XMLPacketable> item;
    if (server.failures() == 0) {
        const TQReadTransaction oneMoment(server);
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        const std::unique_ptr<ArchiveNode> node(server.getArchiveNode(command, message, type, key));
        item.reset(XMLPacketable::fromArchiveNode(server, node.get()));
    }
    if (server.failures() != 0) {
        item.reset();  // a part of it may be missing
        error = QString::fromUtf8(server.errorText());
    } else if (!item) {
        error = QStringLiteral("there is no item %1 of type %2").arg(keyText(key), typeText(type));
    }
    return item;
}

int printReferences(const XMLPacketable &item, const Layout &layout)
{
    QList<XPKReference *> references;
    item.getXPKReferences(references);
    std::vector<QStringList> rows;
    for (const XPKReference *reference : references) {
        const XMLPacketable &referred = *reference->packetable;
        const bool isByName = !reference->name.isNull();
        rows.push_back(
            { isByName ? QString() : keyText(reference->key), typeText(referred.getType()),
                referred.getName(), isByName ? QStringLiteral("name") : QStringLiteral("key") });
    }
    qDeleteAll(references);
    if (rows.empty()) {
        remark(QStringLiteral("no references found"));
    }
    return printRows(layout, rows);
}

// The name of the publication that a job belongs to; a null string if there is none.
QString publicationOf(const XMLPacketable &job)
{
    const QString field = XMLPacketable::getXMLTagNameFromDATATAG(PUBLICATION_TAG);
    const QDomElement item =
        XMLPacketable::getPacketableItemNode(job.getNodeConst().toElement()).toElement();
    return item.firstChildElement(field).attribute(XMLPacketable::VALUE);
}

// Prints an item as a row.
int printRow(const XMLPacketable &item, const Layout &layout)
{
    QString error;
    const QByteArray xml = xmlText(item.getNodeConst(), error);
    return error.isEmpty() ? printRows(layout, { ItemReader(layout.columns).cellsOf(xml) })
                           : fail(error);
}

// What is shown, as the command line says it.
struct Wanted
{
    PACKETDATATYPES type = PACKETDATATYPE_NONE;
    TQKEY_ELEMENT key {};
    bool isPublication = false;
    Layout layout;  // of the references, or of the item as a row
    bool isXml = false;
};

// The columns of references.
Columns referenceColumns()
{
    return { plainColumn(QStringLiteral("Key"), Kind::Key), plainColumn(QStringLiteral("Type")),
        plainColumn(QStringLiteral("Name")), plainColumn(QStringLiteral("Referred to by")) };
}

// Returns what is wrong with the format, or an empty text.
QString readLayout(const CommandLine &line, Wanted &wanted)
{
    const bool areReferences = line.isSet("references");
    wanted.layout = layoutOf(line);
    wanted.isXml = line.isSet("format") ? wanted.layout.format == XML : !areReferences;
    if (areReferences) {
        wanted.layout.columns = referenceColumns();
        return wanted.isXml ? QStringLiteral("references are not printed as XML") : QString();
    }
    const Listing *listing = findListing(wanted.type, wanted.isPublication);
    if (listing) {
        wanted.layout.columns = columnsOf(*listing);
    }
    return listing || wanted.isXml
        ? QString()
        : QStringLiteral("items of type %1 are printed as XML only").arg(typeText(wanted.type));
}

// Returns what is wrong with the command line, or an empty text.
QString read(const CommandLine &line, Wanted &wanted)
{
    const QStringList &arguments = line.arguments();
    if (arguments.size() != 2) {
        return QStringLiteral("give a type and a key");
    }
    wanted.isPublication = arguments.at(0) == PUBLICATION;
    wanted.type = wanted.isPublication ? PACKETDATATYPE_JOB : *readType(arguments.at(0));
    const std::optional<TQKEY_ELEMENT> key = readKey(arguments.at(1));
    if (!key) {
        return noKey(arguments.at(1));
    }
    wanted.key = *key;
    const QString wrong = readLayout(line, wanted);
    return wrong.isEmpty() ? wrongKey(*key, wanted.type) : wrong;
}

}  // namespace

int runShow(const CommandLine &line)
{
    Wanted wanted;
    const QString wrong = read(line, wanted);
    if (!wrong.isEmpty()) {
        return misuse(line, wrong);
    }
    QString error;
    const std::unique_ptr<XMLPacketable> item = load(line.store(), wanted.type, wanted.key, error);
    if (!item) {
        return fail(error);
    }
    if (wanted.isPublication) {
        const QString name = publicationOf(*item);
        if (name.isEmpty()) {
            return fail(QStringLiteral("%1 is no job of a publication").arg(keyText(wanted.key)));
        }
        item->setName(name);
    }
    if (line.isSet("references")) {
        return printReferences(*item, wanted.layout);
    }
    return wanted.isXml ? printXml(item->getNodeConst()) : printRow(*item, wanted.layout);
}
