#include "script.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "util.h"
#include "xmlpacketable.h"
#include "xpkreference.h"

#include <algorithm>
#include <memory>

namespace {

constexpr auto TYPE = PACKETDATATYPES(0x70);
constexpr unsigned int HKEY = 9;

// A text, a reference by name, one by key, and bytes.
const Script::Table TABLE = { { 1, 1, 0, 1, {} }, { 9, 2, 0, 1, {} }, { 14, 3, 0, 4, {} },
    { 23, 4, 0, 1, {} } };

using Node = std::unique_ptr<ArchiveNode>;

// A node of an item with those lines; a null name leaves it without.
Node makeNode(TQKEY_ELEMENT key, const char *name, QByteArray lines,
    TQPacketable *item = PacketableUtil::getPacketable(TYPE))
{
    lines = "SI 70\n" + lines + "TI 0\n";
    item->fromPacket(lines.data(), unsigned(lines.size()), false, true);
    item->setName(name);
    item->dbkey = key;
    return std::make_unique<ArchiveNode>(item);
}

// An item without text: many of them are cheap.
struct Mute : TQPacketable
{
    Mute() : TQPacketable(TYPE) {}
    char *toPacket(unsigned int &) const override { return nullptr; }
};

// Nodes by number, from edges such as "1>2 1>3 3>1": each refers to others by key, in that order.
// Those that refer to none are mute.
struct Graph
{
    explicit Graph(const QStringList &edges)
    {
        std::map<QByteArray, QByteArray> lines;
        for (const QString &edge : edges) {
            const QByteArrayList ends = edge.toLatin1().split('>');
            lines[ends[0]] += "3 " + QByteArray::number(ends[1].toUInt(), 16) + " 9\n";
            lines[ends[1]] += "";
        }
        for (const auto &[name, own] : lines) {
            nodes[name] = makeNode({ name.toUInt(), HKEY }, name.constData(), own,
                own.isEmpty() ? new Mute : PacketableUtil::getPacketable(TYPE));
        }
        script().ownsNodes = false;
        for (const QString &edge : edges) {
            const QByteArrayList ends = edge.toLatin1().split('>');
            nodes[ends[0]]->add(nodes[ends[1]].get());
        }
    }
    ArchiveNode *root() { return nodes["1"].get(); }

    std::map<QByteArray, Node> nodes;
};

// Names of an item and of what is inlined in it: "1(2 3(4))".
QString shape(const QDomElement &e)
{
    QStringList below;
    const QDomElement item = XMLPacketable::getPacketableItemNode(e).toElement();
    for (QDomElement field = item.firstChildElement(); !field.isNull();
         field = field.nextSiblingElement()) {
        for (QDomElement n = field.firstChildElement(); !n.isNull(); n = n.nextSiblingElement()) {
            below += shape(n);
        }
    }
    const QString name = XMLPacketable::getName(e);
    return below.isEmpty() ? name
                           : QStringLiteral("%1(%2)").arg(name, below.join(QLatin1Char(' ')));
}

int countBelow(const QDomElement &e)
{
    return e.elementsByTagName(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE)).count();
}

// What a graph is inlined to, from its first node on, also when a call fails.
constexpr Case GRAPHS[] = {
    { "tree", "1>2 1>3 3>4 3>5 5>6", "1(2 3(4 5(6)))" },
    { "shared", "1>2 1>3 2>4 3>4", "1(2(4) 3(4))" },
    { "itself", "1>1", "1(1)" },
    { "a child to itself", "1>2 2>2", "1(2)" },
    { "parent", "1>2 2>1", "1(2(1))" },
    { "ancestor", "1>2 2>3 3>2", "1(2(3))" },
    { "ring with a tail", "1>2 2>1 2>3 3>4", "1(2(1 3(4)))" },
    { "all to all", "1>2 1>3 2>1 2>3 3>1 3>2", "1(2(1(3) 3(1)) 3(1(2) 2(1)))" },
    // The item lists the reference twice, and each puts a copy into both of the fields.
    { "the same twice", "1>2 1>2", "1(2 2 2 2)" },
    { "getReferences null", "1>2", "1" },
    { "getReferences cycle 0", "1>2 1>3 3>4", "1(2 3(4))" },
    { "findNode null", "1>2", "1" },
    { "toPacket null", "1>2", "1" },
    { "toPacket empty", "1>2", "1" },
    { "fromPacket null", "1>2", "1" },  // the cache cannot be built
    { "getPacketable null", "1>2", "1" },
    { "TQGetSystemStorageClassConv null", "1>2", "1" },
};

// Which of the fields "_2" with the value "café" and "_3" with the keys 2:9, 0:9 and 2:0 take a
// child.
struct Match
{
    const char *name;
    TQKEY_ELEMENT key;
    const char *itemName;
    const char *fields;
};
constexpr Match MATCHES[] = {
    { "by key", { 2, 9 }, "other", "_3" },
    { "by key with null for a name", { 2, 9 }, nullptr, "_3" },
    { "by key, not by name", { 2, 9 }, "caf\xe9", "_3" },
    { "by a key that nothing refers to", { 4, 9 }, "caf\xe9", "" },
    { "both words count", { 2, 8 }, "other", "" },
    { "the words are not exchanged", { 9, 2 }, "other", "" },
    { "by name, as Latin-1", { 0, 0 }, "caf\xe9", "_2" },
    { "by name, not as UTF-8", { 0, 0 }, "caf\xc3\xa9", "" },
    { "by name, in full", { 0, 0 }, "caf", "" },
    { "by name with half a key", { 0, 9 }, "caf\xe9", "_2" },
    { "half a key alone", { 0, 9 }, "", "" },
    { "the other half alone", { 2, 0 }, "", "" },
    { "null for a name and no key", { 0, 0 }, nullptr, "" },
};

// Elements that no reference is read from, where %1 is a field that could be one: fields without
// items or of other kinds, deeper ones, and those of types that are never converted.
constexpr const char *UNREFERRING[] = {
    "<packetable datatype='70'><item datatype='70'/></packetable>",
    "<packetable datatype='70'><item datatype='70'><_3 key='1' hkey='9'/></item></packetable>",
    "<packetable datatype='70'><item datatype='70'><_1><packetable/></_1></item></packetable>",
    "<packetable datatype='70'><item datatype='70'><list>%1</list></item></packetable>",
    "<packetable datatype='70'><item datatype='30'>%1</item></packetable>",
    "<packetable datatype='6'><item datatype='6'>%1</item></packetable>",
    "<packetable datatype='99'><item datatype='99'>%1</item></packetable>",
    "<item datatype='70'>%1</item>",
};

}  // namespace

class tst_Archive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void graphs_data() { addRows(GRAPHS); }
    void graphs();
    void limits();
    void content();
    void matching_data() { addRows(MATCHES); }
    void matching();
    void largeKeys();
    void placement();
    void nullNodes();
    void profiles();
    void references();
    void tables();

private:
    std::unique_ptr<XMLPacketable> load(ArchiveNode *node)
    {
        return std::unique_ptr<XMLPacketable>(XMLPacketable::fromArchiveNode(m_server, node));
    }

    TQCommServer m_server { "" };
};

void tst_Archive::init()
{
    script() = Script();
    script().isRecording = false;
    script().tables = { { 6, TABLE }, { TYPE, TABLE }, { PACKETDATATYPE_ICCPROFILE, TABLE } };
}

void tst_Archive::cleanup()
{
    QCOMPARE(script().wrongFrees, 0);
    QCOMPARE(script().items.size() + script().buffers.size(), size_t(0));
}

void tst_Archive::graphs()
{
    const auto &row = currentRow<Case>();
    Graph graph(str(row.given).split(QLatin1Char(' ')));
    script().faults = { row.name };
    const auto item = load(graph.root());
    QCOMPARE(shape(item->getNodeConst()), str(row.expected));
    QVERIFY(item->getDBkey().key == 1);
    QVERIFY(item->getType() == TYPE);
}

void tst_Archive::limits()
{
    QStringList chain;
    QStringList fan;
    QStringList tree;  // two references per level, at last twenty, four hundred copies
    for (int i = 1; i <= 10000; ++i) {
        fan += QStringLiteral("1>%1").arg(i + 1);
        chain += i < 200 ? QStringList(QStringLiteral("%1>%2").arg(i).arg(i + 1)) : QStringList();
    }
    for (int i = 1; i <= 20; ++i) {
        tree += QStringLiteral("%1>%2").arg(i).arg(i + 1 + i % 2);
        tree += QStringLiteral("%1>%2").arg(i).arg(i + 2 + i % 2);
        tree += { str("21>23"), str("22>23") };
    }
    Graph wide(fan);
    Graph deep(chain);
    Graph bushy(tree);
    QCOMPARE(countBelow(load(wide.root())->getNodeConst()), 10000);
    QCOMPARE(countBelow(load(bushy.root())->getNodeConst()), 100000);
    const QString levels = shape(load(deep.root())->getNodeConst());
    QVERIFY(levels.startsWith(str("1(2(3(")));
    QVERIFY(levels.endsWith(str("64(65") + QString(64, QLatin1Char(')'))));
}

void tst_Archive::content()
{
    const Node root = makeNode({ 1, HKEY }, "root", "1 text\n3 2 9\n2 leaf\n");
    ArchiveNode *child = makeNode({ 2, HKEY }, "child", "1 inner\n2 leaf\n").release();
    root->add(child);
    for (ArchiveNode *node : { root.get(), child }) {
        node->add(makeNode({ 0, 0 }, "leaf", "4 3 AAAA\n").release());
    }
    const auto item = load(root.get());
    const QString leaf =
        str("<_2 value='leaf'><packetable datatype='70' name='leaf' key='0' hkey='0'>"
            "<item datatype='70'><_4 size='3'>AAAA</_4></item></packetable></_2>");
    const Xml expected(
        str("<packetable datatype='70' name='root' key='1' hkey='9'><item datatype='70'>"
            "<_1 value='text'/><_3 key='2' hkey='9'>"
            "<packetable datatype='70' name='child' key='2' hkey='9'><item datatype='70'>"
            "<_1 value='inner'/>%1</item></packetable></_3>%1</item></packetable>")
            .arg(leaf));
    QCOMPARE(canonical(item->getNodeConst()), canonical(expected.root));
    QVERIFY(item->getDataConst());
    QVERIFY(item->getDataConst()->dbkey.key == 1);
    item->setData(m_server, child);  // a second load appends
    QCOMPARE(item->getName(), str("child"));
    QCOMPARE(item->getNodeConst().childNodes().count(), 2);
}

void tst_Archive::matching()
{
    const auto &row = currentRow<Match>();
    const Node root = makeNode({ 1, HKEY }, "root", "1 x\n2 caf\xc3\xa9\n3 2 9\n3 0 9\n3 2 0\n");
    const Node child = makeNode(row.key, row.itemName, "1 y\n");
    const auto item = load(root.get());
    item->insertInlineData(m_server, child.get());
    QString found;
    const QDomElement own = item->getNodeConst().firstChildElement(XMLPacketable::ITEM);
    for (QDomElement e = own.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        found += e.firstChildElement().isNull() ? QString() : e.tagName();
    }
    QCOMPARE(found, str(row.fields));
}

// Both words of a key count in full: each of the fields gets the one item that it refers to.
void tst_Archive::largeKeys()
{
    constexpr unsigned int WORDS[] = { 1, 2, 0x10001, 0x10002, 0x80000001, 0xffffffff };
    QByteArray lines;
    std::vector<Node> children;
    for (const unsigned int key : WORDS) {
        for (const unsigned int hkey : WORDS) {
            const QByteArray words =
                QByteArray::number(key, 16) + ' ' + QByteArray::number(hkey, 16);
            lines += "3 " + words + '\n';
            children.push_back(makeNode({ key, hkey }, words.constData(), ""));
        }
    }
    const Node root = makeNode({ 1, HKEY }, "root", lines);
    const auto item = load(root.get());
    for (const Node &child : children) {
        item->insertInlineData(m_server, child.get());
    }
    const QDomElement own = item->getNodeConst().firstChildElement(XMLPacketable::ITEM);
    for (QDomElement e = own.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        QCOMPARE(XMLPacketable::getName(e.firstChildElement()),
            e.attribute(XMLPacketable::KEY) + str(" ") + e.attribute(XMLPacketable::HKEY));
        QCOMPARE(e.childNodes().count(), 1);
    }
}

// Every referring field of the item's own blocks gets a copy of its own, whatever its kind;
// nested items get none.
void tst_Archive::placement()
{
    const Node root = makeNode(
        { 1, HKEY }, "root", "3 2 9\n3 2 9\nSL 1\nSI 70\n3 2 9\nTI 0\nTL 0\nSI 70\n3 2 9\nTI 0\n");
    const Node child = makeNode({ 2, HKEY }, "two", "1 y\n");
    const auto item = load(root.get());
    const Xml odd("<item datatype='70'><any key='02' hkey='9' other='1'/><_3 key='2'/>"
                  "<_3 key='x2' hkey='9'/></item>");
    const Xml foreign("<item datatype='71'><_3 key='2' hkey='9'/></item>");
    QDomElement element = item->getNodeConst();
    element.appendChild(odd.root);
    element.appendChild(foreign.root);
    item->insertInlineData(m_server, child.get());
    QCOMPARE(countBelow(element.firstChildElement(XMLPacketable::ITEM)), 2);
    QCOMPARE(countBelow(odd.root) + countBelow(foreign.root), 1);
    QVERIFY(!odd.root.firstChildElement(str("any")).firstChildElement().isNull());
}

void tst_Archive::nullNodes()
{
    ArchiveNode empty;
    Graph graph({ str("1>2"), str("2>3") });
    QVERIFY(!XMLPacketable::fromArchiveNode(m_server, nullptr));
    QVERIFY(!load(&empty)->getNodeConst().hasChildNodes());
    XMLPacketable item;
    item.setName(str("kept"));
    item.setData(m_server, nullptr);
    item.insertInlineData(m_server, graph.root());  // without a cache: nothing
    QCOMPARE(shape(item.getNodeConst()), str("kept"));
    item.setData(*graph.nodes["2"]->packetable);
    item.insertInlineData(m_server, nullptr);
    item.insertInlineData(m_server, &empty);
    QCOMPARE(shape(item.getNodeConst()), str("2"));
    item.insertInlineData(m_server, graph.nodes["3"].get());
    QCOMPARE(shape(item.getNodeConst()), str("2(3)"));
}

// Profiles are loaded before they are converted; an item of another class cannot be.
void tst_Archive::profiles()
{
    const char *const rows[][3] = { { "none", "load press.example 9029", "AAAA" },
        { "getConnectedHostname null", "load  9029", "AAAA" },
        { "load null", "load press.example 9029", "" }, { "another class", "", "" } };
    script().isRecording = true;
    for (const auto &[fault, call, bytes] : rows) {
        script().faults = { fault };
        auto profile = *call ? PacketableUtil::getPacketable(PACKETDATATYPE_ICCPROFILE)
                             : new TQPacketable(PACKETDATATYPE_ICCPROFILE);
        const Node root = makeNode({ 1, HKEY }, "root", "3 2 9\n");
        root->add(makeNode({ 2, HKEY }, "profile", "", profile).release());
        script().calls.clear();
        const auto item = load(root.get());
        const auto &calls = script().calls;
        QVERIFY(!*call || std::find(calls.begin(), calls.end(), call) != calls.end());
        QCOMPARE(XMLPacketable::getTagNode(item->getNodeConst(), 4).toElement().text(), str(bytes));
        QCOMPARE(shape(item->getNodeConst()), str("root(profile)"));
    }
}

void tst_Archive::references()
{
    const Node root = makeNode({ 1, HKEY }, "root", "3 2 9\n2 leaf\n3 5 9\n2 bare\n");
    ArchiveNode *child = makeNode({ 2, HKEY }, "child", "3 3 9\n").release();
    child->add(makeNode({ 3, HKEY }, "deep", "1 d\n").release());
    root->add(child);
    root->add(makeNode({ 0, 0 }, "leaf", "1 l\n").release());
    auto item = load(root.get());
    QList<XPKReference *> found;
    const QPointer<XMLPacketable> before = new XMLPacketable;
    found.append(new XPKReference(before, str("before")));
    QVERIFY(item->getXPKReferences(found));
    QCOMPARE(found.size(), 3);  // the first level only
    XPKReference *byKey = found.at(1);
    XPKReference *byName = found.at(2);
    QVERIFY(byKey->key.key == 2);
    QVERIFY(byKey->key.hkey == HKEY);
    QVERIFY(byKey->name.isNull());
    QVERIFY(byName->key.key == 0);
    QVERIFY(byName->key.hkey == 0);
    QVERIFY(byName->name == str("leaf"));
    item->nullifyReference(byKey);
    item->nullifyReference(nullptr);

    // They are copies, and outlive what they were read from.
    byKey->packetable->setName(str("changed"));
    QCOMPARE(shape(item->getNodeConst()), str("root(child(deep) leaf)"));
    item.reset();
    QCOMPARE(shape(byKey->packetable->getNodeConst()), str("changed(deep)"));
    const std::unique_ptr<TQPacketable> server(byName->packetable->getData());
    QVERIFY(server);
    QVERIFY(QByteArray(server->name) == "leaf");
    delete found.takeFirst();
    QVERIFY(!before);

    for (const char *xml : UNREFERRING) {
        const Xml content(QString(str(xml)).replace(str("%1"), str("<_3><packetable/></_3>")));
        XMLPacketable other;
        other.setData(content.root);
        QVERIFY2(!other.getXPKReferences(found) && found.size() == 2, xml);
    }
    qDeleteAll(found);
}

// The fields of a type are looked up anew where the server library has changed them in place.
void tst_Archive::tables()
{
    QString found;
    for (const Script::Table &table : { Script::Table { { 1, 1, 0, 1, {} }, { 23, 2, 0, 1, {} } },
             { { 1, 2, 0, 1, {} }, { 23, 2, 0, 1, {} } }, { { 10, 1, 0, 1, {} }, {} }, {},
             { { 23, 1, 0, 1, {} }, { 1, 1, 0, 1, {} }, { 1, 2, 0, 1, {} } },
             { { 1, 0, 0, 1, {} }, { 1, 2, 0, 1, {} }, { 23, 2, 0, 1, {} } } }) {
        Script::Table &current = script().tables[TYPE];
        current.resize(5);
        std::copy(table.begin(), table.end(), current.begin());
        current[table.size()] = {};
        Xml xml("<e/>");
        QStringList lines { str("SI 70"), str("1 1 a"), str("2 1 b"), str("TI 0") };
        XMLPacketable().toDom(xml.root, lines, 0);
        found += canonical(xml.root.firstChild()).mid(18);
    }
    QCOMPARE(found,
        str("<_1 value=1 a></><_2 size=1>[3 #text:b]</></><_2 value=1 b></></></></>"
            "<_1 size=1>[3 #text:a]</><_2 value=1 b></></>"
            "<_2 value=1 b></></>"));
}

QTEST_GUILESS_MAIN(tst_Archive)
#include "tst_archive.moc"
