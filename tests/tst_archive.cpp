#include "script.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "util.h"
#include "xmlpacketable.h"
#include "xpkreference.h"

#include <QElapsedTimer>

#include <algorithm>
#include <memory>

namespace {

constexpr auto TYPE = PACKETDATATYPES(0x70);
constexpr unsigned int HKEY = 9;

// A text, a reference by name, one by key, and bytes.
const Script::Table TABLE = { { 1, 1, 0, 1, {} }, { 9, 2, 0, 1, {} }, { 14, 3, 0, 4, {} },
    { 23, 4, 0, 1, {} } };

// An item with those lines; a null name leaves it without.
TQPacketable *makeItem(
    TQKEY_ELEMENT key, const char *name, QByteArray lines, PACKETDATATYPES type = TYPE)
{
    TQPacketable *item = PacketableUtil::getPacketable(type);
    lines = "SI " + QByteArray::number(uint(type), 16) + '\n' + lines + "TI 0\n";
    item->fromPacket(lines.data(), unsigned(lines.size()), false, true);
    item->setName(name);
    item->dbkey = key;
    return item;
}

QByteArray keyLine(unsigned int key) { return "3 " + QByteArray::number(key, 16) + " 9\n"; }

// Nodes by number, from a text such as "1>2 1>3 3>1": each refers to others by key, in that order.
class Graph
{
public:
    explicit Graph(const QString &edges)
    {
        QMap<unsigned, QByteArray> lines;
        QList<QPair<unsigned, unsigned>> pairs;
        for (const QString &edge : edges.split(QLatin1Char(' '))) {
            const unsigned from = edge.section(QLatin1Char('>'), 0, 0).toUInt();
            const unsigned to = edge.section(QLatin1Char('>'), 1).toUInt();
            lines[from] += keyLine(to);
            lines[to] += "";
            pairs.append({ from, to });
        }
        for (auto i = lines.cbegin(); i != lines.cend(); ++i) {
            const QByteArray name = QByteArray::number(i.key());
            m_nodes[i.key()].reset(
                new ArchiveNode(makeItem({ i.key(), HKEY }, name.constData(), i.value())));
        }
        script().ownsNodes = false;
        for (const auto &pair : pairs) {
            m_nodes[pair.first]->add(m_nodes[pair.second].get());
        }
    }
    ArchiveNode *root() { return m_nodes.begin()->second.get(); }

private:
    std::map<unsigned, std::unique_ptr<ArchiveNode>> m_nodes;
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
    return below.isEmpty()
        ? name
        : name + QLatin1Char('(') + below.join(QLatin1Char(' ')) + QLatin1Char(')');
}

QString shape(const XMLPacketable &item) { return shape(item.getNodeConst()); }

int countBelow(const QDomElement &e)
{
    return e.elementsByTagName(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE)).count();
}

// What a graph is inlined to, from its first node on, also when a call fails.
struct Inlining
{
    const char *name;
    const char *edges;
    const char *inlined;
};
constexpr Inlining GRAPHS[] = {
    { "one", "1>2", "1(2)" },
    { "tree", "1>2 1>3 3>4 3>5 5>6", "1(2 3(4 5(6)))" },
    { "shared", "1>2 1>3 2>4 3>4", "1(2(4) 3(4))" },
    { "itself", "1>1", "1(1)" },
    { "a child to itself", "1>2 2>2", "1(2)" },
    { "parent", "1>2 2>1", "1(2(1))" },
    { "ancestor", "1>2 2>3 3>2", "1(2(3))" },
    { "ring", "1>2 2>3 3>1", "1(2(3(1)))" },
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

// Which of the fields "_2" with the value "café" and "_3" with the keys 2:9 and 0:9 take a child.
struct Match
{
    const char *name;
    TQKEY_ELEMENT key;
    const char *itemName;
    const char *fields;
};
constexpr Match MATCHES[] = {
    { "by key", { 2, 9 }, "other", "_3" },
    { "by key without a name", { 2, 9 }, "", "_3" },
    { "by key with null for a name", { 2, 9 }, nullptr, "_3" },
    { "by key, not by name", { 2, 9 }, "caf\xe9", "_3" },
    { "by a key that nothing refers to", { 4, 9 }, "caf\xe9", "" },
    { "both words count", { 2, 8 }, "other", "" },
    { "the words are not exchanged", { 9, 2 }, "other", "" },
    { "by name, as Latin-1", { 0, 0 }, "caf\xe9", "_2" },
    { "by name, not as UTF-8", { 0, 0 }, "caf\xc3\xa9", "" },
    { "by name, in full", { 0, 0 }, "caf", "" },
    { "by name with half a key", { 0, 9 }, "caf\xe9", "_2" },
    { "by name with the other half", { 2, 0 }, "caf\xe9", "_2" },
    { "half a key alone", { 0, 9 }, "", "" },
    { "nothing to refer to", { 0, 0 }, "", "" },
    { "null for a name and no key", { 0, 0 }, nullptr, "" },
};

struct Profile
{
    const char *name;  // the call that fails, if any
    bool isPlain;
    const char *call;
    const char *bytes;
};
constexpr Profile PROFILES[] = {
    { "port cut to 16 bits", false, "load press.example 9029", "AAAA" },
    { "getConnectedHostname null", false, "load  9029", "AAAA" },
    { "load null", false, "load press.example 9029", "" },
    { "an item of another class", true, "", "" },
};

// Contents of a packetable element of type 70 without anything that a reference is read from.
struct Unreferring
{
    const char *name;
    const char *xml;
};
constexpr Unreferring UNREFERRING[] = {
    { "no content", "" },
    { "an empty item", "<item datatype='70'/>" },
    { "fields without items", "<item datatype='70'><_3 key='1' hkey='9'/><_2 value='a'/></item>" },
    { "other codes", "<item datatype='70'><_1><packetable/></_1><_4><packetable/></_4></item>" },
    { "unknown tags", "<item datatype='70'><_f><packetable/></_f><_z><packetable/></_z></item>" },
    { "a list", "<item datatype='70'><list><packetable/></list></item>" },
    { "an item", "<item datatype='70'><item datatype='70'><_3><packetable/></_3></item></item>" },
    { "an item of another type", "<item datatype='30'><_3><packetable/></_3></item>" },
};

using Loaded = std::unique_ptr<XMLPacketable>;

struct References
{
    ~References() { qDeleteAll(list); }
    QList<XPKReference *> list;
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
    void levels();
    void explosion();
    void manyReferences();
    void content();
    void matching_data() { addRows(MATCHES); }
    void matching();
    void placement();
    void nullNodes();
    void profiles_data() { addRows(PROFILES); }
    void profiles();
    void references();
    void noReferences_data() { addRows(UNREFERRING); }
    void noReferences();
    void neverConverted();
    void referenceObject();

private:
    Loaded load(ArchiveNode *node)
    {
        return Loaded(XMLPacketable::fromArchiveNode(m_server, node));
    }
    // Nanoseconds to load a node with that many references, and to list them.
    qint64 timeOf(unsigned count);

    TQCommServer m_server { "" };
};

void tst_Archive::init()
{
    script() = Script();
    script().isRecording = false;
    script().tables = { { TYPE, TABLE }, { PACKETDATATYPE_ICCPROFILE, TABLE } };
}

void tst_Archive::cleanup()
{
    QCOMPARE(script().wrongFrees, 0);
    QCOMPARE(script().items.size(), size_t(0));
    QCOMPARE(script().buffers.size(), size_t(0));
}

void tst_Archive::graphs()
{
    const auto &row = currentRow<Inlining>();
    Graph graph(str(row.edges));
    script().faults = { row.name };
    const Loaded item = load(graph.root());
    QCOMPARE(shape(*item), str(row.inlined));
    QVERIFY(item->getDBkey().key == 1 && item->getType() == TYPE);
}

void tst_Archive::levels()
{
    QStringList edges;
    for (int i = 1; i < 200; ++i) {
        edges += QStringLiteral("%1>%2").arg(i).arg(i + 1);
    }
    Graph graph(edges.join(QLatin1Char(' ')));
    const Loaded item = load(graph.root());
    QCOMPARE(countBelow(item->getNodeConst()), 64);
    QVERIFY(shape(*item).startsWith(str("1(2(3(")));
    QVERIFY(shape(*item).endsWith(str("64(65") + QString(64, QLatin1Char(')'))));
}

// Two references on each of 20 levels would be more than a million items.
void tst_Archive::explosion()
{
    QStringList edges;
    for (int level = 0; level < 20; ++level) {
        for (int from = 1; from <= 2; ++from) {
            for (int to = 3; to <= 4; ++to) {
                edges += QStringLiteral("%1>%2").arg(2 * level + from).arg(2 * level + to);
            }
        }
    }
    Graph graph(edges.join(QLatin1Char(' ')));
    const Loaded item = load(graph.root());
    QCOMPARE(countBelow(item->getNodeConst()), 100000);
}

qint64 tst_Archive::timeOf(unsigned count)
{
    QByteArray lines;
    std::vector<std::unique_ptr<ArchiveNode>> children;
    for (unsigned i = 1; i <= count; ++i) {
        lines += keyLine(i);
        children.emplace_back(new ArchiveNode(makeItem({ i, HKEY }, "n", "1 x\n")));
    }
    script().ownsNodes = false;
    ArchiveNode root(makeItem({ 0x7fffffff, HKEY }, "root", lines));
    for (const auto &child : children) {
        root.add(child.get());
    }
    QElapsedTimer timer;
    timer.start();
    const Loaded item = load(&root);
    References references;
    item->getXPKReferences(references.list);
    const qint64 elapsed = timer.nsecsElapsed();
    return references.list.size() == int(count) && countBelow(item->getNodeConst()) == int(count)
        ? elapsed
        : -1;
}

void tst_Archive::manyReferences()
{
    qint64 few = std::numeric_limits<qint64>::max();
    qint64 many = few;
    for (int i = 0; i < 3; ++i) {
        few = std::min(few, timeOf(1000));
        many = std::min(many, timeOf(10000));
    }
    QVERIFY(few > 0 && many > 0);
    QVERIFY2(many < 40 * few, QByteArray::number(double(many) / double(few)).constData());
}

void tst_Archive::content()
{
    ArchiveNode root(makeItem({ 1, HKEY }, "root", "1 text\n3 2 9\n2 leaf\n"));
    auto child = new ArchiveNode(makeItem({ 2, HKEY }, "child", "1 inner\n2 leaf\n"));
    root.add(child);
    for (ArchiveNode *node : { &root, child }) {
        node->add(new ArchiveNode(makeItem({ 0, 0 }, "leaf", "4 3 AAAA\n")));
    }
    const Loaded item = load(&root);
    const QString leaf =
        str("<packetable datatype='70' name='leaf' key='0' hkey='0'><item datatype='70'>"
            "<_4 size='3'>AAAA</_4></item></packetable>");
    const Xml expected(
        str("<packetable datatype='70' name='root' key='1' hkey='9'><item datatype='70'>"
            "<_1 value='text'/><_3 key='2' hkey='9'>"
            "<packetable datatype='70' name='child' key='2' hkey='9'><item datatype='70'>"
            "<_1 value='inner'/><_2 value='leaf'>%1</_2></item></packetable></_3>"
            "<_2 value='leaf'>%1</_2></item></packetable>")
            .arg(leaf));
    QCOMPARE(canonical(item->getNodeConst()), canonical(expected.root));
    QVERIFY(item->getDataConst());
    QCOMPARE(item->getDataConst()->dbkey.key, 1U);

    // A second load appends.
    item->setData(m_server, child);
    QCOMPARE(item->getName(), str("child"));
    const QDomElement first = item->getNodeConst().firstChildElement(XMLPacketable::ITEM);
    QVERIFY(!first.nextSiblingElement(XMLPacketable::ITEM).isNull());
}

void tst_Archive::matching()
{
    const auto &row = currentRow<Match>();
    ArchiveNode root(makeItem({ 1, HKEY }, "root", "1 x\n2 caf\xc3\xa9\n3 2 9\n3 0 9\n"));
    ArchiveNode child(makeItem(row.key, row.itemName, "1 y\n"));
    const Loaded item = load(&root);
    item->insertInlineData(m_server, &child);
    QString found;
    const QDomElement own = item->getNodeConst().firstChildElement(XMLPacketable::ITEM);
    for (QDomElement e = own.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        found += e.firstChildElement().isNull() ? QString() : e.tagName();
    }
    QCOMPARE(found, str(row.fields));
}

// Every referring field of the item's own blocks gets a copy of its own, whatever its kind;
// nested items get none.
void tst_Archive::placement()
{
    ArchiveNode root(makeItem(
        { 1, HKEY }, "root", "3 2 9\n3 2 9\nSL 1\nSI 70\n3 2 9\nTI 0\nTL 0\nSI 70\n3 2 9\nTI 0\n"));
    const Loaded item = load(&root);
    Xml odd("<item datatype='70'><any key='02' hkey='9' other='1'/><_3 key='2'/>"
            "<_3 key='x2' hkey='9'/></item>");
    QDomElement element = item->getNodeConst();
    element.appendChild(odd.root);
    Xml foreign("<item datatype='71'><_3 key='2' hkey='9'/></item>");
    element.appendChild(foreign.root);
    ArchiveNode child(makeItem({ 2, HKEY }, "two", "1 y\n"));
    item->insertInlineData(m_server, &child);
    const QDomElement own = element.firstChildElement(XMLPacketable::ITEM);
    QCOMPARE(countBelow(own), 2);
    QCOMPARE(countBelow(odd.root), 1);
    QVERIFY(!odd.root.firstChildElement(str("any")).firstChildElement().isNull());
    QCOMPARE(countBelow(foreign.root), 0);
}

void tst_Archive::nullNodes()
{
    QVERIFY(!XMLPacketable::fromArchiveNode(m_server, nullptr));
    ArchiveNode empty;
    const Loaded loaded = load(&empty);
    QVERIFY(loaded && !loaded->getNodeConst().hasChildNodes());
    Graph graph(str("1>2 2>3"));
    XMLPacketable item;
    item.setName(str("kept"));
    item.setData(m_server, nullptr);
    item.insertInlineData(m_server, graph.root());  // without a cache: nothing
    QCOMPARE(shape(item), str("kept"));
    item.setData(*std::unique_ptr<TQPacketable>(makeItem({ 1, HKEY }, "root", keyLine(1))));
    item.insertInlineData(m_server, nullptr);
    item.insertInlineData(m_server, &empty);
    QCOMPARE(shape(item), str("root"));
    item.insertInlineData(m_server, graph.root());
    QCOMPARE(shape(item), str("root(1(2(3)))"));
}

// Profiles are loaded before they are converted.
void tst_Archive::profiles()
{
    const auto &row = currentRow<Profile>();
    script().faults = { row.name };
    ArchiveNode root(makeItem({ 1, HKEY }, "root", keyLine(2)));
    TQPacketable *profile = row.isPlain ? new TQPacketable(PACKETDATATYPE_ICCPROFILE)
                                        : PacketableUtil::getPacketable(PACKETDATATYPE_ICCPROFILE);
    profile->dbkey = { 2, HKEY };
    root.add(new ArchiveNode(profile));
    script().isRecording = true;
    const Loaded item = load(&root);
    QStringList calls;
    for (const std::string &each : script().calls) {
        calls += QString::fromStdString(each);
    }
    QCOMPARE(calls.filter(str("load ")).join(QLatin1Char('|')), str(row.call));
    QCOMPARE(countBelow(item->getNodeConst()), 1);
    QCOMPARE(XMLPacketable::getTagNode(item->getNodeConst(), 4).toElement().text(), str(row.bytes));
}

void tst_Archive::references()
{
    ArchiveNode root(makeItem({ 1, HKEY }, "root", "3 2 9\n2 leaf\n3 5 9\n2 bare\n"));
    auto child = new ArchiveNode(makeItem({ 2, HKEY }, "child", "3 3 9\n"));
    child->add(new ArchiveNode(makeItem({ 3, HKEY }, "deep", "1 d\n")));
    root.add(child);
    root.add(new ArchiveNode(makeItem({ 0, 0 }, "leaf", "1 l\n")));
    Loaded item = load(&root);
    References found;
    QPointer<XMLPacketable> before = new XMLPacketable;
    found.list.append(new XPKReference(before, str("before")));
    QVERIFY(item->getXPKReferences(found.list));
    QCOMPARE(found.list.size(), 3);  // the first level only
    XPKReference *byKey = found.list.at(1);
    XPKReference *byName = found.list.at(2);
    QCOMPARE(shape(*byKey->packetable), str("child(deep)"));
    QVERIFY(byKey->key.key == 2 && byKey->key.hkey == HKEY && byKey->name.isNull());
    QCOMPARE(shape(*byName->packetable), str("leaf"));
    QVERIFY(byName->key.key == 0 && byName->key.hkey == 0);
    QCOMPARE(byName->name, str("leaf"));

    // They are copies, and outlive what they were read from.
    byKey->packetable->setName(str("changed"));
    QCOMPARE(shape(*item), str("root(child(deep) leaf)"));
    item->nullifyReference(byKey);
    item->nullifyReference(nullptr);
    QVERIFY(found.list.contains(byKey) && byKey->packetable);
    item.reset();
    QCOMPARE(shape(*byKey->packetable), str("changed(deep)"));
    const std::unique_ptr<TQPacketable> server(byName->packetable->getData());
    QVERIFY(server && QByteArray(server->name) == "leaf");
}

void tst_Archive::noReferences()
{
    const Xml content(
        str("<packetable datatype='70'>%1</packetable>").arg(str(currentRow<Unreferring>().xml)));
    XMLPacketable item;
    item.setData(content.root);
    References found;
    QVERIFY(!item.getXPKReferences(found.list) && found.list.isEmpty());
}

// Type 6, whatever its table says, types without a table, and elements of another kind.
void tst_Archive::neverConverted()
{
    script().tables[6] = TABLE;
    for (const char *xml : { "<packetable datatype='6'><item datatype='6'>%1</item></packetable>",
             "<packetable datatype='99'><item datatype='99'>%1</item></packetable>",
             "<item datatype='70'>%1</item>" }) {
        const Xml content(str(xml).arg(str("<_3><packetable/></_3>")));
        XMLPacketable item;
        item.setData(content.root);
        References found;
        QVERIFY(!item.getXPKReferences(found.list) && found.list.isEmpty());
    }
}

void tst_Archive::referenceObject()
{
    QPointer<XMLPacketable> first = new XMLPacketable;
    QPointer<XMLPacketable> second = new XMLPacketable;
    auto byKey = new XPKReference(first, TQKEY_ELEMENT { 3, 4 });
    auto byName = new XPKReference(second, str("a"));
    QVERIFY(byKey->key.key == 3 && byKey->key.hkey == 4 && byKey->name.isNull());
    QVERIFY(byName->key.key == 0 && byName->key.hkey == 0 && byName->name == str("a"));
    delete byKey;
    QVERIFY(!first && second);
    byName->packetable = nullptr;  // taken over
    delete byName;
    QVERIFY(second);
    delete second;
    XPKReference(nullptr, str("none"));
}

QTEST_GUILESS_MAIN(tst_Archive)
#include "tst_archive.moc"
