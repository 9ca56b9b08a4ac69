// Archive nodes become items. A node has an item and the nodes that it refers to; in XML, a copy of
// each of these items is inlined in the field that refers to it.

#include "script.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "util.h"
#include "xmlpacketable.h"

#include <algorithm>
#include <memory>

namespace {

constexpr auto TYPE = PACKETDATATYPES(0x70);
constexpr unsigned int HKEY = 9;

// Fields of the items: _1 is a text, _2 refers by name, _3 refers by key, _4 holds bytes.
const Script::Table FIELDS = { { TQELEMENT_TEXT, 1, 0, 1, {} }, { TQELEMENT_NAME, 2, 0, 1, {} },
    { TQELEMENT_KEY, 3, 0, 4, {} }, { TQELEMENT_BYTES, 4, 0, 1, {} } };

using Node = std::unique_ptr<ArchiveNode>;

// A node of an item with those lines.
Node makeNode(TQKEY_ELEMENT key, const char *name, QByteArray lines,
    TQPacketable *item = PacketableUtil::getPacketable(TYPE))
{
    lines = "SI 70\n" + lines + "TI 0\n";
    item->fromPacket(lines.data(), unsigned(lines.size()), false, true);
    item->setName(name);
    item->dbkey = key;
    return std::make_unique<ArchiveNode>(item);
}

QByteArray referTo(unsigned int key, unsigned int hkey = HKEY)
{
    return "3 " + QByteArray::number(key, 16) + ' ' + QByteArray::number(hkey, 16) + '\n';
}

// The nodes that each node refers to, by key; number 1 is the root.
using References = std::map<unsigned int, QList<unsigned int>>;

// Nodes that refer to one another, also in circles. Each is named by its number.
struct Graph
{
    explicit Graph(const References &references)
    {
        script().ownsNodes = false;
        for (const auto &[number, children] : references) {
            QByteArray lines;
            for (const unsigned int child : children) {
                lines += referTo(child);
            }
            nodes[number] = makeNode({ number, HKEY }, QByteArray::number(number), lines);
        }
        for (const auto &[number, children] : references) {
            for (const unsigned int child : children) {
                nodes[number]->add(nodes.at(child).get());
            }
        }
    }

    std::map<unsigned int, Node> nodes;
};

QString withBelow(const QString &name, const QStringList &below)
{
    return below.isEmpty() ? name : name + str("(") + below.join(QLatin1Char(' ')) + str(")");
}

// Names of an item and of what is inlined in its fields: "1(2 3(4))".
QString namesIn(const QDomElement &e)
{
    QStringList below;
    const QDomNodeList fields = XMLPacketable::getPacketableItemTagNodes(e);
    for (int i = 0; i < fields.count(); ++i) {
        for (QDomElement inlined = fields.at(i).firstChildElement(); !inlined.isNull();
             inlined = inlined.nextSiblingElement()) {
            below += namesIn(inlined);
        }
    }
    return withBelow(XMLPacketable::getName(e), below);
}

// What namesIn() must return, computed from the references alone: every reference fills every field
// that names the same node, unless that node is being inlined already.
QString expectedNames(const References &references, unsigned int number, QList<unsigned int> path)
{
    QStringList below;
    const QList<unsigned int> children = references.at(number);
    for (const unsigned int child : children) {
        for (auto copies = path.contains(child) ? 0 : children.count(child); copies > 0; --copies) {
            below += expectedNames(references, child, path + QList<unsigned int> { child });
        }
    }
    return withBelow(QString::number(number), below);
}

int countBelow(const QDomElement &e) { return e.elementsByTagName(str("packetable")).count(); }

}  // namespace

class tst_Archive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void anItemIsPutIntoTheFieldThatRefersToIt();
    void aNodeIsInlinedOnceAlongAPath();
    void atMost64LevelsAnd100000Items();
    void whatFailsIsNotInlined();
    void aValidKeyRefersElseTheName();
    void everyFieldOfTheOwnBlocksTakesACopy();
    void withoutANodeNothingHappens();
    void profilesAreLoadedFirst();
    void referencesAreCopiesOfTheFirstLevel();
    void onlyReferringFieldsGiveReferences();
    void aTableThatChangedInPlaceIsReadAgain();

private:
    std::unique_ptr<XMLPacketable> load(const Node &node)
    {
        return std::unique_ptr<XMLPacketable>(XMLPacketable::fromArchiveNode(m_server, node.get()));
    }

    TQCommServer m_server { "" };
};

void tst_Archive::init()
{
    script() = Script();
    script().isRecording = false;
    script().tables = { { 6, FIELDS }, { TYPE, FIELDS }, { PACKETDATATYPE_ICCPROFILE, FIELDS } };
}

void tst_Archive::cleanup()
{
    QCOMPARE(script().wrongFrees, 0);
    QCOMPARE(script().items.size(), size_t(0));
    QCOMPARE(script().buffers.size(), size_t(0));
}

void tst_Archive::anItemIsPutIntoTheFieldThatRefersToIt()
{
    const Node root = makeNode({ 1, HKEY }, "root", "1 text\n3 2 9\n2 leaf\n");
    ArchiveNode *child = makeNode({ 2, HKEY }, "child", "1 inner\n").release();
    root->add(child);
    root->add(makeNode({ 0, 0 }, "leaf", "4 3 AAAA\n").release());
    const auto item = load(root);
    QCOMPARE(xmlOf(item->getNodeConst()),
        str("<packetable datatype='70' hkey='9' key='1' name='root'><item datatype='70'>"
            "<_1 value='text'/>"
            "<_3 hkey='9' key='2'><packetable datatype='70' hkey='9' key='2' name='child'>"
            "<item datatype='70'><_1 value='inner'/></item></packetable></_3>"
            "<_2 value='leaf'><packetable datatype='70' hkey='0' key='0' name='leaf'>"
            "<item datatype='70'><_4 size='3'>AAAA</_4></item></packetable></_2>"
            "</item></packetable>"));
    QCOMPARE(item->getDataConst()->dbkey.key, 1U);
    item->setData(m_server, child);  // a second load appends
    QCOMPARE(item->getName(), str("child"));
    QCOMPARE(item->getNodeConst().childNodes().count(), 2);
}

void tst_Archive::aNodeIsInlinedOnceAlongAPath()
{
    Random random;
    for (int run = 0; run < 300; ++run) {
        References references;
        const int count = 1 + random.below(5);
        for (int number = 1; number <= count; ++number) {
            QList<unsigned int> &children = references[unsigned(number)];
            for (int i = random.below(3); i > 0; --i) {
                children += unsigned(1 + random.below(count));
            }
        }
        const Graph graph(references);
        QCOMPARE(
            namesIn(load(graph.nodes.at(1))->getNodeConst()), expectedNames(references, 1, {}));
    }
}

void tst_Archive::atMost64LevelsAnd100000Items()
{
    References chain { { 100, {} } };
    for (unsigned int i = 1; i < 100; ++i) {
        chain[i] = { i + 1 };
    }
    References bushy { { 18, {} } };  // two references to the next node, 131,070 copies
    for (unsigned int i = 1; i < 18; ++i) {
        bushy[i] = i == 1 ? QList<unsigned int> { 2 } : QList<unsigned int> { i + 1, i + 1 };
    }
    const QString levels = namesIn(load(Graph(chain).nodes.at(1))->getNodeConst());
    QVERIFY2(levels.endsWith(str("(64(65") + str(")").repeated(64)), qPrintable(levels));
    QCOMPARE(countBelow(load(Graph(bushy).nodes.at(1))->getNodeConst()), 100000);
}

void tst_Archive::whatFailsIsNotInlined()
{
    const Graph graph({ { 1, { 2 } }, { 2, {} } });
    for (const char *fault :
        { "getReferences null", "findNode null", "toPacket null", "toPacket empty",
            "fromPacket null", "getPacketable null", "TQGetSystemStorageClassConv null" }) {
        script().faults = { fault };
        QCOMPARE(namesIn(load(graph.nodes.at(1))->getNodeConst()), str("1"));
    }
}

// A key refers when both of its words are equal. Names, which are Latin-1, are compared only when
// the key is invalid, because one of its words is 0.
void tst_Archive::aValidKeyRefersElseTheName()
{
    const Node root = makeNode({ 1, HKEY }, "root",
        "2 caf\xc3\xa9\n" + referTo(2) + referTo(0x10002) + referTo(2, 0) + referTo(2, 0xffffffff));
    const auto refersTo = [&](TQKEY_ELEMENT key, const char *name) {
        const Node child = makeNode(key, name, "");
        const auto item = load(root);
        item->insertInlineData(m_server, child.get());
        const QDomNode inlined = item->getNodeConst().elementsByTagName(str("packetable")).at(0);
        return xmlOf(inlined.parentNode().cloneNode(false));
    };
    QCOMPARE(refersTo({ 2, HKEY }, "caf\xe9"), str("<_3 hkey='9' key='2'/>"));
    QCOMPARE(refersTo({ 0x10002, HKEY }, nullptr), str("<_3 hkey='9' key='10002'/>"));
    QCOMPARE(refersTo({ 2, 0xffffffff }, ""), str("<_3 hkey='ffffffff' key='2'/>"));
    QCOMPARE(refersTo({ 2, 0 }, "caf\xe9"), str("<_2 value='café'/>"));
    QCOMPARE(refersTo({ 0, HKEY }, "caf\xe9"), str("<_2 value='café'/>"));
    QCOMPARE(refersTo({ 2, 0 }, nullptr), QString());
    QCOMPARE(refersTo({ 3, HKEY }, "caf\xe9"), QString());
}

// Fields of nested items and of items of another type take no copy.
void tst_Archive::everyFieldOfTheOwnBlocksTakesACopy()
{
    const Node child = makeNode({ 2, HKEY }, "two", "");
    const Node root = makeNode({ 1, HKEY }, "root", "3 2 9\n3 2 9\nSI 70\n3 2 9\nTI 0\n");
    const auto item = load(root);
    const Xml own("<item datatype='70'><any key='02' hkey='9' other='1'/><_3 key='2'/></item>");
    const Xml other("<item datatype='71'><_3 key='2' hkey='9'/></item>");
    QDomElement element = item->getNodeConst();
    element.appendChild(own.root);
    element.appendChild(other.root);
    item->insertInlineData(m_server, child.get());
    QCOMPARE(countBelow(element.firstChildElement()), 2);
    QCOMPARE(countBelow(own.root.firstChildElement(str("any"))), 1);
    QCOMPARE(countBelow(element), 3);
}

void tst_Archive::withoutANodeNothingHappens()
{
    ArchiveNode empty;
    QVERIFY(!XMLPacketable::fromArchiveNode(m_server, nullptr));
    XMLPacketable item;
    item.setData(m_server, &empty);
    item.insertInlineData(m_server, nullptr);
    QCOMPARE(xmlOf(item.getNodeConst()), str("<packetable/>"));
}

// The call of load() has the host that the connection names, and its port.
void tst_Archive::profilesAreLoadedFirst()
{
    script().isRecording = true;
    for (const char *host : { "press.example", "" }) {
        script().faults = { *host ? "none" : "getConnectedHostname null" };
        script().calls.clear();
        const Node profile = makeNode(
            { 2, HKEY }, "sRGB", "", PacketableUtil::getPacketable(PACKETDATATYPE_ICCPROFILE));
        const auto item = load(profile);
        const std::string call = "load " + std::string(host) + " 9029";
        QCOMPARE(std::count(script().calls.begin(), script().calls.end(), call), 1);
        QCOMPARE(
            XMLPacketable::getTagNode(item->getNodeConst(), 4).toElement().text(), str("AAAA"));
    }
}

void tst_Archive::referencesAreCopiesOfTheFirstLevel()
{
    const Node root = makeNode({ 1, HKEY }, "root", "3 2 9\n2 leaf\n3 5 9\n2 bare\n");
    ArchiveNode *child = makeNode({ 2, HKEY }, "child", "3 3 9\n").release();
    child->add(makeNode({ 3, HKEY }, "deep", "1 d\n").release());
    root->add(child);
    root->add(makeNode({ 0, 0 }, "leaf", "1 l\n").release());
    auto item = load(root);
    const QPointer<XMLPacketable> earlier = new XMLPacketable;
    QList<XPKReference *> found { new XPKReference(earlier, str("earlier")) };
    QVERIFY(item->getXPKReferences(found));
    QCOMPARE(found.size(), 3);
    QCOMPARE(found.at(1)->key.key, 2U);
    QCOMPARE(found.at(1)->key.hkey, HKEY);
    QVERIFY(found.at(1)->name.isNull());
    QCOMPARE(found.at(2)->name, str("leaf"));
    QCOMPARE(found.at(2)->key.key, 0U);
    found.at(1)->packetable->setName(str("changed"));
    QCOMPARE(namesIn(item->getNodeConst()), str("root(child(deep) leaf)"));
    item.reset();
    QCOMPARE(namesIn(found.at(1)->packetable->getNodeConst()), str("changed(deep)"));
    qDeleteAll(found);
    QVERIFY(!earlier);
}

void tst_Archive::onlyReferringFieldsGiveReferences()
{
    const std::pair<const char *, const char *> contents[] = { { "70", "<_3 key='1'/>" },
        { "70", "<_1><i/></_1>" }, { "70", "<list><_3><i/></_3></list>" }, { "6", "<_3><i/></_3>" },
        { "99", "<_3><i/></_3>" } };
    for (const auto &[type, fields] : contents) {
        const QString form =
            str("<packetable datatype='%1'><item datatype='%1'>%2</item></packetable>");
        XMLPacketable item;
        item.setData(Xml(form.arg(str(type), str(fields))).root);
        QList<XPKReference *> found { nullptr };
        QVERIFY2(!item.getXPKReferences(found), fields);
        QCOMPARE(found.size(), 1);
    }
}

// The table of a type that was removed and added again may have the address of the old one.
void tst_Archive::aTableThatChangedInPlaceIsReadAgain()
{
    for (const unsigned int tag : { 1U, 2U }) {
        script().tables[TYPE][0].tag = tag;
        Xml item("<item datatype='70'/>");
        QStringList lines { str("1 a"), str("2 b") };
        XMLPacketable().toDom(item.root, lines, 0);
        QCOMPARE(item.root.firstChildElement().attribute(XMLPacketable::VALUE),
            str(tag == 1 ? "a" : "b"));
    }
}

QTEST_GUILESS_MAIN(tst_Archive)
#include "tst_archive.moc"
