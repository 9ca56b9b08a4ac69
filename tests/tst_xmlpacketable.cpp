#include "xmlpacketable.h"

#include "tqpacketable.h"
#include "tqregistry.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlui.h"

#include <QThread>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>

using X = XMLPacketable;
using Type = PACKETDATATYPES;
using Nodes = std::list<QDomNode>;
using Builder = void (*)(QDomElement &, const QString &, const QString &);
using Use = std::function<void(XMLPacketable &)>;
using Build = std::function<QDomElement(QDomElement &, const QString &, const QString &)>;
Q_DECLARE_METATYPE(Build)
Q_DECLARE_METATYPE(Use)

namespace {

// The specimen has a field of every element type code: its tag is 256 times the code, plus the
// width. Type 5 is registered here, with codes that the specimen lacks.
constexpr Type SPECIMEN = PACKETDATATYPE_SPECIMEN;
constexpr Type OTHER = Type(5);
constexpr TQSTORAGEFIELD OTHER_FIELDS[] = {
    { 1, 0x1, 1, nullptr, nullptr, PACKETDATATYPE_NONE },
    { 32, 0x20, 4, nullptr, nullptr, PACKETDATATYPE_NONE },
    { 0xffffffff, 0xff, 4, nullptr, nullptr, PACKETDATATYPE_NONE },
    { 1, 0x7fffffff, 1, nullptr, nullptr, PACKETDATATYPE_NONE },
};

// A server item that writes a given text, or none.
class TextItem : public TQPacketable
{
public:
    TextItem(Type type, const QByteArray &text) : TQPacketable(type), m_text(text) {}
    char *toPacket(unsigned int &length) const override
    {
        length = unsigned(m_text.size());
        char *buffer = m_text.isNull() ? nullptr : static_cast<char *>(std::malloc(length + 1));
        if (buffer) {
            std::memcpy(buffer, m_text.constData(), length);
        }
        return buffer;
    }

private:
    QByteArray m_text;
};

QString packetOf(const QDomElement &e) { return X().toPacket(e); }

QString written(const TQPacketable *item)
{
    unsigned int length = 0;
    char *buffer = item ? item->toPacket(length) : nullptr;
    const QString text = QString::fromUtf8(buffer, int(length));
    TQ_free(buffer);
    return text;
}

// Builders by element type code: simple, key, numbers, text strings, binary. The width of a field
// changes its code, but to one of the same builder.
Builder builderOf(unsigned int code)
{
    constexpr char CODES[] = "-sssssssss-sssknnnnnsstbss-nssnn";
    constexpr Builder BUILDERS[] = { nullptr, X::createSimpleElementV, X::createTQKEYElementV,
        X::createNumberArrayElementV, X::createStringArrayElementV, X::createBinaryDataElementV };
    return code < 32 ? BUILDERS[QByteArray("-skntb").indexOf(CODES[code])] : nullptr;
}

// The reader of packet text as it is described, one step after the other.
unsigned int modelToDom(QDomElement &parent, const QStringList &lines, unsigned int index)
{
    CONVERTSTRUCTELEMENTINFO *table = nullptr;
    if (parent.tagName() == str("item")) {
        const Type type = X::getType(parent);
        table = type == 6 ? nullptr : TQGetSystemStorageClassConv(type);
        if (!table) {
            return index;
        }
    }
    int tagSize = -1;
    int valueSize = 0;
    for (; index < unsigned(lines.size()); ++index) {
        const QString line = lines.at(int(index)).trimmed();
        const int blank = int(line.indexOf(QLatin1Char(' ')));
        if (blank >= 0) {
            tagSize = blank;
            valueSize = int(line.size()) - blank - 1;
        } else if (tagSize < 0) {
            continue;
        }
        const QString tag = line.left(tagSize);
        const QString value = line.mid(tagSize + 1, valueSize);
        if (tag == str("TI") || tag == str("TL")) {
            return index;
        }
        if (tag == str("SL") || tag == str("SI")) {
            QDomElement child = tag == str("SL") ? X::createListElement(parent, value)
                                                 : X::createItemElement(parent, value);
            index = modelToDom(child, lines, index + 1);
            continue;
        }
        bool ok = false;
        const unsigned int number = tag.toUInt(&ok, 16);
        const auto record = ok ? X::getConvStructFromDataTag(table, number) : nullptr;
        const Builder build = record ? builderOf(record->type) : nullptr;
        if (build) {
            build(parent, X::getXMLTagNameFromDATATAG(int(number)), value);
        }
    }
    return index;
}

// Blocks within one another, items and lists in turn, with a field behind each inner block.
QByteArray nested(int levels)
{
    QByteArray text;
    for (int level = 1; level <= levels; ++level) {
        text += level % 2 ? "SI 63\n" : "SL 1\n";
    }
    for (int level = levels; level >= 1; --level) {
        text += level % 2 ? "101 after\nTI 0\n" : "TL 0\n";
    }
    return text;
}

QString nestedXml(int levels)
{
    QString text = QString::fromLatin1(nested(levels));
    const char *const forms[][2] = { { "SI 63", "<item datatype='63'>" },
        { "SL 1", "<list size='1'>" }, { "101 after", "<_101 value='after'/>" },
        { "TI 0", "</item>" }, { "TL 0", "</list>" } };
    for (const auto &form : forms) {
        text.replace(str(form[0]) + QLatin1Char('\n'), str(form[1]));
    }
    return str("<packetable datatype='63' key='0' hkey='0'>") + text + str("</packetable>");
}

struct SmallStackThread : QThread
{
    explicit SmallStackThread(std::function<void()> work) : m_work(std::move(work))
    {
        setStackSize(1024 * 1024);
        start();
        wait();
    }
    void run() override { m_work(); }
    const std::function<void()> m_work;
};

double seconds(const std::function<void()> &work)
{
    const std::clock_t start = std::clock();
    work();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

}  // namespace

class tst_XMLPacketable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void operations();
    void itemAttributes();
    void tags();
    void queries();
    void builders_data();
    void builders();
    void writtenText_data();
    void writtenText();
    void writtenLines();
    void readText_data();
    void readText();
    void shapes();
    void values_data();
    void values();
    void agreesWithModel();
    void nesting_data();
    void nesting();
    void deepTrees();
    void largeInput_data();
    void largeInput();
    void cache();
    void overriddenAttributes();
    void setData();
    void nullElement();
    void lifetime_data();
    void lifetime();
};

void tst_XMLPacketable::initTestCase()
{
    QVERIFY(TQRegisterStorageClass(OTHER, OTHER_FIELDS, std::size(OTHER_FIELDS)));
}

void tst_XMLPacketable::operations()
{
    using E = const QDomElement &;
    using W = QDomElement &;
    using S = const QString &;
    QVERIFY((exist<void(W, S)>({ &X::setName, &X::createListElementV, &X::createItemElementV })));
    QVERIFY((exist<QDomElement(W, S)>({ &X::createListElement, &X::createItemElement })));
    QVERIFY((exist<QString(E)>({ &X::getName })));
    QVERIFY((exist<void(W, const TQKEY_ELEMENT &)>({ &X::setDBkey })));
    QVERIFY((exist<TQKEY_ELEMENT(E)>({ &X::getDBkey })));
    QVERIFY((exist<void(W, Type)>({ &X::setType })));
    QVERIFY((exist<Type(E)>({ &X::getType })));
    QVERIFY((exist<void(W, bool)>({ &X::setReplacement })));
    QVERIFY((exist<bool(E)>({ &X::isReplacement })));
    QVERIFY((exist<void(W)>({ &X::clearReplacement })));
    QVERIFY((existIn<X, void(bool)>({ &X::setReplacement })));
    QVERIFY((exist<QDomNodeList(E)>({ &X::getPacketableItemTagNodes })));
    QVERIFY((existIn<X, unsigned(W, QStringList &, unsigned)>({ &X::toDom })));
    QVERIFY((existIn<X, TQPacketable *()>({ &X::getData, &X::getDataConst })));
    const QStringList constants { X::START_LIST, X::END_LIST, X::START_ITEM, X::END_ITEM, X::LIST,
        X::SIZE, X::ITEM, X::DATATYPE, X::VALUE, X::NAME, X::KEY, X::HKEY, X::IS_CURRENT,
        X::IS_REPLACEMENT };
    QCOMPARE(constants.join(QLatin1Char(' ')),
        str("SL TL SI TI list size item datatype value name key hkey is_current is_replacement"));
    QCOMPARE(sizeof(X), sizeof(XMLObject) + sizeof(void *));

    const size_t places[] = { slotOf<void(bool)>(&X::setCurrent), slotOf(&X::isCurrent),
        slotOf<void(const QString &)>(&X::setName), slotOf<QString() const>(&X::getName),
        slotOf<void(const TQKEY_ELEMENT &)>(&X::setDBkey),
        slotOf<TQKEY_ELEMENT() const>(&X::getDBkey), slotOf<void(Type)>(&X::setType),
        slotOf<Type() const>(&X::getType), slotOf(&Derived<X>::last) };
    for (size_t i = 0; i < std::size(places); ++i) {
        QCOMPARE(places[i], 13 + i);  // behind setNode()
    }
}

void tst_XMLPacketable::itemAttributes()
{
    X item;
    QVERIFY(item.getName().isNull() && !item.isCurrent() && !item.isReplacement());
    QCOMPARE(int(item.getType()), 0);
    QCOMPARE(item.getDBkey().key + item.getDBkey().hkey, 0U);
    item.setDBkey({ 255, 16 });
    item.setType(Type(18));
    item.setName(str("%1"));
    item.setName(QString());
    item.setCurrent(true);
    item.setReplacement(true);
    QCOMPARE(canonical(item.getNodeConst()),
        str("<packetable datatype=12;hkey=10;is_current=1;is_replacement=1;key=ff;name=%1></>"));
    QCOMPARE(item.getDBkey().key, 255U);
    QCOMPARE(item.getDBkey().hkey, 16U);
    QVERIFY(item.getType() == 18 && item.isCurrent() && item.isReplacement());
    QCOMPARE(item.getName(), str("%1"));
    item.setCurrent(false);
    item.clearReplacement();
    item.setType(Type(0xffffffff));
    QCOMPARE(canonical(item.getNodeConst()),
        str("<packetable datatype=ffffffff;hkey=10;is_current=0;key=ff;name=%1></>"));
    QCOMPARE(unsigned(item.getType()), 0xffffffffU);
    const Xml odd("<packetable datatype='100000000' key='x' hkey='-1' is_current='true'/>");
    item.setNode(odd.root);
    QVERIFY(item.getType() == 0 && !item.isCurrent());
    QCOMPARE(item.getDBkey().key + item.getDBkey().hkey, 0U);
}

void tst_XMLPacketable::tags()
{
    const std::pair<int, const char *> names[] = { { 6699, "_1a2b" }, { 0, "_0" }, { -1, "_-1" },
        { INT_MIN, "_-80000000" }, { INT_MAX, "_7fffffff" } };
    for (const auto &name : names) {
        QCOMPARE(X::getXMLTagNameFromDATATAG(name.first), str(name.second));
    }
    QCOMPARE(X::getDATATAGFromXMLTagName(str("_1a2b")), str("1a2b"));
    QCOMPARE(X::getDATATAGFromXMLTagName(str("x")), str(""));
    QCOMPARE(X::getDATATAGFromXMLTagName(QString()), QString());
}

void tst_XMLPacketable::queries()
{
    const Xml xml(
        "<body><?packetable x?><packetable datatype='1'/><!--packetable-->"
        "<packetable datatype='5' n='1'><item datatype='1'><list><item datatype='05' n='2'/>"
        "</list></item><?item x?><item datatype='5' n='3'><_1 value='a'/><?_2 x?><_2/></item>"
        "</packetable><packetable datatype='5' n='4'/><ui datatype='5'/></body>");
    Nodes nodes { xml.document };
    QCOMPARE(X::getPacketableNodesOfType(xml.root, OTHER, nodes), 2);
    QCOMPARE(nodes.size(), size_t(3));
    QCOMPARE(X::getPacketableNodesOfType(xml.root, Type(7), nodes), 0);
    const QDomElement first = X::getFirstPacketableNodeOfType(xml.root, OTHER).toElement();
    QCOMPARE(first.attribute(str("n")), str("1"));
    QVERIFY(X::getFirstPacketableNodeOfType(xml.root, Type(7)).isNull());
    const QDomNode item = X::getPacketableItemNode(first);
    QCOMPARE(item.toElement().attribute(str("n")), str("2"));  // the first in document order
    QVERIFY(X::getPacketableItemNode(item.toElement()).isNull());
    QVERIFY(X::getPacketableItemNode(nodes.back().toElement()).isNull());
    QVERIFY(X::getPacketableItemTagNodes(nodes.back().toElement()).isEmpty());
    const Xml plain("<packetable datatype='5'><item datatype='5'><_1/>x<_2/></item></packetable>");
    QCOMPARE(X::getPacketableItemTagNodes(plain.root).count(), 3);
    QCOMPARE(X::getTagNode(xml.root, 1).nodeName(), str("_1"));
    QVERIFY(X::getTagNode(xml.root, 2).isElement());
    QVERIFY(X::getTagNode(xml.root, 3).isNull());
    QCOMPARE(X::getTagAttribute(xml.root, 1, str("value")), str("a"));
    QVERIFY(X::getTagAttribute(xml.root, 3, str("value")).isNull());

    Xml body("<body/>");
    const QDomNode created = X::getEmptyNodeOfType(body.root, Type(48));
    QCOMPARE(created, body.root.lastChild());
    QCOMPARE(
        canonical(body.root), str("<body ><packetable datatype=30><item datatype=30></></></>"));

    CONVERTSTRUCTELEMENTINFO table[] = { { 1, 7, 0, 1, {} }, { 2, 7, 0, 1, {} }, {},
        { 1, 8, 0, 1, {} } };
    QCOMPARE(X::getConvStructFromDataTag(table, 7), &table[0]);
    QVERIFY(!X::getConvStructFromDataTag(table, 8));
    QVERIFY(!X::getConvStructFromDataTag(nullptr, 7));

    const char *const rows[][3] = { { "1a 5", "1a", "5" }, { "1a ", "1a", "" }, { " 1a", "", "1a" },
        { "1 2 3", "1", "2 3" }, { "1\t2 3", "1\t2", "3" } };
    QStringRef tag;
    QStringRef value;
    for (const auto &row : rows) {
        QString line = str(row[0]);
        X::getTagValuePair(line, tag, value);
        QCOMPARE(tag.toString(), str(row[1]));
        QCOMPARE(value.toString(), str(row[2]));
        QString none = str("xyz");
        X::getTagValuePair(none, tag, value);
        QCOMPARE(tag.string(), &line);
        QCOMPARE(value.toString(), str(row[2]));
    }
}

void tst_XMLPacketable::builders_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const Build &build, const char *text, const char *expected) {
        QTest::addRow("%s -> %s", text, expected) << build << str(text) << str(expected);
    };
    const Build simple = X::createSimpleElement;
    row(simple, "a  b ", "<_1 value='a  b '/>");
    row(simple, "", "<_1/>");
    const Build binary = [](QDomElement &parent, const QString &name, const QString &text) {
        X::createBinaryDataElementV(parent, name, text);
        return parent.lastChildElement(name);
    };
    row(binary, "12 0f1e2d", "<_1 size='12'>0f1e2d</_1>");
    row(binary, "12", "<_1 size='12'>12</_1>");
    row(binary, "12 a b", "<_1 size='12'>a b</_1>");
    const Build numbers = X::createNumberArrayElement;
    row(numbers, "3 7 8 9", "<_1 size='3'><value>7</value><value>8</value><value>9</value></_1>");
    row(numbers, "02  x +1 ", "<_1 size='2'><value>x</value><value>+1</value></_1>");
    row(numbers, "0", "<_1 size='0'/>");
    for (const char *bad : { "3 7 8", "1 7 8", "ffffffff 7", "100000001 7", "x 1", "", "  " }) {
        row(numbers, bad, "<_1/>");
    }
    const Build strings = X::createStringArrayElement;
    row(strings, "2 x\ry", "<_1 size='2'><value>x</value><value>y</value></_1>");
    row(strings, "2 \ra b\r\r%1\r", "<_1 size='2'><value>a b</value><value>%1</value></_1>");
    row(strings, "2 x", "<_1 size='2'/>");
    row(strings, "0", "<_1 size='0'/>");
    row(strings, "1", "<_1 size='1'><value>1</value></_1>");
    row(strings, " 1 x", "<_1 size='1'><value>1 x</value></_1>");
    row(strings, "ffffffff x", "<_1 size='ffffffff'/>");
    row(strings, "x y", "<_1/>");
    row(strings, "", "<_1/>");
    const Build key = X::createTQKEYElement;
    row(key, "10  020", "<_1 key='10' hkey='020'/>");
    row(key, "10", "<_1/>");
    row(key, "10 20 30", "<_1/>");
}

void tst_XMLPacketable::builders()
{
    QFETCH(Build, build);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    Xml xml("<e/>");
    const QDomNode created = build(xml.root, str("_1"), text);
    QCOMPARE(created, xml.root.lastChild());
    QCOMPARE(canonical(created).remove(str("[3 #text:]")), canonical(Xml(expected).root));
    QDomElement null;
    build(xml.root, QString(), text);
    QVERIFY(build(null, str("_1"), text).isNull());
    QCOMPARE(xml.root.childNodes().count(), 1);
}

void tst_XMLPacketable::writtenText_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *content, const char *text) {
        QTest::newRow(name) << str(content) << str(text);
    };
    row("nothing", "", nullptr);
    row("type 6", "<item datatype='6'><_1 value='x'/><list size='1'/></item>", "SI 6\nTI 0\n");
    row("no table", "<item datatype='7fff'><_1 value='x'/><list size='1'/></item>",
        "SI 7fff\nTI 0\n");
    row("fields outside of items", "<_101 value='x'/><list size='1'><_101 value='x'/></list>",
        "SL 1\nTL 0\n");
    row("simple", "<item datatype='63'><_101/><_101 value=''/><_101 value='x %2'/></item>",
        "SI 63\n101 x %2\nTI 0\n");
    row("skipped names",
        "<item datatype='63'><value value='x'/><_zz value='x'/><_ff value='x'/><_ value='x'/>"
        "<_100000101 value='x'/><_-101 value='x'/><_a01 value='x'/><_1a01 value='x'/></item>",
        "SI 63\nTI 0\n");
    row("codes without a form", "<item datatype='5'><_20 value='x'/><_ff value='x'/></item>",
        "SI 5\nTI 0\n");
    row("name as it stands", "<item datatype='63'><x0E01/><_0x101 value='1'/></item>",
        "SI 63\n0E01  \n0x101 1\nTI 0\n");
    row("key", "<item datatype='063'><_e01 hkey='2' key='1f'/></item>", "SI 063\ne01 1f 2\nTI 0\n");
    row("numbers",
        "<item datatype='63'><_f01 size='9'><value>1</value><x>5</x><!--value-->"
        "<?value 7?><value>2<q>3</q></value></_f01><_f01/></item>",
        "SI 63\nf01 2 1 23\nf01 0 \nTI 0\n");
    row("strings",
        "<item datatype='63'><_1601><value>a %1 b</value><value>xy</value></_1601></item>",
        "SI 63\n1601 2 a %1 b\rxy\nTI 0\n");
    row("binary",
        "<item datatype='63'><_1701 size='3'>a<b>b</b><![CDATA[<c]]></_1701><_1701/></item>",
        "SI 63\n1701 3 ab<c\n1701  \nTI 0\n");
    row("blocks anywhere",
        "<?item 1?><!--item--><x><item datatype='5'/></x><list><item datatype='5'/><list size='2'/>"
        "</list>text<item/>",
        "SL \nSI 5\nTI 0\nSL 2\nTL 0\nTL 0\nSI \nTI 0\n");
    row("line feed", "<item datatype='63'><_101 value='a&#10;TI 0'/></item>",
        "SI 63\n101 a\nTI 0\nTI 0\n");
}

void tst_XMLPacketable::writtenText()
{
    QFETCH(QString, content);
    QFETCH(QString, text);
    const Xml xml(str("<packetable datatype='63'>") + content + str("</packetable>"));
    QCOMPARE(packetOf(xml.root), text);
    QCOMPARE(packetOf(xml.root).isNull(), content.isEmpty());
    const QDomElement item = xml.root.firstChildElement();  // its own text is what it contains
    if (item.attribute(str("datatype")) == str("63")) {
        QCOMPARE(packetOf(item), text.mid(6, text.size() - 11));
    }
}

void tst_XMLPacketable::writtenLines()
{
    const X item;
    const Xml xml("<e><_0A/><_1 value='%2 %1' size='2' key='%1' hkey='%2'>"
                  "<value>%1 %2</value><value>%3</value></_1></e>");
    const QDomElement bare = xml.root.firstChildElement();
    const QDomElement full = xml.root.lastChildElement();
    QVERIFY(item.toSimpleValuePacket(bare).isNull());
    QCOMPARE(item.toSimpleValuePacket(full), str("1 %2 %1\n"));
    QCOMPARE(item.toTQKEYValuePacket(bare), str("0A  \n"));
    QCOMPARE(item.toTQKEYValuePacket(full), str("1 %1 %2\n"));
    QCOMPARE(item.toNumberArrayValuePacket(bare), str("0A 0 \n"));
    QCOMPARE(item.toNumberArrayValuePacket(full), str("1 2 %1 %2 %3\n"));
    QCOMPARE(item.toStringArrayValuePacket(full), str("1 2 %1 %2\r%3\n"));
    const QString sixteen = str("<_1>") + str("<value>7</value>").repeated(16) + str("</_1>");
    QCOMPARE(item.toNumberArrayValuePacket(Xml(sixteen).root),
        str("1 10") + str(" 7").repeated(16) + str("\n"));
    QString out = str(">");
    item.appendSimpleValuePacket(out, bare);
    item.appendBinaryDataPacket(out, bare);
    item.appendSimpleValuePacket(out, full);
    item.appendBinaryDataPacket(out, full);
    QCOMPARE(out, str(">0A  \n1 %2 %1\n1 2 %1 %2%3\n"));
    QCOMPARE(item.toTQKEYValuePacket(QDomElement()), str("  \n"));
    QVERIFY(item.toPacket(QDomElement()).isNull());
}

void tst_XMLPacketable::readText_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("text");  // lines are parted by "|"
    QTest::addColumn<QString>("content");
    QTest::addColumn<unsigned int>("stoppedAt");
    const auto row = [](const char *name, const char *text, unsigned int stoppedAt,
                         const char *content, const char *parent = "<packetable/>") {
        QTest::newRow(name) << str(parent) << str(text) << str(content) << stoppedAt;
    };
    row("item", "SI 5|0001 abc|TI 0", 3, "<item datatype='5'><_1 value='abc'/></item>");
    row("no lines", "", 1, "");
    row("terminator of the root", "1 x|TL 0|SI 5|TI 0", 1, "");
    row("either terminator", "SI 5|SL 2|TI 0|1 x|TL 0|SL 3|TL 0", 7,
        "<item datatype='5'><list size='2'/><_1 value='x'/></item><list size='3'/>");
    row("fields in a list", "SL 1|1 x|SI 5|1 y|TI 0|1 z|TL 0", 7,
        "<list size='1'><item datatype='5'><_1 value='y'/></item></list>");
    row("fields of an item", "1 x|SI 5|TI 0|7fffffff y|TI 0|1 z", 4,
        "<_1 value='x'/><item datatype='5'/><_7fffffff value='y'/>", "<item datatype='5'/>");
    row("open at the end", "SI 5|SL 1|SI 5|1 x", 7,
        "<item datatype='5'><list size='1'><item datatype='5'><_1 "
        "value='x'/></item></list></item>");
    row("type 6", "SI 6|TI 0|SI 5|TI 0", 4, "<item datatype='6'/><item datatype='5'/>");
    row("type 6 with content", "SI 6|1 x|1 y|SI 5|TI 0|TI 0|SI 5", 5,
        "<item datatype='6'/><item datatype='5'/>");
    row("type 6 at the end", "SI 6", 2, "<item datatype='6'/>");
    row("unknown type", "SI 7fff|SI 5|1 x|TI 0|SI 5|TI 0", 3, "<item datatype='7fff'/>");
    row("unreadable type", "SI x y|skipped|SI ffffffff|TI 0|SI 100000005|TI 0", 6,
        "<item datatype='x y'/><item datatype='ffffffff'/><item datatype='100000005'/>");
    row("type 6 itself", "1 x|TI 0", 0, "", "<item datatype='6'/>");
    row("unknown type itself", "1 x|TI 0", 0, "", "<item datatype='7fff'/>");
    row("skipped tags", "SI 5|x 1|-1 1|100000001 1|20 1|ff 1|2 1|80000001 1|0x1 1|+1 2|TI 0", 11,
        "<item datatype='5'><_1 value='1'/><_1 value='2'/></item>");
    row("white space", "SI 5|\t 1  a  b \r|\xc2\xa0\x31 c\xe3\x80\x80|TI 0", 4,
        "<item datatype='5'><_1 value=' a  b'/><_1 value='c'/></item>");
    row("no value", "SI 5|1 |1|TI 0", 4, "<item datatype='5'/>");
    row("positions of the line before", "SI 5|1 abc|1|1_xyz|1xabcdef|TI|TI 0|SI 5", 9,
        "<item datatype='5'><_1 value='abc'/><_1/><_1 value='xyz'/><_1 value='abc'/></item>"
        "<item datatype='5'/>");
    row("positions are each level's", "SI 5|1 abc|SL 12|01xyz|TL 0|01xyz|TI 0|7", 8,
        "<item datatype='5'><_1 value='abc'/><list size='12'/><_1 value='yz'/></item>");
    row("terminator by position", "SI 5|01 abc|TI|1 x", 4,
        "<item datatype='5'><_1 value='abc'/></item>");
}

void tst_XMLPacketable::readText()
{
    QFETCH(QString, parent);
    QFETCH(QString, text);
    QFETCH(QString, content);
    QFETCH(unsigned int, stoppedAt);
    QStringList lines = text.split(QLatin1Char('|'));
    const QStringList before = lines;
    Xml xml(parent);
    X item;
    QCOMPARE(item.toDom(xml.root, lines, 0), stoppedAt);
    QCOMPARE(lines, before);
    const QString start = canonical(Xml(parent).root).chopped(3);
    QCOMPARE(canonical(xml.root),
        start + canonical(Xml(str("<x>") + content + str("</x>")).root).mid(4));
    lines.prepend(str("TI 0"));
    Xml again(parent);
    QCOMPARE(item.toDom(again.root, lines, 1), stoppedAt + 1);
    QCOMPARE(canonical(again.root), canonical(xml.root));
    const auto behind = unsigned(lines.size());
    for (const unsigned int end : { behind, behind + 1, 0xffffffffU }) {
        QCOMPARE(item.toDom(again.root, lines, end), end);
    }
    QCOMPARE(canonical(again.root), canonical(xml.root));
}

// One text fits every form, so that each code of each width reads and writes it as its own.
void tst_XMLPacketable::shapes()
{
    QString text = str("SI 63\n");
    QString expected = text;
    for (unsigned int code = 1; code < 32; ++code) {
        for (const unsigned int width : { 1U, 2U, 4U, 8U }) {
            const QString line = QString::number(256 * code + width, 16) + str(" 1 2\n");
            text += line;
            expected += builderOf(code) ? line : QString();
        }
    }
    QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    Xml read("<packetable/>");
    Xml model("<packetable/>");
    QCOMPARE(X().toDom(read.root, lines, 0), modelToDom(model.root, lines, 0));
    QCOMPARE(canonical(read.root), canonical(model.root));
    QCOMPARE(packetOf(read.root), expected + str("TI 0\n"));
}

void tst_XMLPacketable::values_data()
{
    QTest::addColumn<QString>("value");
    for (const char *value : { "%1", "%2 %1 %99", "a  b", "\"'<>&amp;]]>", "a\tb", "SI 5", "TI 0",
             "\xc3\xa9\xc3\xa0 \xf0\x9f\x8e\x89", "a\rb", "\xef\xbb\xbfx\xef\xbb\xbf" }) {
        QTest::newRow(value) << str(value);
    }
    QTest::newRow("1 MiB") << QString(1 << 20, QChar(0x4e2d));
}

void tst_XMLPacketable::values()
{
    QFETCH(QString, value);
    X item;
    item.setType(SPECIMEN);
    item.setName(value);
    item.setDBkey({ 1, 2 });
    QDomElement e = item.getNodeConst();
    QDomElement fields = X::createItemElement(e, str("63"));
    X::createSimpleElementV(fields, str("_101"), value);
    X::createStringArrayElementV(fields, str("_1601"),
        QStringLiteral("2 x") + QString(value).remove(QLatin1Char('\r')) + str("\r") + str("%1"));
    const std::unique_ptr<TQPacketable> copy(item.getData());
    QVERIFY(copy);
    X back;
    back.setData(*copy);
    QCOMPARE(canonical(back.getNodeConst()), canonical(e));
    const QDomElement parsed = Xml(item.toString()).root;
    if (!value.contains(QLatin1Char('\t')) && !value.contains(QLatin1Char('\r'))) {
        QCOMPARE(canonical(parsed), canonical(e));  // XML itself turns these into blanks
    }
}

// Random lines, read from bytes, from a list and by the model, give equal elements.
void tst_XMLPacketable::agreesWithModel()
{
    const QByteArrayList words { "SI", "SI 63\n", "SI 63\n", "SI 5\n", "SL 1\n", "SI 6\n",
        "SI 7fff\n", "SI 063\n", "TI 0\n", "TI 0\n", "TL 0\n", "TI", "SL", "101", "0101", "0x101",
        "+101", "-101", "e01", "f01", "1001", "1004", "1601", "1701", "D02", "1404", "20", "1", "2",
        "02", "0x2", "x", "10000000101", " ", " ", " ", " ", "  ", "\n", "\n", "\n", "\r", "\t",
        "\v", "\xc2\xa0", "\xe3\x80\x80", "\xe2\x80\xa8", "\xc2\x85", "\xef\xbb\xbf", "\xff",
        "\xc3", "\xed\xa0\x80", "\xf0\x9f\x8e\x89", QByteArray(1, '\0'), "abc", "%1", "ffffffff",
        "\xef\xbc\x91" };
    std::mt19937 engine(7);
    const auto random = [&engine](int limit) { return int(engine() % unsigned(limit)); };
    qsizetype items = 0;
    for (int run = 0; run < 4000; ++run) {
        QByteArray bytes = run % 4 ? "SI 63\n" : "";
        for (int size = random(40); size > 0; --size) {
            bytes += words.at(random(int(words.size())));
        }
        const QString text = QString::fromUtf8(bytes.constData(), int(bytes.size()));  // NULs too
        QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        X fromBytes;
        fromBytes.setData(TextItem(SPECIMEN, bytes));
        X fromLines;
        X model;
        for (XMLPacketable *item : { &fromLines, &model }) {
            item->setType(SPECIMEN);
            item->setDBkey(TQKEY_CC::getNullKey());
        }
        QDomElement e = fromLines.getNodeConst();
        QDomElement m = model.getNodeConst();
        const unsigned int stoppedAt = fromLines.toDom(e, lines, 0);
        if (stoppedAt != modelToDom(m, lines, 0) || canonical(e) != canonical(m) ||
            canonical(fromBytes.getNodeConst()) != canonical(m)) {
            QFAIL(bytes.toPercentEncoding(" \n").constData());
        }
        items += packetOf(m).count(str("SI"));
    }
    QVERIFY2(items > 4000, "too little was read");
}

void tst_XMLPacketable::nesting_data()
{
    QTest::addColumn<int>("levels");
    for (const int levels : { 1, 2, 255, 256, 257, 258, 1000 }) {
        QTest::addRow("%d", levels) << levels;
    }
}

// 256 levels are followed either way; what is deeper is left out, and what follows it is not.
void tst_XMLPacketable::nesting()
{
    QFETCH(int, levels);
    const QString kept = QString::fromLatin1(nested(qMin(levels, 256)));
    const Xml tree(nestedXml(qMin(levels, 300)));  // all that an object keeps is deeper
    X item;
    QString fromText;
    QString fromTree;
    bool isBuilt = false;
    bool isSame = false;
    const SmallStackThread thread([&] {
        item.setData(TextItem(SPECIMEN, nested(levels)));
        fromText = packetOf(item.getNodeConst());
        fromTree = packetOf(tree.root);
        isBuilt = item.getDataConst() != nullptr;
        XMLPacket packet;
        packet.append(item);
        XMLPacket copy;
        copy = packet;
        X second;
        second.setData(item.getNode());
        isSame = copy == packet && second.toString() == item.toString();
    });
    QCOMPARE(fromText, kept);
    QCOMPARE(fromTree, kept);
    QVERIFY(isSame);
    QCOMPARE(isBuilt, levels % 2 == 1 && levels < 257);  // a list of one that is empty is refused
    const QString expected = nestedXml(qMin(levels, 256));
    QCOMPARE(canonical(item.getNodeConst()), canonical(Xml(expected).root));
}

void tst_XMLPacketable::deepTrees()
{
    QDomDocument document;
    QDomElement tree = document.createElement(str("packetable"));
    X::setType(tree, OTHER);
    tree.appendChild(deepTree(document, str("item"), 30000));
    X::createItemElementV(tree, str("5"));
    X item;
    item.setData(tree);
    X second;
    second.setNode(item.getNode());
    XMLPacket packet;
    XMLAction action;
    const QDomElement copies[] = { item.getNodeConst(), second.getNodeConst(), packet.append(item),
        action.append(second), Xml(item.toString()).root };
    for (const QDomElement &copy : copies) {
        QCOMPARE(copy.lastChildElement().attribute(str("datatype")), str("5"));
        QVERIFY(packetOf(copy).endsWith(str("SI 5\nTI 0\n")));
    }
    QVERIFY(packetOf(tree).endsWith(str("SI 5\nTI 0\n")));
    QCOMPARE(X::getPacketableItemNode(tree), tree.lastChild());
    packet.appendV(item);
    XMLPacket copy;
    copy = packet;
    QVERIFY(!copy.isEmpty());
}

void tst_XMLPacketable::largeInput_data()
{
    QTest::addColumn<QString>("text");  // the part between the bars is repeated, @ tells how often
    QTest::addColumn<int>("count");
    QTest::newRow("opened items") << str("|SI 30\n|") << 1000000;
    QTest::newRow("numbers") << str("SI 63\nf01 @| 7|\nTI 0\n") << 1000000;
    QTest::newRow("strings") << str("SI 63\n1601 @ |x\r|\nTI 0\n") << 200000;
    QTest::newRow("one line") << str("SI 63\n101 |5000 characters|\nTI 0\n") << 3400000;
    QTest::newRow("fields") << str("SI 63\n|101 x\n|TI 0\n") << 200000;
    QTest::newRow("items of a list") << str("SI 63\nSL @\n|SI 5\nTI 0\n|TL 0\nTI 0\n") << 200000;
}

// Ten times the text takes some ten times as long: never the hundred times of a slow way.
void tst_XMLPacketable::largeInput()
{
    QFETCH(QString, text);
    QFETCH(int, count);
    const QStringList parts = text.split(QLatin1Char('|'));
    const bool isOpen = parts.first().isEmpty();
    const auto convert = [&](int times) {
        const QString whole = QString(parts.at(0)).replace(str("@"), QString::number(times, 16)) +
            parts.at(1).repeated(times) + parts.at(2);
        X item;
        item.setData(TextItem(SPECIMEN, whole.toUtf8()));
        const QString packet = item.toPacket(item.getNodeConst());
        QVERIFY(isOpen || packet.size() + 1 >= whole.size());
        QStringList lines = whole.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        X other;
        QDomElement e = other.getNodeConst();
        QCOMPARE(other.toDom(e, lines, 0), unsigned(lines.size() + (isOpen ? times : 0)));
        QCOMPARE(other.toPacket(e), packet);
    };
    const double part = seconds([&] { convert(count / 10); });
    const double all = seconds([&] { convert(count); });
    QVERIFY2(all < 40 * qMax(part, 0.05), qPrintable(QString::number(all / part)));
}

void tst_XMLPacketable::cache()
{
    X item;
    QVERIFY(!item.getDataConst() && !item.getData());  // type 0
    item.setNode(Xml("<packetable datatype='63' name='\xc3\xa4%1' key='1' hkey='2'>"
                     "<item datatype='63'><_101 value='x'/></item></packetable>")
                     .root);
    TQPacketable *cached = item.getDataConst();
    QVERIFY(cached);
    QCOMPARE(written(cached), str("SI 63\n101 x\nTI 0\n"));
    QCOMPARE(cached->name, "\xc3\xa4%1");
    QVERIFY(cached->dbkey.key == 1 && cached->dbkey.hkey == 2 && cached->datatype == SPECIMEN);
    item.setName(str("other"));
    item.setType(OTHER);
    QCOMPARE(item.getDataConst(), cached);
    QCOMPARE(cached->name, "\xc3\xa4%1");
    item.setType(SPECIMEN);
    const std::unique_ptr<TQPacketable> one(item.getData());
    const std::unique_ptr<TQPacketable> two(item.getData());
    QVERIFY(one && two && one != two && one.get() != cached);
    QCOMPARE(written(one.get()), written(cached));
    item.setData(*cached);  // its own: read before it goes
    QCOMPARE(item.getNodeConst().childNodes().count(), 2);
    QCOMPARE(item.getName(), str("\xc3\xa4%1"));
    item.setData(QDomNode());
    QVERIFY(!item.getDataConst() && item.getNodeConst().isNull());

    const Xml refused("<packetable datatype='63'><item datatype='5'/></packetable>");
    item.setData(refused.root);
    QVERIFY(!item.getDataConst() && !item.getData());
    QDomElement e = item.getNodeConst();
    e.firstChildElement().setAttribute(str("datatype"), str("63"));
    QVERIFY(item.getDataConst());  // a failed build is tried again
    QCOMPARE(item.getDataConst()->name, "");
    QVERIFY(!TQKEY_CC::isValid(item.getDataConst()->dbkey));
}

void tst_XMLPacketable::overriddenAttributes()
{
    struct Item : X
    {
        QString getName() const override { return str("own"); }
        Type getType() const override { return SPECIMEN; }
        TQKEY_ELEMENT getDBkey() const override { return { 3, 4 }; }
        void setName(const QString &name) override { X::setName(name + name); }
    } item;
    item.setData(Xml("<packetable datatype='5'><item datatype='63'/></packetable>").root);
    QCOMPARE(item.getDataConst()->name, "own");
    QCOMPARE(item.getDataConst()->dbkey.hkey, 4U);
    TextItem source(SPECIMEN, "");
    source.TQPacketable::setName("x");
    item.X::setData(source);
    QCOMPARE(X::getName(item.getNodeConst()), str("xx"));
}

void tst_XMLPacketable::setData()
{
    TextItem source(SPECIMEN, "SI 63\n101 x\nTI 0\n");
    source.dbkey = { 1, 2 };
    source.TQPacketable::setName("n\xc3\xa4");
    X item;
    item.setData(source);
    const QString expected =
        str("<packetable datatype='63' key='1' hkey='2' name='nä'>%1</packetable>");
    const QString one = str("<item datatype='63'><_101 value='x'/></item>");
    QCOMPARE(canonical(item.getNodeConst()), canonical(Xml(expected.arg(one)).root));
    source.TQPacketable::setName(nullptr);
    item.setData(source);
    QCOMPARE(canonical(item.getNodeConst()), canonical(Xml(expected.arg(one + one)).root));

    TextItem output(PACKETDATATYPE_OUTPUT, QByteArray());
    char name[] = "Proofer";
    output.subrecord = new TQSUBRECORD { nullptr };
    X named;
    named.setData(output);
    QCOMPARE(canonical(named.getNodeConst()), str("<packetable datatype=8;hkey=0;key=0></>"));
    output.subrecord->name = name;
    named.setData(output);
    QCOMPARE(named.getName(), str("Proofer"));
    output.datatype = SPECIMEN;
    X unnamed;
    unnamed.setData(output);
    QVERIFY(unnamed.getName().isNull());
    delete std::exchange(output.subrecord, nullptr);
}

void tst_XMLPacketable::nullElement()
{
    X item;
    item.setData(QDomText());
    item.setName(str("x"));
    item.setDBkey({ 1, 1 });
    item.setCurrent(true);
    item.clearReplacement();
    item.setData(TextItem(SPECIMEN, "SI 63\n101 x\nTI 0\n"));
    QVERIFY(item.getNodeConst().isNull() && item.getNode().isNull() && item.toString().isNull());
    QVERIFY(item.getName().isNull() && !item.isCurrent() && !item.getDataConst());
    QDomElement e;
    QStringList lines { str("SI 63"), str("SL 1"), str("101 x") };
    QCOMPARE(item.toDom(e, lines, 0), 5U);
    QVERIFY(X::getEmptyNodeOfType(e, OTHER).isNull());
    QVERIFY(X::createListElement(e, str("1")).isNull());
    QVERIFY(X::getPacketableItemTagNodes(e).isEmpty());
    XMLPacket packet;
    QVERIFY(packet.append(item).isNull());
    packet.appendV(item);
    XMLAction action;
    QVERIFY(action.append(item).isNull() && packet.isEmpty());
}

void tst_XMLPacketable::lifetime_data()
{
    QTest::addColumn<QString>("owner");
    QTest::addColumn<bool>("diesFirst");
    QTest::addColumn<Use>("use");
    const std::pair<const char *, Use> uses[] = {
        { "read", [](XMLPacketable &item) { QVERIFY(!item.getNode().isNull()); } },
        { "write",
            [](XMLPacketable &item) {
                QDomElement e = item.getNodeConst();
                X::createItemElementV(e, str("6"));
                item.setName(str("new"));
            } },
        { "append",
            [](XMLPacketable &item) {
                QVERIFY(!XMLPacket().append(item).isNull() && !XMLAction().append(item).isNull());
            } },
        { "move", [](XMLPacketable &item) { XMLPacket().appendV(item); } },
        { "clone",
            [](XMLPacketable &item) {
                X clones[2];
                clones[0].setData(item.getNode());
                clones[1].setNode(item.getNodeConst());
                QCOMPARE(clones[0].toString(), clones[1].toString());
            } },
        { "convert",
            [](XMLPacketable &item) {
                QVERIFY(item.getDataConst());
                item.setData(TextItem(OTHER, "SI 5\n1 y\nTI 0\n"));
            } },
    };
    for (const char *owner : { "object", "packet", "document", "temporary" }) {
        for (const bool first : { true, false }) {
            for (const auto &use : uses) {
                QTest::addRow("%s dies %s, %s", owner, first ? "first" : "last", use.first)
                    << str(owner) << first << use.second;
            }
        }
    }
}

// An item whose element lies in a document that another owns, and that owner, die in either order.
void tst_XMLPacketable::lifetime()
{
    QFETCH(QString, owner);
    QFETCH(bool, diesFirst);
    QFETCH(Use, use);
    const QString text =
        str("<packetable datatype='5'><item datatype='5'><_1 value='x'/></item></packetable>");
    auto object = std::make_unique<XMLPacketable>();
    auto packet = std::make_unique<XMLPacket>();
    auto document = std::make_unique<Xml>(text);
    auto item = std::make_unique<XMLPacketable>();
    object->setNode(document->root);
    item->setData(owner == str("object") ? object->getNodeConst()
            : owner == str("temporary")  ? Xml(text).root
                                         : document->root);
    if (owner == str("packet")) {
        packet->appendV(*item);
    }
    const auto endOwners = [&] {
        object.reset();
        packet.reset();
        document.reset();
    };
    if (diesFirst) {
        endOwners();
    }
    use(*item);
    QVERIFY(packetOf(item->getNodeConst()).startsWith(str("SI 5\n1 x\nTI 0\n")));
    QVERIFY(item->getDataConst());
    item.reset();
    if (!diesFirst) {
        XMLPacket copy;
        copy = *packet;
        QVERIFY(copy == *packet);
        QCOMPARE(canonical(object->getNode()), canonical(document->root));
    }
    endOwners();
}

QTEST_GUILESS_MAIN(tst_XMLPacketable)
#include "tst_xmlpacketable.moc"
