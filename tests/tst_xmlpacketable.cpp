#include "xmlpacketable.h"

#include "tqpacketable.h"
#include "tqregistry.h"
#include "util.h"
#include "xmlaction.h"

#include <climits>
#include <cstring>
#include <map>
#include <memory>

using Type = PACKETDATATYPES;

namespace {

// The specimen, 63 in packet text, has a field of every element type code. The tag is 256 times the
// code, plus the width: 101 is a text, e04 a key.
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

QString contentOf(const QDomElement &e)
{
    const QString xml = xmlOf(e);
    return xml.mid(xml.indexOf(QLatin1Char('>')));
}

QString packetOf(const QDomElement &e) { return XMLPacketable().toPacket(e); }

// Reading packet text, written the naive way: what the library reads is compared with it.

enum class Form { None, Value, Key, Numbers, Texts, Bytes };

Form formOf(unsigned int code)
{
    // Other codes up to the last one have plain values.
    static const std::map<unsigned int, Form> FORMS { { TQELEMENT_END, Form::None },
        { 10, Form::None }, { 26, Form::None }, { TQELEMENT_KEY, Form::Key },
        { TQELEMENT_NUMBERS, Form::Numbers }, { TQELEMENT_INTEGERS, Form::Numbers },
        { TQELEMENT_INTEGERS8, Form::Numbers }, { TQELEMENT_INTEGERS2, Form::Numbers },
        { TQELEMENT_INTEGERS1, Form::Numbers }, { TQELEMENT_TEXTS, Form::Texts },
        { TQELEMENT_BYTES, Form::Bytes }, { TQELEMENT_LENGTHS, Form::Numbers },
        { TQELEMENT_BITSETS, Form::Numbers }, { TQELEMENT_INTEGERS4, Form::Numbers } };
    if (code > TQELEMENT_INTEGERS4) {
        return Form::None;
    }
    const auto found = FORMS.find(code);
    return found == FORMS.end() ? Form::Value : found->second;
}

unsigned int numberOf(const QString &text) { return text.toUInt(nullptr, 16); }
QString hex(unsigned int number) { return QString::number(number, 16); }

const CONVERTSTRUCTELEMENTINFO *tableOf(unsigned int type)
{
    return type == PACKETDATATYPE_UNCONVERTED ? nullptr : TQGetSystemStorageClassConv(Type(type));
}

Form formIn(unsigned int type, const QString &tag)
{
    for (auto field = tableOf(type); field && field->type != 0; ++field) {
        if (field->tag == numberOf(tag)) {
            return formOf(field->type);
        }
    }
    return Form::None;
}

QString attribute(const char *name, const QString &value)
{
    return value.isEmpty() ? value
                           : QStringLiteral(" %1='%2'").arg(str(name), value.toHtmlEscaped());
}

QString element(const QString &name, const QString &attributes, const QString &content = QString())
{
    return content.isNull() ? QStringLiteral("<%1%2/>").arg(name, attributes)
                            : QStringLiteral("<%1%2>%3</%1>").arg(name, attributes, content);
}

QString valueElements(const QStringList &texts)
{
    QString xml;
    for (const QString &text : texts) {
        xml += element(str("value"), QString(), text.toHtmlEscaped());
    }
    return xml;
}

// A value that does not have the form of its field leaves the element empty, with three exceptions:
// - Bytes without a blank are taken for the size and for the data.
// - Of texts that are more or fewer than their count, the count is kept.
// - Where a blank precedes the count of texts, the count is part of the first text as well.
QString fieldElement(Form form, const QString &name, const QString &value)
{
    const QStringList words = value.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QString data = value.mid(value.indexOf(QLatin1Char(' ')) + 1);
    const QStringList values =
        form == Form::Numbers ? words.mid(1) : data.split(QLatin1Char('\r'), Qt::SkipEmptyParts);
    bool hasCount = false;
    const unsigned int count = words.value(0).toUInt(&hasCount, 16);
    const bool isArray = form == Form::Numbers || form == Form::Texts;
    QString attributes;
    QString content;
    if (form == Form::Value) {
        attributes = attribute("value", value);
    } else if (form == Form::Key && words.size() == 2) {
        attributes = attribute("hkey", words[1]) + attribute("key", words[0]);
    } else if (form == Form::Bytes) {
        attributes = attribute("size", value.section(QLatin1Char(' '), 0, 0));
        content = str("") + data.toHtmlEscaped();
    } else if (isArray && hasCount && int(count) == values.size()) {
        attributes = attribute("size", hex(count));
        content = valueElements(values);
    } else if (form == Form::Texts && hasCount) {
        attributes = attribute("size", hex(count));
    }
    return element(name, attributes, content);
}

// Reads lines into XML. A block is an item or a list.
struct NaiveReader
{
    const QStringList lines;
    int at = 0;
    int leftOpen = 0;

    // What toDom() returns: the last line that was read, plus one for each block without an end.
    int end() const { return at - 1 + leftOpen; }
    // What an item of that type holds; lists, of type 0, hold no fields.
    QString content(unsigned int type)
    {
        QString xml;
        // A line without a blank is cut where the one before it in the same item was.
        int cut = -1;
        int length = 0;
        while (at < lines.size()) {
            const QString line = lines[at++].trimmed();
            const int blank = int(line.indexOf(QLatin1Char(' ')));
            cut = blank < 0 ? cut : blank;
            length = blank < 0 ? length : int(line.size()) - blank - 1;
            const QString word = cut < 0 ? QString() : line.left(cut);
            const QString value = line.mid(cut + 1, length);
            if (word == str("TI") || word == str("TL")) {
                return xml;
            }
            xml += word == str("SI") ? item(value)
                : word == str("SL")  ? element(str("list"), attribute("size", value), content(0))
                                     : field(type, word, value);
        }
        ++leftOpen;
        return xml;
    }
    QString item(const QString &type)
    {
        const bool isKnown = tableOf(numberOf(type));
        at += isKnown ? 0 : 1;  // the line after an unknown type counts as its end
        return element(str("item"), attribute("datatype", type),
            isKnown ? content(numberOf(type)) : QString());
    }
    QString field(unsigned int type, const QString &word, const QString &value) const
    {
        const Form form = formIn(type, word);
        return form == Form::None ? QString()
                                  : fieldElement(form, str("_") + hex(numberOf(word)), value);
    }
};

// Values and lines for random packet text: some right, some nearly so, some to be left out. The
// last two lines start with a byte order mark and with a blank that is not ASCII.

constexpr const char *VALUES[] = { "x", "a  b %2 %1", "2 7 8", "2 7", "1 7 8", "0", "1f ff",
    "2 a b\rc", "3 a\r\rb\rc", "4 AAEC", "x 1", "a 1 2 3 4 5 6 7 8 9 a", "100000001 7",
    "ffffffff x", "1 ", "10 <\"&'>\xc3\xa4\xef\xbb\xbf" };
constexpr const char *LINES[] = { "SI 63", "SI 063", "SL 2", "TI 0", "TL 0", "SI 6", "SI 7fff",
    "SI x y", "SI 100000063", "101", "TI", "1_xyz", "xyz 1", "0x101 a", "-101 a",
    "\xef\xbb\xbf\x31\x30\x31 a", "\xc2\xa0\x31\x30\x31 a\xe3\x80\x80" };

QByteArray randomText(Random &random)
{
    QByteArray text = "SI 63\n";
    for (int count = random.below(20); count > 0; --count) {
        const int tag = 256 * random.below(33) + random.below(10);
        text += random.onceIn(3)
            ? QByteArray(random.oneOf(LINES))
            : QByteArray::number(tag, 16) + ' ' + QByteArray(random.oneOf(VALUES));
        text += '\n';
    }
    return text;
}

// Elements of a specimen, as any program may write them, and their packet text.
const Case TREES[] = {
    { "only elements count", "<?item 1?><!--item-->text", "" },
    { "names that are no tag", "<x><item datatype='8'/></x><_zz value='x'/><_-101 value='x'/>",
        "" },
    { "a text without a value", "<_101/><_102 value=''/>", "" },
    { "a text with elements", "<_101 value='x'>t<_101 value='y'/></_101>", "101 x\n" },
    { "a line feed in a text", "<_101 value='a&#10;TI 0'/>", "101 a\nTI 0\n" },
    { "a key in capitals", "<_E01 hkey='2' key='1'/>", "E01 1 2\n" },
    { "a key without words", "<_e01><item datatype='8'/></_e01>", "e01  \n" },
    { "values are counted anew",
        "<_f01 size='9'><x>5</x><value>2</value><n:value>3</n:value></_f01>", "f01 1 2\n" },
    { "values of many nodes", "<_f01><value>2<q>3</q><!--4--><![CDATA[5]]></value></_f01>",
        "f01 1 235\n" },
    { "no values", "<_f01 size='9'><![CDATA[6]]><?value 7?></_f01>", "f01 0 \n" },
    { "an empty text among texts", "<_1601>z<value>%1</value><value/></_1601>", "1601 2 %1\r\n" },
    { "bytes of many nodes", "<_1701 size='3'>a<b>b</b><?x y?><![CDATA[<c]]></_1701>",
        "1701 3 ab<c\n" },
    { "a list has no fields", "<list><item datatype='8'/><list size='2'/><_101 value='x'/></list>",
        "SL \nSI 8\nTI 0\nSL 2\nTL 0\nTL 0\n" },
    { "an item that is not converted", "<item datatype='6'><_1 value='x'/><list/></item>",
        "SI 6\nTI 0\n" },
    { "an item without a type", "<item><_101 value='x'/></item>", "SI \nTI 0\n" },
};

// Blocks within one another, items and lists in turn, with a field behind each inner block.
QByteArray nested(int levels)
{
    const QByteArray list = "SL 1\n" + (levels > 2 ? nested(levels - 2) : QByteArray()) + "TL 0\n";
    return "SI 63\n" + (levels > 1 ? list : QByteArray()) + "101 after\nTI 0\n";
}

}  // namespace

class tst_XMLPacketable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormOfAField();
    void anyPacketTextIsConvertedAsDocumented();
    void everyTypeCodeIsWrittenAgain();
    void anyTreeIsWrittenAsDocumented_data() { addRows(TREES); }
    void anyTreeIsWrittenAsDocumented();
    void fieldsAreBuiltAndWrittenOneByOne();
    void toDomReturnsTheClosingLine();
    void blocksAreFollowedTo256Levels();
    void deepTreesTakeNoStack();
    void timeGrowsWithTheText();

    void attributesOfAnItem();
    void itemsAndFieldsAreFound();
    void linesAndTagsAreTakenApart();

    void aServerItemIsTakenOverWithKeyAndName();
    void aServerItemMayBeAppendedToItsOwnNode();
    void aServerItemIsBuiltOnlyIfTheTypesAgree();
    void theServerItemIsBuiltOnce();

private:
    static void checkText(const QByteArray &text);
};

void tst_XMLPacketable::everyFormOfAField()
{
    const QByteArray text = "SI 63\n"
                            "101 Candide & Co.\n"  // a text
                            "e04 2a 56\n"  // a key
                            "f08 2 1.5 -2\n"  // numbers
                            "1601 2 Novel\rBlack Sea\n"  // texts
                            "1701 4 AP8A/w==\n"  // bytes
                            "SL 1\nSI 8\n1 Press\nTI 0\nTL 0\n"  // items inside of it
                            "TI 0\n";
    XMLPacketable item;
    item.setData(TextItem(SPECIMEN, text));
    QCOMPARE(xmlOf(item.getNodeConst().firstChild()),
        str("<item datatype='63'>"
            "<_101 value='Candide &amp; Co.'/>"
            "<_e04 hkey='56' key='2a'/>"
            "<_f08 size='2'><value>1.5</value><value>-2</value></_f08>"
            "<_1601 size='2'><value>Novel</value><value>Black Sea</value></_1601>"
            "<_1701 size='4'>AP8A/w==</_1701>"
            "<list size='1'><item datatype='8'><_1 value='Press'/></item></list>"
            "</item>"));
    QCOMPARE(packetOf(item.getNodeConst()), str(text.constData()));
}

// Compares what is read from lines, and from the bytes of a server item, with the naive reader.
void tst_XMLPacketable::checkText(const QByteArray &text)
{
    const QString decoded = QString::fromUtf8(text.constData(), int(text.size()));
    QStringList lines = decoded.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    NaiveReader model { lines };
    const QString expected = element(str("packetable"), QString(), model.content(0));
    Xml xml("<packetable/>");
    const auto end = int(XMLPacketable().toDom(xml.root, lines, 0));
    QVERIFY2(xmlOf(xml.root) == expected,
        qPrintable(str(text.constData()) + str("is read as\n") + xmlOf(xml.root)));
    QVERIFY2(end == model.end(), text.constData());
    XMLPacketable item;
    item.setData(TextItem(SPECIMEN, text));
    QCOMPARE(contentOf(item.getNodeConst()), contentOf(xml.root));
}

void tst_XMLPacketable::anyPacketTextIsConvertedAsDocumented()
{
    Random random;
    for (int run = 0; run < 3000 && !QTest::currentTestFailed(); ++run) {
        checkText(randomText(random));
    }
}

void tst_XMLPacketable::everyTypeCodeIsWrittenAgain()
{
    const std::map<Form, QByteArray> values { { Form::Value, "x" }, { Form::Key, "2a 56" },
        { Form::Numbers, "2 7 8" }, { Form::Texts, "2 a b\rc" }, { Form::Bytes, "4 AAEC" } };
    QByteArray text = "SI 63\n";
    for (unsigned int code = 1; code <= TQELEMENT_INTEGERS4; ++code) {
        if (formOf(code) != Form::None) {
            text += QByteArray::number(256 * code + 1, 16) + ' ' + values.at(formOf(code)) + '\n';
        }
    }
    text += "TI 0\n";
    XMLPacketable item;
    item.setData(TextItem(SPECIMEN, text));
    QCOMPARE(packetOf(item.getNodeConst()), str(text.constData()));
}

void tst_XMLPacketable::anyTreeIsWrittenAsDocumented()
{
    const auto &row = currentRow<Case>();
    const Xml item(str("<item datatype='63'>%1</item>").arg(str(row.given)));
    QCOMPARE(packetOf(item.root), str(row.expected));
}

void tst_XMLPacketable::fieldsAreBuiltAndWrittenOneByOne()
{
    using X = XMLPacketable;
    Xml xml("<e/>");
    const QDomElement fields[] = { X::createSimpleElement(xml.root, str("_1"), str("x y")),
        X::createTQKEYElement(xml.root, str("_1"), str("2a 56")),
        X::createNumberArrayElement(xml.root, str("_1"), str("2 1 -2")),
        X::createStringArrayElement(xml.root, str("_1"), str("2 a b\rc")) };
    QString lines = X().toSimpleValuePacket(fields[0]) + X().toTQKEYValuePacket(fields[1]) +
        X().toNumberArrayValuePacket(fields[2]) + X().toStringArrayValuePacket(fields[3]);
    X::createBinaryDataElementV(xml.root, str("_1"), str("4 AAEC"));
    X().appendBinaryDataPacket(lines, xml.root.lastChildElement());
    QCOMPARE(lines, str("1 x y\n1 2a 56\n1 2 1 -2\n1 2 a b\rc\n1 4 AAEC\n"));
    QDomElement null;
    QVERIFY(X::createSimpleElement(null, str("_1"), str("1")).isNull());
}

void tst_XMLPacketable::toDomReturnsTheClosingLine()
{
    QStringList lines { str("TI 0"), str("1 Press"), str("TI 0"), str("1 behind") };
    Xml output("<item datatype='8'/>");
    QCOMPARE(XMLPacketable().toDom(output.root, lines, 1), 2U);
    QCOMPARE(xmlOf(output.root), str("<item datatype='8'><_1 value='Press'/></item>"));
    QCOMPARE(XMLPacketable().toDom(output.root, lines, 4), 4U);
    QCOMPARE(XMLPacketable().toDom(output.root, lines, UINT_MAX), UINT_MAX);
    Xml unknown("<item datatype='7fff'/>");
    QCOMPARE(XMLPacketable().toDom(unknown.root, lines, 1), 1U);
}

// Deeper blocks are left out; the fields after them are not.
void tst_XMLPacketable::blocksAreFollowedTo256Levels()
{
    for (const int levels : { 255, 256, 257, 1000 }) {
        const QString kept = str(nested(qMin(levels, TQMAX_NESTING)).constData());
        runOnSmallStack([&] {
            XMLPacketable item;
            item.setData(TextItem(SPECIMEN, nested(levels)));
            XMLPacketable copy;
            copy.setNode(Xml(item.toString()).root);
            XMLPacket packet;
            QCOMPARE(packetOf(item.getNodeConst()), kept);
            QCOMPARE(packetOf(packet.append(copy)), kept);
        });
    }
}

void tst_XMLPacketable::deepTreesTakeNoStack()
{
    QDomDocument document;
    QDomElement tree = document.createElement(str("packetable"));
    tree.appendChild(deepTree(document, XMLPacketable::LIST, 30000));
    const QString kept =
        str("SL \n").repeated(TQMAX_NESTING) + str("TL 0\n").repeated(TQMAX_NESTING);
    runOnSmallStack([&] {
        XMLPacketable data;
        data.setData(tree);
        XMLPacketable node;
        node.setNode(tree);
        for (const QDomElement &e :
            { tree, data.getNode(), node.getNodeConst(), Xml(XMLObject::toString(tree)).root }) {
            QCOMPARE(packetOf(e), kept);
        }
    });
}

void tst_XMLPacketable::timeGrowsWithTheText()
{
    const auto convert = [](const QByteArray &start, const QByteArray &part, int count) {
        XMLPacketable item;
        item.setData(TextItem(SPECIMEN, start + part.repeated(count) + "\nTI 0\n"));
        QVERIFY(!packetOf(item.getNodeConst()).isEmpty());
    };
    QVERIFY(isLinear(200000, [&](int n) { convert("SI 63\n", "101 x\n", n); }));
    QVERIFY(isLinear(100000, [&](int n) { convert("SI 63\nSL 2\n", "SI 5\nTI 0\n", n); }));
    QVERIFY(isLinear(
        200000, [&](int n) { convert("SI 63\nf01 " + QByteArray::number(n, 16), " 7", n); }));
}

void tst_XMLPacketable::attributesOfAnItem()
{
    XMLPacketable item;
    QVERIFY(item.getName().isNull());
    item.setDBkey({ 15, 16 });
    item.setType(Type(0xffffffff));
    item.setName(str("%1"));
    item.setName(QString());  // leaves the earlier one
    item.setCurrent(true);
    item.setReplacement(true);
    QCOMPARE(xmlOf(item.getNodeConst()),
        str("<packetable datatype='ffffffff' hkey='10' is_current='1' is_replacement='1' key='f' "
            "name='%1'/>"));
    QCOMPARE(item.getDBkey().hkey, 16U);
    QVERIFY(item.isCurrent());
    item.clearReplacement();
    QVERIFY(!item.isReplacement());
    item.setNode(Xml("<x datatype='100000000' is_current='true'/>").root);
    QCOMPARE(unsigned(item.getType()), 0U);  // what cannot be read is absent
    QVERIFY(!item.isCurrent());
}

void tst_XMLPacketable::itemsAndFieldsAreFound()
{
    using X = XMLPacketable;
    const Xml body("<body><?packetable x?><packetable datatype='1'/>"
                   "<packetable datatype='8' name='first'>"
                   "<item datatype='1'><list><item datatype='08' name='inner'/></list></item>"
                   "<item datatype='8'><_1 value='a'/><?_2 x?><_2/></item></packetable>"
                   "<packetable datatype='8' name='second'/></body>");
    std::list<QDomNode> nodes { body.document };
    QCOMPARE(X::getPacketableNodesOfType(body.root, OUTPUT, nodes), 2);
    QCOMPARE(X::getName(nodes.back().toElement()), str("second"));
    QDomElement first = X::getFirstPacketableNodeOfType(body.root, OUTPUT).toElement();
    QCOMPARE(X::getName(first), str("first"));
    const QDomElement inner = X::getPacketableItemNode(first).toElement();
    QCOMPARE(X::getName(inner), str("inner"));  // the first of that type, in document order
    QVERIFY(X::getPacketableItemNode(inner).isNull());
    QCOMPARE(X::getTagAttribute(body.root, 1, X::VALUE), str("a"));
    QVERIFY(X::getTagNode(body.root, 2).isElement());
    QVERIFY(X::getTagNode(body.root, 3).isNull());
    QCOMPARE(xmlOf(X::getEmptyNodeOfType(first, Type(48))),
        str("<packetable datatype='30'><item datatype='30'/></packetable>"));
}

void tst_XMLPacketable::linesAndTagsAreTakenApart()
{
    using X = XMLPacketable;
    CONVERTSTRUCTELEMENTINFO table[] = { { 1, 7, 0, 1, {} }, {}, { 1, 8, 0, 1, {} } };
    QCOMPARE(X::getConvStructFromDataTag(table, 7), &table[0]);
    QVERIFY(!X::getConvStructFromDataTag(table, 8));  // which is behind the end
    QCOMPARE(X::getXMLTagNameFromDATATAG(0x1a2b), str("_1a2b"));
    QCOMPARE(X::getDATATAGFromXMLTagName(str("_1a2b")), str("1a2b"));
    QString line = str("1\t2 3 4 ");  // a tab does not separate
    QStringRef tag;
    QStringRef value;
    X::getTagValuePair(line, tag, value);
    QCOMPARE(tag.toString(), str("1\t2"));
    QCOMPARE(value.toString(), str("3 4 "));
}

void tst_XMLPacketable::aServerItemIsTakenOverWithKeyAndName()
{
    TextItem source(SPECIMEN, "SI 63\n101 x\nTI 0\n");
    char ignored[] = "of outputs alone";
    TQSUBRECORD record { ignored };
    source.subrecord = &record;
    source.dbkey = { 1, 2 };
    source.TQPacketable::setName("\xc3\xa4%1");
    XMLPacketable item;
    item.setData(source);
    source.subrecord = nullptr;  // which it would free
    QCOMPARE(item.getName(), str("\xc3\xa4%1"));
    const std::unique_ptr<TQPacketable> copy(item.getData());
    QVERIFY(copy.get() != item.getDataConst());
    for (const TQPacketable *back : { item.getDataConst(), copy.get() }) {
        QCOMPARE(back->dbkey.key, 1U);
        QCOMPARE(back->dbkey.hkey, 2U);
        QCOMPARE(str(back->name), item.getName());
        QCOMPARE(::packetOf(*back), source.text);
    }
}

void tst_XMLPacketable::aServerItemMayBeAppendedToItsOwnNode()
{
    const TextItem source(SPECIMEN, "SI 63\n101 x\nTI 0\n");
    XMLPacketable item;
    item.setData(source);
    item.setData(*item.getDataConst());
    QCOMPARE(packetOf(item.getNodeConst()), str(source.text.constData()).repeated(2));
}

void tst_XMLPacketable::aServerItemIsBuiltOnlyIfTheTypesAgree()
{
    XMLPacketable item;
    QVERIFY(!item.getDataConst());
    item.setData(Xml("<packetable datatype='63'><item datatype='8'/></packetable>").root);
    QVERIFY(!item.getDataConst());
    item.getNodeConst().firstChildElement().setAttribute(XMLPacketable::DATATYPE, str("63"));
    QVERIFY(item.getDataConst());
    QVERIFY(!TQKEY_CC::isValid(item.getDataConst()->dbkey));
}

void tst_XMLPacketable::theServerItemIsBuiltOnce()
{
    XMLPacketable item;
    item.setData(Xml("<packetable datatype='63'><item datatype='63'/></packetable>").root);
    TQPacketable *const built = item.getDataConst();
    QVERIFY(built);
    item.setName(str("later"));
    item.setType(OUTPUT);
    QCOMPARE(item.getDataConst(), built);
    QCOMPARE(str(built->name), QString());
    item.setData(Xml("<packetable datatype='63'/>").root);
    QVERIFY(!item.getData());
}

QTEST_GUILESS_MAIN(tst_XMLPacketable)
#include "tst_xmlpacketable.moc"
