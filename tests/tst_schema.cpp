#include "tqcommserver.h"
#include "tqregistry.h"
#include "tqstorageclass.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"
#include "xmlui.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace {

const char *const VALID = R"(<tqxml xmlns="urn:tqxml:packet:1">
<header><src agent_id="1"/><dst agent_id="-1"/></header>
<body>
<action name="list" type="1003" originator="1">
<visible>1</visible><colour>ff00ff</colour><x_double>1.5e+07</x_double><jobids>1f -2</jobids>
</action>
<packetable datatype="15" name="p. 9" key="f5" hkey="15" is_current="1"><item datatype="15">
<_1 value="p. 9"/><_3 key="f1" hkey="56"/><_c size="1"><value>Cyan</value></_c>
<list size="1"><item datatype="5"><_2 value="7"/></item></list>
</item></packetable>
<ui name="page"><action name="print"/></ui><img url="u" name="n"/><msg msg="hello"/>
</body>
</tqxml>)";

// A change that damages the document above, and what the validator must blame for it.
struct Damage
{
    const char *name;
    const char *from;
    const char *to;
    const char *reason;
};
const Damage DAMAGES[] = {
    { "nothing", "", "", "" },
    { "another namespace", "packet:1", "packet:2", "Did not expect element tqxml" },
    { "agent id", "id=\"1\"", "id=\"1x\"", "Invalid attribute agent_id for element src" },
    { "unknown kind", "<img url=\"u\" name=\"n\"/>", "<note/>", "Did not expect element note" },
    { "boolean", "<visible>1", "<visible>yes", "Extra element visible" },
    { "unknown property", "colour", "color", "Element action has extra content: color" },
    { "upper-case digits", "ff00ff", "FF00FF", "Error validating datatype string" },
    { "half a key", " hkey=\"15\"", "", "Invalid attribute key for element packetable" },
    { "item without type", "<item datatype=\"15\">", "<item>",
        "Element item failed to validate attributes" },
    { "field's key", "key=\"f1\" ", "", "Invalid attribute hkey for element _3" },
    { "array's member", "<value>Cyan</value>", "<v>Cyan</v>", "Element _c has extra content: v" },
    { "field in a list", "<list size=\"1\">", "<list size=\"1\"><_2/>", "Expecting element item" },
    { "page of images", "<action name=\"print\"/>", "<img/>", "Did not expect element img there" },
};

}  // namespace

class tst_Schema : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void packets();
    void items();
    void pages();
    void damagedDocuments_data() { addRows(DAMAGES); }
    void damagedDocuments();

private:
    QString complaints(const QStringList &documents) const;

    QTemporaryDir m_folder;
    TQCommServer m_server { "sqlite::memory:" };
};

// What the validator says about documents, one after the other; nothing when all are valid.
QString tst_Schema::complaints(const QStringList &documents) const
{
    QStringList arguments { str("--noout"), str("--relaxng"), str(TQXML_SCHEMA) };
    for (const QString &document : documents) {
        QFile file(m_folder.filePath(QString::number(arguments.size())));
        if (file.open(QIODevice::WriteOnly) && file.write(document.toUtf8()) > 0) {
            arguments += file.fileName();
        }
    }
    QProcess validator;
    validator.start(str(TQXML_XMLLINT), arguments);
    validator.waitForFinished(120000);
    const QString said = QString::fromUtf8(validator.readAllStandardError());
    return said.count(str(" validates\n")) == documents.size() ? QString() : said.right(2000);
}

// Every request, and the reply to it.
void tst_Schema::packets()
{
    XMLRouter router(&m_server, nullptr, nullptr);
    QStringList log;
    RecordingAgent agent(1, &log);
    router.add(&agent);
    QStringList documents;
    for (int type = XMLCommServer::REQUEST_OUTPUTS; type <= XMLCommServer::REQUEST_JOBS; ++type) {
        XMLAction request(str("list"), type, agent.getAgentID());
        request.setExcludePublications(false);
        XMLPacket *packet = agent.getXMLPacket(router.getXMLCommServerID());
        documents += XMLObject::toString(packet->append(request).ownerDocument());
        router.send(packet);
        runEvents();
    }
    for (const XMLPacket *reply : agent.packets) {
        std::list<QDomNode> nodes;
        reply->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        documents += XMLObject::toString(nodes.front().ownerDocument());
    }
    router.remove(&agent);
    QCOMPARE(documents.size(), 8);
    QCOMPARE(complaints(documents), QString());
}

// Every item of the sample with all that it refers to, and some whose values fit the form of no
// field but numbers and binary data: all others become bare, or keep the size alone.
void tst_Schema::items()
{
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    QStringList documents;
    constexpr std::pair<PACKETDATATYPES, unsigned> FIRST_IDS[] = { { PACKETDATATYPE_JOB, 1 },
        { PACKETDATATYPE_OUTPUT, 0x40000000 }, { PACKETDATATYPE_BOOKOWNER, 0x48000000 },
        { PACKETDATATYPE_BOOK, 0x50000000 }, { PACKETDATATYPE_ICCPROFILE, 0x58000000 } };
    for (const auto &[type, first] : FIRST_IDS) {
        for (unsigned id = first; id < first + 1000; ++id) {
            const std::unique_ptr<ArchiveNode> node(
                m_server.getArchiveNode(command, message, type, { id, type }));
            const std::unique_ptr<XMLPacketable> item(
                XMLPacketable::fromArchiveNode(m_server, node.get()));
            documents += item ? QStringList(item->toString()) : QStringList();
        }
    }
    QVERIFY(documents.size() > 560);
    QVERIFY(documents.filter(str("  <packetable")).size() > 500);
    for (const char *value : { "2 1 2", "1 2", "0 ", "", "a" }) {
        QStringList lines { str("SI 63") };
        const auto *field = TQGetSystemStorageClassConv(PACKETDATATYPE_SPECIMEN);
        for (; field->type != 0; ++field) {
            lines += QString::number(field->tag, 16) + QLatin1Char(' ') + str(value);
        }
        XMLPacketable item;
        item.setType(PACKETDATATYPE_SPECIMEN);
        QDomElement root = item.getNodeConst();
        item.toDom(root, lines << str("SL 1") << str("SI 56") << str("TI 0") << str("TL 0"), 0);
        documents += item.toString();
    }
    QCOMPARE(complaints(documents), QString());
}

// Every other kind of element, and every property of an action.
void tst_Schema::pages()
{
    XMLAction action(str("all"), -2147483647 - 1, 2147483647);
    for (const auto set : { &XMLAction::setVisible, &XMLAction::setShowNewestPage,
             &XMLAction::setCheckable, &XMLAction::setSelected, &XMLAction::setNeedUpdate,
             &XMLAction::setExcludePublications, &XMLAction::setPaintPixmap,
             &XMLAction::setSortAscending, &XMLAction::setEnabled, &XMLAction::setChecked }) {
        (action.*set)(true);
    }
    for (const auto set :
        { &XMLAction::setPageNumber, &XMLAction::setIndex, &XMLAction::setX, &XMLAction::setY,
            &XMLAction::setSortType, &XMLAction::setJobID, &XMLAction::setTQJobID }) {
        (action.*set)(-2147483647 - 1);
    }
    action.setChannelID(0xffffffff);
    action.setColour(0xff00ff);
    action.setXDouble(-1.5e-300);
    action.setYDouble(qInf());
    action.setOrgName(str("Ünïcode <&> \"quoted\""));
    TQKEY_ELEMENT keys[] = { { 0xfffffffe, 3 }, { 1, 2 } };
    action.setTQKEY(keys[0]);
    action.setTQKEYList({ &keys[0], &keys[1] });
    TQPacketable book(PACKETDATATYPE_BOOK);
    action.append(book);
    XMLAction bare;
    XMLUI page(str("page"));
    page.append(action);
    page.append(bare);
    page.setActionOrgName(1, 2, QString());
    XMLImage image(str("cover"));
    image.setURL(str("file:///covers/1.png?size=2&dpi=300"));
    XMLMessage greeting(str("two\nlines, \"quoted\""));
    XMLPacket packet;
    packet.append(page);
    packet.append(action);
    packet.append(bare);
    packet.append(image);
    const QDomDocument all = packet.append(greeting).ownerDocument();
    QCOMPARE(
        complaints({ action.toString(), XMLUI().toString(), XMLObject::toString(all) }), QString());
}

void tst_Schema::damagedDocuments()
{
    const auto &row = currentRow<Damage>();
    const QString damaged = str(VALID).replace(str(row.from), str(row.to));
    QCOMPARE(damaged == str(VALID), *row.from == '\0');
    const QString said = complaints({ damaged });
    QVERIFY2(said.contains(str(row.reason)), qPrintable(said));
    QCOMPARE(said.isEmpty(), *row.from == '\0');
}

QTEST_GUILESS_MAIN(tst_Schema)
#include "tst_schema.moc"
