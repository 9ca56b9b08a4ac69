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
    { "no header", "header>", "head>", "Did not expect element head" },
    { "one address", "<dst agent_id=\"-1\"/>", "", "element header: Relax-NG" },
    { "agent id", "id=\"1\"", "id=\"1x\"", "Invalid attribute agent_id for element src" },
    { "unknown kind", "<img url=\"u\" name=\"n\"/>", "<note/>", "Did not expect element note" },
    { "boolean", "<visible>1", "<visible>yes", "Extra element visible" },
    { "property twice", "<visible>1", "<visible>0</visible><visible>1", "Extra element visible" },
    { "unknown property", "colour", "color", "Element action has extra content: color" },
    { "upper-case digits", "ff00ff", "FF00FF", "Error validating datatype string" },
    { "list separator", "1f -2", "1f,-2", "Extra element jobids" },
    { "double", "1.5e+07", "1,5", "Extra element x_double" },
    { "request type", "\"1003\"", "\"jobs\"", "Invalid attribute type for element action" },
    { "data type", "\"15\" name", "\"0x15\" name", "attribute datatype for element packetable" },
    { "half a key", " hkey=\"15\"", "", "Invalid attribute key for element packetable" },
    { "flag", "current=\"1\"", "current=\"yes\"", "attribute is_current for element packetable" },
    { "item without type", "<item datatype=\"15\">", "<item>", "element item: Relax-NG" },
    { "field's attribute", "_1 value", "_1 text", "Invalid attribute text for element _1" },
    { "field's key", "key=\"f1\" ", "", "Invalid attribute hkey for element _3" },
    { "33 bits", "key=\"f1\"", "key=\"100000000\"", "Invalid attribute key for element _3" },
    { "array's member", "<value>Cyan</value>", "<v>Cyan</v>", "Element _c has extra content: v" },
    { "field in a list", "<list size=\"1\">", "<list size=\"1\"><_2/>", "Expecting element item" },
    { "page of images", "<action name=\"print\"/>", "<img/>", "Did not expect element img there" },
    { "message as text", "<msg msg=\"hello\"/>", "<msg>hello</msg>", "element msg: Relax-NG" },
};

QString documentOf(const XMLPacket &packet)
{
    std::list<QDomNode> nodes;
    packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    packet.getNodesOfType(XMLObject::XMLOBJECT_ACTION, nodes);
    return nodes.empty() ? QString() : XMLObject::toString(nodes.front().ownerDocument());
}

// An action with every property there is.
void fill(XMLAction &action)
{
    using Switch = void (XMLAction::*)(bool);
    const Switch switches[] = { &XMLAction::setVisible, &XMLAction::setShowNewestPage,
        &XMLAction::setCheckable, &XMLAction::setSelected, &XMLAction::setNeedUpdate,
        &XMLAction::setExcludePublications, &XMLAction::setPaintPixmap,
        &XMLAction::setSortAscending, &XMLAction::setChecked, &XMLAction::setEnabled };
    for (const Switch set : switches) {
        (action.*set)(true);
    }
    using Number = void (XMLAction::*)(int);
    const Number numbers[] = { &XMLAction::setPageNumber, &XMLAction::setIndex, &XMLAction::setX,
        &XMLAction::setY, &XMLAction::setSortType, &XMLAction::setJobID, &XMLAction::setTQJobID,
        &XMLAction::setType, &XMLAction::setOriginator };
    for (const Number set : numbers) {
        (action.*set)(-2147483647 - 1);
    }
    action.setChannelID(0xffffffff);
    action.setColour(0xff00ff);
    action.setXDouble(-1.5e-300);
    action.setYDouble(qInf());
    action.setOrgName(str("Ünïcode <&> \"quoted\""));
    action.setTQKEY({ 0xffffffff, 1 });
    TQKEY_ELEMENT keys[] = { { 1, 2 }, { 0xfffffffe, 3 } };
    action.setTQKEYList({ &keys[0], &keys[1] });
}

}  // namespace

class tst_Schema : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void replies();
    void inlinedItems();
    void pages();
    void everyElementType();
    void damagedDocuments_data() { addRows(DAMAGES); }
    void damagedDocuments();

private:
    // What the validator says about documents, one after the other; true when all are valid.
    bool validate(const QStringList &documents);

    QTemporaryDir m_folder;
    QString m_verdict;
};

bool tst_Schema::validate(const QStringList &documents)
{
    QStringList arguments { str("--noout"), str("--relaxng"), str(TQXML_SCHEMA) };
    for (const QString &document : documents) {
        arguments += m_folder.filePath(QString::number(arguments.size()));
        QFile file(arguments.last());
        if (!file.open(QIODevice::WriteOnly) || file.write(document.toUtf8()) < 1) {
            return false;
        }
    }
    QProcess validator;
    validator.start(str(TQXML_XMLLINT), arguments);
    validator.waitForFinished(120000);
    m_verdict = QString::fromUtf8(validator.readAllStandardError());
    return validator.exitCode() == 0 && m_verdict.count(str(" validates\n")) == documents.size();
}

void tst_Schema::replies()
{
    TQCommServer server("sqlite::memory:");
    XMLRouter router(&server, nullptr, nullptr);
    QStringList log;
    RecordingAgent agent(1, &log);
    router.add(&agent);
    QStringList documents;
    for (int type = XMLCommServer::REQUEST_OUTPUTS; type <= XMLCommServer::REQUEST_JOBS; ++type) {
        XMLAction request(str("list"), type, agent.getAgentID());
        request.setExcludePublications(false);
        XMLPacket *packet = agent.getXMLPacket(router.getXMLCommServerID());
        packet->appendV(request);
        documents += documentOf(*packet);
        router.send(packet);
        router.send();
    }
    QCOMPARE(agent.packets.size(), 4);
    for (const XMLPacket *reply : agent.packets) {
        documents += documentOf(*reply);
    }
    router.remove(&agent);
    QVERIFY2(validate(documents), qPrintable(m_verdict));
}

void tst_Schema::inlinedItems()
{
    TQCommServer server("sqlite::memory:");
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    QStringList documents;
    for (unsigned id = 1; id < 2000; ++id) {
        for (const auto type : { PACKETDATATYPE_OUTPUT, PACKETDATATYPE_JOB, PACKETDATATYPE_BOOK,
                 PACKETDATATYPE_ICCPROFILE, PACKETDATATYPE_BOOKOWNER }) {
            const std::unique_ptr<ArchiveNode> node(
                server.getArchiveNode(command, message, type, { id, type }));
            const std::unique_ptr<XMLPacketable> item(
                XMLPacketable::fromArchiveNode(server, node.get()));
            if (item) {
                documents += item->toString();
            }
        }
    }
    QVERIFY2(documents.size() > 560, qPrintable(QString::number(documents.size())));
    QVERIFY(documents.filter(str("  <packetable")).size() > 500);  // inlined in a field
    QVERIFY2(validate(documents), qPrintable(m_verdict.right(2000)));
}

void tst_Schema::pages()
{
    XMLAction action(str("all"), 1, 2);
    fill(action);
    const std::unique_ptr<TQPacketable> book(PacketableUtil::getPacketable(PACKETDATATYPE_BOOK));
    action.append(*book);
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
    packet.append(image);
    packet.append(greeting);
    QVERIFY2(validate({ action.toString(), bare.toString(), page.toString(), image.toString(),
                 greeting.toString(), XMLUI().toString(), documentOf(packet) }),
        qPrintable(m_verdict));
}

// "2 1 2" fits the form of no field but numbers and binary data: all others become bare, or keep
// the size alone.
void tst_Schema::everyElementType()
{
    QStringList documents;
    for (const char *value : { "2 1 2", "1 2", "0 ", "", "a" }) {
        QStringList lines { str("SI 63") };
        for (const CONVERTSTRUCTELEMENTINFO *field =
                 TQGetSystemStorageClassConv(PACKETDATATYPE_SPECIMEN);
             field->type != 0; ++field) {
            lines += QString::number(field->tag, 16) + QLatin1Char(' ') + str(value);
        }
        lines << str("SL 1") << str("SI 56") << str("1 Emma") << str("TI 0") << str("TL 0");
        XMLPacketable item;
        item.setType(PACKETDATATYPE_SPECIMEN);
        QDomElement root = item.getNodeConst();
        item.toDom(root, lines, 0);
        documents += item.toString();
    }
    QVERIFY2(validate(documents), qPrintable(m_verdict));
}

void tst_Schema::damagedDocuments()
{
    const auto &row = currentRow<Damage>();
    const QString damaged = str(VALID).replace(str(row.from), str(row.to));
    QCOMPARE(damaged == str(VALID), *row.from == '\0');
    QCOMPARE(validate({ damaged }), *row.from == '\0');
    QVERIFY2(m_verdict.contains(str(row.reason)), qPrintable(m_verdict));
}

QTEST_GUILESS_MAIN(tst_Schema)
#include "tst_schema.moc"
