#include "xmlpacketable.h"

#include "tqpacketable.h"
#include "tqregistry.h"
#include "util.h"
#include "xmlaction.h"

#include <cstring>
#include <ctime>
#include <memory>

#include <dlfcn.h>
#include <malloc.h>

using X = XMLPacketable;
using Type = PACKETDATATYPES;

namespace {

// The specimen has a field of every element type code: its tag is 256 times the code, plus the
// width. An output has tags of one digit.
constexpr Type SPECIMEN = PACKETDATATYPE_SPECIMEN;
constexpr Type OUTPUT = PACKETDATATYPE_OUTPUT;

// A server item that writes a given text.
struct TextItem : TQPacketable
{
    TextItem(Type type, const QByteArray &content) : TQPacketable(type), text(content) {}
    char *toPacket(unsigned int &length) const override
    {
        length = unsigned(text.size());
        return static_cast<char *>(std::memcpy(std::malloc(length + 1), text.constData(), length));
    }
    const QByteArray text;
};

QString packetOf(const QDomElement &e) { return X().toPacket(e); }
QString lines(const char *text) { return str(text).replace(QLatin1Char('|'), QLatin1Char('\n')); }

// A field that says "1 a\rb" as simple value, key, numbers, strings and bytes; and which of these
// each element type code is. The width of a field does not change it.
constexpr const char *SHAPES[] = { "<_1 value=1 a\rb></>", "<_1 hkey=a\rb;key=1></>",
    "<_1 size=1><value >[3 #text:a\rb]</></>", "<_1 size=1></>", "<_1 size=1>[3 #text:a\rb]</>" };
constexpr char SHAPE_OF_CODE[] = "-000000000-000122222003400-20022";

// A text and what comes of it; "|" stands between lines of packet text.
struct Row
{
    const char *name;
    const char *result = nullptr;
    unsigned int end = 0;
    const char *parent = "<packetable/>";
};

constexpr Row TEXTS[] = {
    // Packet text; what is read, written again; where the reading ends.
    { "", "", 1 },
    { "1 x|TL 0|SI 8|TI 0", "", 1 },
    { "SI 8|SL 2|TI 0|1 x|TL 0|SL 3|TL 0", "SI 8|SL 2|TL 0|1 x|TI 0|SL 3|TL 0|", 7 },
    { "SL 1|1 x|SI 8|0001 y|TI 0|1 z|TL 0", "SL 1|SI 8|1 y|TI 0|TL 0|", 7 },
    { "SI 8|SL 1|SI 8|1 x", "SI 8|SL 1|SI 8|1 x|TI 0|TL 0|TI 0|", 7 },
    { "1 x|SI 8|TI 0|9 y|TI 0|1 z", "1 x|SI 8|TI 0|9 y|", 4, "<item datatype='8'/>" },
    { "1 x|TI 0", "", 0, "<item datatype='6'/>" },
    { "SI 6|1 x|1 y|SI 8|TI 0|SI 6", "SI 6|TI 0|SI 8|TI 0|SI 6|TI 0|", 7 },
    { "SI 7fff|SI 8|1 x|TI 0|SI 8|TI 0", "SI 7fff|TI 0|", 3 },
    { "SI x y|skipped|SI ffffffff|TI 0|SI 100000008|TI 0",
        "SI x y|TI 0|SI ffffffff|TI 0|SI 100000008|TI 0|", 6 },
    { "SI 8|AI 1|x 1|-1 1|100000001 1|7fffffff 1|80000000 1|ffffffff 1|0x1 1|+1 2|\t 1  a  b \r",
        "SI 8|1 1|1 2|1  a  b|TI 0|", 12 },
    { "SI 8|01xyz|\xc2\xa0\x31 c\xe3\x80\x80|1 |1|TI 0", "SI 8|1 c|TI 0|", 6 },
    // Lines without a blank are cut where the one before was, level by level.
    { "SI 8|1 abc|1|1_xyz|1xabcdef|TI|TI 0|SI 8", "SI 8|1 abc|1 xyz|1 abc|TI 0|SI 8|TI 0|", 9 },
    { "SI 8|1 abc|SL 12|01xyz|TL 0|01xyz|TI 0|7", "SI 8|1 abc|SL 12|TL 0|1 yz|TI 0|", 8 },
    { "SI 8|01 abc|TI|1 x", "SI 8|1 abc|TI 0|", 4 },
    { "SI 8|TI|1 x|TI 0", "SI 8|1 x|TI 0|", 4 },
    // Fields of every shape.
    { "SI 63|101 a  b %2 %1|e01 0000000010  020|e01 10|e01 10 20 30|1701 12 a b|1701 12|TI 0",
        "SI 63|101 a  b %2 %1|e01 0000000010 020|e01  |e01  |1701 12 a b|1701 12 12|TI 0|", 8 },
    { "SI 63|f01 2 %1 %2|f01 02  x +1|f01 0|f01 x 1|f01 1 7 8|f01 ffffffff 7|f01 100000001 7",
        "SI 63|f01 2 %1 %2|f01 2 x +1|f01 0 |f01 0 |f01 0 |f01 0 |f01 0 |TI 0|", 9 },
    { "SI 63|1601 2 \ra b\r\r%1|1601 1|1601  1 x|1601 2 x|1601 x y|1601 ffffffff x",
        "SI 63|1601 2 a b\r%1|1601 1 1|1601 1 1 x|1601 0 |1601 0 |1601 0 |TI 0|", 8 },
    // What an element holds, and its packet text.
    { "<item datatype='6'><_1 value='x'/><list size='1'/></item><_101 value='x'/>"
      "<item datatype='7fff'><_1 value='x'/><list size='1'/></item><list><_101 value='x'/></list>",
        "SI 6|TI 0|SI 7fff|TI 0|SL |TL 0|" },
    { "<item datatype='063'><_101/><_101 value=''/><_0E01/><value value='x'/><_zz value='x'/>"
      "<_ff value='x'/><_ value='x'/><_100000101 value='x'/><_-101 value='x'/><_a01 value='x'/>"
      "<_1a01 value='x'/></item><item datatype='8'><_20 value='x'/><x9 value='y'/></item>",
        "SI 063|0E01  |TI 0|SI 8|9 y|TI 0|" },
    { "<item datatype='63'><?_101 x?><!--_101--><_101 value='x'>t<_101 value='y'/><!--c--></_101>"
      "<_e01 hkey='2' key='1'><?x y?><item datatype='8'/></_e01></item>",
        "SI 63|101 x|e01 1 2|TI 0|" },
    { "<item datatype='63'><_f01 size='9'><value>1</value><x>5</x><!--value--><![CDATA[6]]>"
      "<?value 7?><value>2<q>3</q><!--4--><![CDATA[5]]></value></_f01></item>",
        "SI 63|f01 2 1 235|TI 0|" },
    { "<item datatype='63'><_1601>z<value>a %1 b</value><?value 7?><value/></_1601>"
      "<_1701 size='3'>a<b>b</b><?x y?><![CDATA[<c]]></_1701><_1701/></item>",
        "SI 63|1601 2 a %1 b\r|1701 3 ab<c|1701  |TI 0|" },
    { "<?item 1?><!--item--><x><item datatype='8'/></x><list><item datatype='8'/><list size='2'/>"
      "</list>text<item/><item datatype='63'><_101 value='a&#10;TI 0'/></item>",
        "SL |SI 8|TI 0|SL 2|TL 0|TL 0|SI |TI 0|SI 63|101 a|TI 0|TI 0|" },
};

// Text of which the part between "~" is repeated as often as the end and "@" say.
constexpr Row LARGE[] = { { "~SI 30|~~1000000" }, { "SI 63|f01 @~ 7~|TI 0|~1000000" },
    { "SI 63|1601 @ ~x\r~|TI 0|~200000" }, { "SI 63|101 ~5000 characters~|TI 0|~3400000" },
    { "SI 63|~101 x|~TI 0|~200000" }, { "SI 63|SL @|~SI 5|TI 0|~TL 0|TI 0|~200000" } };

// Blocks within one another, items and lists in turn, with a field behind each inner block.
QByteArray nested(int levels)
{
    const QByteArray list = "SL 1\n" + (levels > 2 ? nested(levels - 2) : QByteArray()) + "TL 0\n";
    return "SI 63\n" + (levels > 1 ? list : QByteArray()) + "101 after\nTI 0\n";
}

// The most memory that the process had since the last call, in bytes.
qint64 takePeak()
{
    QFile status(str("/proc/self/status"));
    QFile reset(str("/proc/self/clear_refs"));
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    malloc_trim(0);
    const bool isReset = reset.open(QIODevice::WriteOnly) && reset.write("5") == 1;
    const auto peak = text.mid(text.indexOf("VmHWM:") + 6).simplified().split(' ').first();
    return isReset ? peak.toLongLong() * 1024 : 0;
}

}  // namespace

class tst_XMLPacketable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void attributes();
    void queries();
    void shapes();
    void texts_data() { addRows(TEXTS); }
    void texts();
    void values();
    void nesting();
    void deepTrees();
    void largeText_data() { addRows(LARGE); }
    void largeText();
    void serverItems();
    void lifetime();
    void subrecordsNameOutputsAlone();
    void aByteOrderMarkStartsNoLine();
    void valuesCountByTagName();
    void referencesAreCompleteHere();
};

void tst_XMLPacketable::attributes()
{
    X item;
    QVERIFY(item.getName().isNull());
    QVERIFY(!item.isCurrent());
    QVERIFY(item.getType() == 0);
    item.setDBkey({ 15, 16 });
    item.setType(Type(0xffffffff));
    item.setName(str("%1"));
    item.setCurrent(true);
    item.setReplacement(true);
    QCOMPARE(canonical(item.getNodeConst()),
        str("<packetable "
            "datatype=ffffffff;hkey=10;is_current=1;is_replacement=1;key=f;name=%1></>"));
    QVERIFY(item.getDBkey().key == 15);
    QVERIFY(item.getDBkey().hkey == 16);
    QVERIFY(item.isCurrent());
    QVERIFY(unsigned(item.getType()) == 0xffffffff);
    QVERIFY(item.isReplacement());
    item.clearReplacement();
    QVERIFY(!item.isReplacement());
    QVERIFY(item.getName() == str("%1"));
    item.setNode(Xml("<x datatype='100000000' key='x' hkey='-1' is_current='true'/>").root);
    QVERIFY(item.getType() == 0);
    QVERIFY(!item.isCurrent());
    QVERIFY(!TQKEY_CC::isValid(item.getDBkey()));
}

void tst_XMLPacketable::queries()
{
    Xml xml("<body><?packetable x?><packetable datatype='1'/><!--packetable-->"
            "<packetable datatype='8' n='1'><item datatype='1'><list><item datatype='08' n='2'/>"
            "</list></item><?item x?><item datatype='8'><_1 value='a'/>x<?_2 x?><_2/></item>"
            "</packetable><packetable datatype='8' n='4'/><ui datatype='8'/></body>");
    std::list<QDomNode> nodes { xml.document };
    QVERIFY(X::getPacketableNodesOfType(xml.root, OUTPUT, nodes) == 2);
    QVERIFY(nodes.size() == 3);
    const QDomElement first = X::getFirstPacketableNodeOfType(xml.root, OUTPUT).toElement();
    QCOMPARE(first.attribute(str("n")), str("1"));
    QVERIFY(X::getFirstPacketableNodeOfType(xml.root, Type(7)).isNull());
    QDomElement item = X::getPacketableItemNode(first).toElement();
    QCOMPARE(item.attribute(str("n")), str("2"));  // the first in document order
    QVERIFY(X::getPacketableItemNode(item).isNull());
    QVERIFY(X::getPacketableItemTagNodes(nodes.back().toElement()).isEmpty());
    X::setType(item, Type(1));
    QCOMPARE(X::getPacketableItemTagNodes(first).count(), 4);
    QVERIFY(X::getTagNode(xml.root, 2).isElement());
    QVERIFY(X::getTagNode(xml.root, 3).isNull());
    QCOMPARE(X::getTagAttribute(xml.root, 1, X::VALUE), str("a"));
    QCOMPARE(canonical(X::getEmptyNodeOfType(item, Type(48))),
        str("<packetable datatype=30><item datatype=30></></>"));
    CONVERTSTRUCTELEMENTINFO table[] = { { 1, 7, 0, 1, {} }, {}, { 1, 8, 0, 1, {} } };
    QCOMPARE(X::getConvStructFromDataTag(table, 7), &table[0]);
    QVERIFY(!X::getConvStructFromDataTag(table, 8));
    QVERIFY(!X::getConvStructFromDataTag(nullptr, 7));
    QCOMPARE(X::getXMLTagNameFromDATATAG(INT_MIN), str("_-80000000"));
    QCOMPARE(X::getDATATAGFromXMLTagName(str("_1a2b")), str("1a2b"));
    QCOMPARE(X::getDATATAGFromXMLTagName(str("x9")), str("9"));
    QString texts[] = { str("1\t2 3 4 "), str("xyz") };  // the second changes nothing
    QStringRef parts[2];
    for (QString &text : texts) {
        X::getTagValuePair(text, parts[0], parts[1]);
        QVERIFY(parts[0].toString() == str("1\t2"));
        QVERIFY(parts[1].toString() == str("3 4 "));
    }
}

// The reader, the public builders and the public writers.
void tst_XMLPacketable::shapes()
{
    for (int field = 0; field < 32 * 4; ++field) {
        const QString tag = QString::number(256 * (field / 4) + (1 << field % 4), 16);
        QStringList list { str("SI 63"), tag + str(" 1 a\rb"), str("TI 0") };
        Xml xml("<packetable/>");
        X().toDom(xml.root, list, 0);
        const QDomNode read = xml.root.firstChild().firstChild();
        const int shape = SHAPE_OF_CODE[field / 4] - '0';
        const QString text = canonical(read).replace(tag, str("1"));
        QVERIFY2(shape < 0 ? read.isNull() : text == str(SHAPES[shape]), qPrintable(tag));
    }
    Xml xml("<e/>");
    QDomElement null;
    int shape = 0;
    for (const auto create : { X::createSimpleElement, X::createTQKEYElement,
             X::createNumberArrayElement, X::createStringArrayElement }) {
        const QDomNode created = create(xml.root, str("_1"), str("1 a\rb"));
        QVERIFY(created == xml.root.lastChild());
        QVERIFY(create(null, str("_1"), str("1")).isNull());
        QCOMPARE(canonical(created), str(SHAPES[shape++]));
    }
    shape = 0;
    for (const auto create :
        { X::createSimpleElementV, X::createTQKEYElementV, X::createNumberArrayElementV,
            X::createStringArrayElementV, X::createBinaryDataElementV }) {
        create(xml.root, str("_1"), str("1 a\rb"));
        QCOMPARE(canonical(xml.root.lastChild()), str(SHAPES[shape++]));
    }
    X::createListElementV(xml.root, str("1"));
    QCOMPARE(canonical(xml.root.lastChild()), canonical(X::createListElement(xml.root, str("1"))));
    QVERIFY(!X::createNumberArrayElement(xml.root, str("_1"), str("2 7")).hasAttributes());
    QVERIFY(!X::createStringArrayElement(xml.root, str("_1"), QString()).hasAttributes());
    const X item;
    const Xml e("<_1 value='%2 %1' size='2' key='%1' hkey='%2'><value>%1</value><value/></_1>");
    QString text = item.toTQKEYValuePacket(e.root) + item.toSimpleValuePacket(e.root) +
        item.toNumberArrayValuePacket(e.root) + item.toStringArrayValuePacket(e.root);
    item.appendSimpleValuePacket(text, e.root);
    item.appendBinaryDataPacket(text, e.root);
    QCOMPARE(text, lines("1 %1 %2|1 %2 %1|1 2 %1 |1 2 %1\r|1 %2 %1|1 2 %1|"));
}

void tst_XMLPacketable::texts()
{
    const Row &row = currentRow<Row>();
    const bool isXml = row.name[0] == '<';
    Xml xml(isXml ? str("<packetable>%1</packetable>").arg(str(row.name)) : str(row.parent));
    QStringList list = (str("TI 0|") + str(row.name)).split(QLatin1Char('|'));
    if (!isXml) {
        QCOMPARE(X().toDom(xml.root, list, 1), row.end + 1);
        QCOMPARE(X().toDom(xml.root, list, unsigned(list.size())), unsigned(list.size()));
        QCOMPARE(X().toDom(xml.root, list, 0xffffffffU), 0xffffffffU);
    }
    QCOMPARE(packetOf(xml.root), lines(row.result));
}

// Whatever a value is, text to element, element to server item and that to an element keep it.
void tst_XMLPacketable::values()
{
    for (const QByteArray &bytes : { QByteArray("%1 %2 %99"), QByteArray("\"'<>&amp;]]>  x"),
             QByteArray("a\tb"), QByteArray("TI 0"), QByteArray("x\xef\xbb\xbfx\xef\xbb\xbf"),
             QByteArray("\xc3\xa9 \xf0\x9f\x8e\x89"), QByteArray("a\0b", 3),
             QByteArray("\xc3\xff\xed\xa0\x80\xf0\x9f"),
             QByteArray("\xe4\xb8\xad").repeated(1 << 20) }) {
        const QByteArray text = "SI 63\n101 " + bytes + "\n1601 2 x" + bytes + "\r%1\nTI 0\n";
        X item;
        item.setData(TextItem(SPECIMEN, text));
        const QDomElement e = item.getNodeConst();
        QCOMPARE(packetOf(e), QString::fromUtf8(text.constData(), int(text.size())));
        X back;
        QVERIFY(item.getDataConst());
        back.setData(*item.getDataConst());
        QCOMPARE(canonical(back.getNodeConst()), canonical(e));
    }
}

// 256 levels are followed either way; what is deeper is left out, and what follows it is not.
void tst_XMLPacketable::nesting()
{
    for (const int levels : { 1, 2, 255, 256, 257, 1000 }) {
        QStringList results;
        runOnSmallStack([&] {
            X item;
            item.setData(TextItem(SPECIMEN, nested(levels)));
            X copy;
            copy.setNode(Xml(item.toString()).root);
            XMLPacket packets[2];
            results << packetOf(item.getNodeConst()) << packetOf(packets[0].append(copy));
            packets[1] = packets[0];
            results << str(packets[0] == packets[1] ? "same" : "differ")
                    << str(item.getDataConst() ? "built" : "refused");
        });
        const QString kept = str(nested(qMin(levels, 256)).constData());
        const bool isBuilt = levels % 2 == 1 && levels < 257;  // no list of one may be empty
        const QString built = str(isBuilt ? "built" : "refused");
        QCOMPARE(results, QStringList({ kept, kept, str("same"), built }));
    }
}

void tst_XMLPacketable::deepTrees()
{
    QDomDocument document;
    QDomElement tree = document.createElement(str("packetable"));
    tree.appendChild(deepTree(document, X::LIST, 30000));
    X::createItemElementV(tree, str("8"));
    const QString text = str("SL \n").repeated(256) + str("TL 0\n").repeated(256);
    runOnSmallStack([&] {
        X item;
        item.setData(tree);
        X second;
        second.setNode(tree);
        XMLPacket packet;
        XMLAction action;
        for (const QDomElement &e : { tree, item.getNodeConst(), second.getNodeConst(),
                 packet.append(item), action.append(second), Xml(X::toString(tree)).root }) {
            QCOMPARE(packetOf(e), text + str("SI 8\nTI 0\n"));
        }
    });
    X::setType(tree, OUTPUT);
    QCOMPARE(X::getPacketableItemNode(tree), tree.lastChild());
}

// Ten times the text takes some ten times as long, never the hundred times of a slow way; and no
// more memory than 40 times the text besides the elements.
void tst_XMLPacketable::largeText()
{
    const bool isSanitized = dlsym(RTLD_DEFAULT, "__asan_init");
    const QStringList parts = lines(currentRow<Row>().name).split(QLatin1Char('~'));
    std::clock_t times[2] = {};
    for (int i = 0; i < 2; ++i) {
        const int count = parts.at(3).toInt() / (isSanitized ? 10 : 1) / (i == 0 ? 10 : 1);
        const QString text = QString(parts.at(0)).replace(str("@"), QString::number(count, 16)) +
            parts.at(1).repeated(count) + parts.at(2);
        const TextItem source(SPECIMEN, text.toUtf8());
        QStringList list = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        X items[2];
        QDomElement e = items[1].getNodeConst();
        takePeak();
        const qint64 before = takePeak();
        const std::clock_t start = std::clock();
        items[0].setData(source);
        const QString packet = packetOf(items[0].getNodeConst());
        const qint64 used = takePeak() - before;
        const size_t heap = mallinfo2().uordblks;
        items[1].toDom(e, list, 0);
        const auto own = qint64(mallinfo2().uordblks - heap);
        times[i] = std::clock() - start;
        const QString closed = QString(text).replace(str("\r\n"), str("\n"));
        QVERIFY(packet == closed || (parts.at(2).isEmpty() && packet.size() == 256 * 11));
        QVERIFY(packet == packetOf(e));
        QVERIFY2(before > 0 && (used < own + 40 * text.size() || isSanitized),
            qPrintable(QString::number(used)));
    }
    QVERIFY(times[1] < 40 * qMax<std::clock_t>(times[0], CLOCKS_PER_SEC / 20));
}

// The server item of an element is built once; what a server item says of itself is taken over.
void tst_XMLPacketable::serverItems()
{
    const QString text = str("SI 63\n101 x\nTI 0\n");
    TextItem source(SPECIMEN, text.toUtf8());
    source.dbkey = { 1, 2 };
    source.TQPacketable::setName("\xc3\xa4%1");
    X item;
    QVERIFY(!item.getDataConst());
    QVERIFY(packetOf(item.getNodeConst()).isNull());
    item.setData(source);
    TQPacketable *const cached = item.getDataConst();
    QVERIFY(cached);
    QVERIFY(cached->dbkey.key == 1);
    QVERIFY(cached->dbkey.hkey == 2);
    item.setName(str("other"));
    item.setType(OUTPUT);
    QVERIFY(item.getDataConst() == cached);
    QVERIFY(str(cached->name) == str(source.name));
    item.setType(SPECIMEN);
    const std::unique_ptr<TQPacketable> copy(item.getData());
    QVERIFY(copy);
    QVERIFY(copy.get() != cached);
    item.setData(*cached);  // its own: read before it goes
    QCOMPARE(packetOf(item.getNodeConst()), text.repeated(2));
    QCOMPARE(item.getName(), str("\xc3\xa4%1"));
    item.setData(Xml("<packetable datatype='63'><item datatype='8'/></packetable>").root);
    QVERIFY(!item.getDataConst());
    QVERIFY(!item.getData());
    item.getNodeConst().firstChildElement().setAttribute(X::DATATYPE, str("63"));
    QVERIFY(item.getDataConst());  // a failed build is tried again
    QVERIFY(*item.getDataConst()->name == 0);
    QVERIFY(!TQKEY_CC::isValid(item.getDataConst()->dbkey));
    item.setData(QDomText());
    item.setData(source);
    QVERIFY(item.getNodeConst().isNull());
    QVERIFY(item.getName().isNull());
    QVERIFY(!item.getDataConst());
    XMLPacket().appendV(item);
    QVERIFY(XMLPacket().append(item).isNull());
    QVERIFY(XMLAction().append(item).isNull());
}

// An item whose element lies in a document that another owns, and that owner, die in either order.
void tst_XMLPacketable::lifetime()
{
    struct Owners
    {
        Xml document { "<x datatype='8'><item datatype='8'><_1 value='x'/></item></x>" };
        X object;
        XMLPacket packet;
    };
    const std::function<void(X &)> uses[] = {
        [](X &item) { QVERIFY(item.getNode().hasChildNodes()); },
        [](X &item) { item.setName(str("new")); },
        [](X &item) { QVERIFY(!XMLAction().append(item).isNull()); },
        [](X &item) { XMLPacket().appendV(item); },
        [](X &item) { X().setNode(item.getNodeConst()); },
        [](X &item) { item.setData(TextItem(OUTPUT, "SI 8\n1 y\nTI 0\n")); },
    };
    for (int run = 0; run < 4 * 2 * 6; ++run) {
        const int owner = run % 4;  // object, packet, foreign document or temporary
        auto owners = std::make_unique<Owners>();
        X item;
        owners->object.setNode(owners->document.root);
        item.setData(owner == 0 ? owners->object.getNodeConst()
                : owner == 3    ? Owners().document.root
                                : owners->document.root);
        if (owner == 1) {
            owners->packet.appendV(item);
        }
        if (run / 4 % 2 == 0) {
            owners.reset();
        }
        uses[run / 8](item);
        QVERIFY(packetOf(item.getNodeConst()).startsWith(str("SI 8\n1 x\nTI 0\n")));
        QVERIFY(item.getDataConst());
    }
}

void tst_XMLPacketable::subrecordsNameOutputsAlone()
{
    for (const Type type : { OUTPUT, SPECIMEN }) {
        char name[] = "Press 1";
        TQSUBRECORD output { name };
        TextItem source(type, "");
        source.subrecord = &output;
        X item;
        item.setData(source);
        source.subrecord = nullptr;  // which it would free
        QCOMPARE(item.getName(), type == OUTPUT ? str(name) : QString());
    }
}

void tst_XMLPacketable::aByteOrderMarkStartsNoLine()
{
    X item;
    item.setData(TextItem(OUTPUT, "\xef\xbb\xbfSI 8\n1 x\nTI 0\n"));
    QCOMPARE(packetOf(item.getNodeConst()), str("SI 8\n1 x\nTI 0\n"));
}

// The entries of an array, also where they come from a document with namespaces.
void tst_XMLPacketable::valuesCountByTagName()
{
    Xml xml("<_f01><value>1</value></_f01>");
    QDomElement value = xml.document.createElementNS(str("urn:n"), str("n:value"));
    XMLObject::createTextNodeV(value, str("2"));
    xml.root.appendChild(value);
    xml.root.appendChild(xml.document.createElementNS(str("urn:n"), str("n:values")));
    QCOMPARE(X().toNumberArrayValuePacket(xml.root), str("f01 2 1 2\n"));
    QCOMPARE(X().toStringArrayValuePacket(xml.root), str("f01 2 1\r2\n"));
}

// Who includes this header alone can delete references, and their items with them.
void tst_XMLPacketable::referencesAreCompleteHere()
{
    X item;
    item.setData(Xml("<packetable datatype='63'><item datatype='63'><_901 value='x'><packetable/>"
                     "</_901></item></packetable>")
                     .root);
    QList<XPKReference *> references;
    QVERIFY(item.getXPKReferences(references));
    const QPointer<X> referred = references.first()->packetable;
    QVERIFY(referred);
    qDeleteAll(references);
    QVERIFY(!referred);
}

QTEST_GUILESS_MAIN(tst_XMLPacketable)
#include "tst_xmlpacketable.moc"
