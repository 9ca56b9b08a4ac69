#include "xmlobject.h"

#include "util.h"

#include <climits>

using O = XMLObject;

namespace {

const QString P = QStringLiteral("p");

// What can be stored: values of every kind, but no pointer that would become a bool.
constexpr auto store =
    [](auto... value) -> decltype(O::setProperty(std::declval<QDomElement &>(), P, value...),
                          O::setAttribute(std::declval<QDomElement &>(), P, value...)) {};
template<typename... T>
constexpr bool isStored = std::is_invocable_v<decltype(store), T...>;
static_assert(isStored<const char *> && isStored<bool> && isStored<QString> && isStored<int> &&
    isStored<double> && isStored<unsigned int, int>);
static_assert(!isStored<void *> && !isStored<const char16_t *> && !isStored<QDomElement *>);

}  // namespace

class tst_XMLObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anObjectHasAnElementOfItsKind();
    void getNodeAndSetNodeCopy();
    void childrenAreFoundByKind();
    void valuesAreStoredAsText();
    void anyTextReadsAsANumberOr0();
    void listsKeepWhatCanBeRead();
    void aPropertyIsTheTextOfAnElement();
    void aStoredTextReplacesTheFirstOne();
    void attributesKeepTabsAndLineEnds();
    void aNullElementReadsAsAbsent();
};

void tst_XMLObject::anObjectHasAnElementOfItsKind()
{
    const char *const names[] = { "tqxml", "packetable", "action", "ui", "img", "msg" };
    for (const int type : { INT_MIN, -1, 0, 1, 2, 3, 4, 5, 6, INT_MAX }) {
        const O object { O::XMLOBJECT_TYPE(type) };
        const char *const name = type < 0 || type > 5 ? "nobody" : names[type];
        QCOMPARE(object.toString().trimmed(), str("<%1/>").arg(str(name)));
        QCOMPARE(object.isXMLPacketable(), type == O::XMLOBJECT_PACKETABLE);
        QCOMPARE(object.isXMLAction(), type == O::XMLOBJECT_ACTION);
        QCOMPARE(object.isXMLUI(), type == O::XMLOBJECT_UI);
        QCOMPARE(object.isXMLImage(), type == O::XMLOBJECT_IMAGE);
        QCOMPARE(object.isXMLMessage(), type == O::XMLOBJECT_MSG);
        QCOMPARE(object.getNodeConst().parentNode().nodeName(), str("dummydoc"));
    }
}

void tst_XMLObject::getNodeAndSetNodeCopy()
{
    O object(O::XMLOBJECT_UI);
    object.getNode().setAttribute(P, 1);
    QVERIFY(object.getNode().parentNode().isNull());
    QCOMPARE(xmlOf(object.getNodeConst()), str("<ui/>"));
    object.getNodeConst().toElement().setAttribute(P, 1);
    QCOMPARE(xmlOf(object.getNode()), str("<ui p='1'/>"));
    Xml source("<x>%1<y/>%2</x>");
    object.setNode(source.root);
    source.root.setAttribute(P, 1);
    object.setNode(object.getNodeConst());
    QCOMPARE(xmlOf(object.getNodeConst()), str("<x>%1<y/>%2</x>"));
    object.setNode(QDomElement());
    QVERIFY(object.getNodeConst().isNull());
    QVERIFY(object.toString().isNull());
}

// By name, whatever a child of that name is.
void tst_XMLObject::childrenAreFoundByKind()
{
    Xml page("<ui><?action x?><action/><action n='2'/><!--action--><x><action/></x>"
             "<![CDATA[action]]><img/><action/></ui>");
    std::list<QDomNode> nodes { page.document };
    QCOMPARE(O::getNodesOfType(page.root, O::XMLOBJECT_ACTION, nodes), 4);
    QCOMPARE(xmlOf(*std::next(nodes.begin(), 3)), str("<action n='2'/>"));
    O::removeNodesOfType(page.root, O::XMLOBJECT_ACTION);
    QVERIFY(!O::hasNodesOfType(page.root, O::XMLOBJECT_ACTION));
    QVERIFY(O::hasNodesOfType(page.root, O::XMLOBJECT_IMAGE));
    QCOMPARE(
        xmlOf(page.root), str("<ui><!--action--><x><action/></x><![CDATA[action]]><img/></ui>"));
}

void tst_XMLObject::valuesAreStoredAsText()
{
    const auto stored = [](auto... value) {
        Xml xml("<e><p>before</p></e>");
        O::setProperty(xml.root, P, value...);
        O::setAttribute(xml.root, P, value...);
        O::setAttribute(xml.root, P, QString());  // leaves the earlier one
        O::setAttribute(xml.root, QString(), 1);
        return xmlOf(xml.root);
    };
    QCOMPARE(stored("%1 text"), str("<e p='%1 text'><p>%1 text</p></e>"));
    QCOMPARE(stored(true), str("<e p='1'><p>1</p></e>"));
    QCOMPARE(stored(INT_MIN), str("<e p='-2147483648'><p>-2147483648</p></e>"));
    QCOMPARE(stored(UINT_MAX, 16), str("<e p='ffffffff'><p>ffffffff</p></e>"));
    QCOMPARE(stored(0.1234567), str("<e p='0.1234567'><p>0.123457</p></e>"));
    QCOMPARE(O::toString(QList<unsigned int> { 1, 26, UINT_MAX }, 16), str("1 1a ffffffff"));
    QCOMPARE(O::toString(QList<int> { 1, -26, INT_MIN }, 16), str("1 -1a -80000000"));
}

void tst_XMLObject::anyTextReadsAsANumberOr0()
{
    for (const char *utf8 : { "", " 42 ", "12abc", "1", "2147483647", "2147483648", "-2147483648",
             "4294967295", "4294967296", "1ffffffff", "100000001", "0x1f", "+7", "01", "0.5",
             "\t1\n", "\xef\xbc\x91", "00000000000000001", "1_", "ABCDEF" }) {
        const QString text = str(utf8);
        Xml xml("<e/>");
        O::setProperty(xml.root, P, text);
        xml.root.setAttribute(P, text);
        QCOMPARE(O::getPropertyLong(xml.root, P), long(text.toInt()));
        QCOMPARE(O::getPropertyBool(xml.root, P), text.toInt() == 1);
        QCOMPARE(O::getAttributeBool(xml.root, P), text.toInt() == 1);
        QCOMPARE(O::getPropertyDouble(xml.root, P), text.toDouble());
        QCOMPARE(O::getAttributeDouble(xml.root, P), text.toDouble());
        for (const int base : { 2, 8, 10, 16, 36 }) {
            QCOMPARE(O::getPropertyUInt(xml.root, P, base), text.toUInt(nullptr, base));
            QCOMPARE(O::getAttributeUInt(xml.root, P, base), text.toUInt(nullptr, base));
        }
    }
}

// A property is a list only when all of it can be read.
void tst_XMLObject::listsKeepWhatCanBeRead()
{
    const std::tuple<const char *, QList<int>, bool> rows[] = { { "1 1a FF", { 1, 26, 255 }, true },
        { "  1   -2 ", { 1, -2 }, true }, { "   ", {}, true }, { "x 1 3", { 1, 3 }, false },
        { "1\t2 3", { 3 }, false }, { "1 100000000 80000000 2", { 1, 2 }, false } };
    for (const auto &[text, numbers, isWhole] : rows) {
        bool ok = !isWhole;
        QCOMPARE(O::toLongList(str(text), &ok, 16), numbers);
        QCOMPARE(ok, isWhole);
        QVERIFY(O::toLongList(QString(), &ok, 16).isEmpty());
        QCOMPARE(ok, isWhole);  // as it was
        Xml xml("<e/>");
        O::setProperty(xml.root, P, text);
        QCOMPARE(O::getPropertyLongList(xml.root, P, 16), isWhole ? numbers : QList<int>());
    }
    QCOMPARE(O::toULongList(str("-1a 80000000"), nullptr, 16), QList<unsigned int> { 0x80000000 });
}

void tst_XMLObject::aPropertyIsTheTextOfAnElement()
{
    const auto property = [](const char *content) {
        return O::getProperty(Xml(str("<e>%1</e>").arg(str(content))).root, P);
    };
    QCOMPARE(
        property("<p>1<!--2--><![CDATA[3]]><?p 4?><q>5<r>6</r></q>7</p><q>8</q>"), str("13567"));
    QCOMPARE(property("p<!--p--><q><p>1</p></q><p>7</p><p>2</p>"), str("7"));  // the first child
    QVERIFY(property("<P>1</P>").isNull());
    QVERIFY(property("<?p 1?><p>7</p>").isNull());
    QCOMPARE(property("<p/>"), str(""));
    QVERIFY(!property("<p/>").isNull());  // empty, not absent
}

void tst_XMLObject::aStoredTextReplacesTheFirstOne()
{
    Xml xml("<e><p><!--c--><![CDATA[kept]]>old<q>x</q>more</p><none><q/></none><p>2</p></e>");
    for (const char *name : { "p", "none", "added" }) {
        O::setProperty(xml.root, str(name), str("new"));
    }
    QCOMPARE(xmlOf(xml.root),
        str("<e><p><!--c--><![CDATA[kept]]>new<q>x</q>more</p><none><q/></none><p>2</p>"
            "<added>new</added></e>"));
}

void tst_XMLObject::attributesKeepTabsAndLineEnds()
{
    const QString text = str("first\tcolumn\nsecond\r\nline \"<&>\"");
    O object(O::XMLOBJECT_MSG);
    object.getNodeConst().toElement().setAttribute(P, text);
    QCOMPARE(Xml(object.toString()).root.attribute(P), text);
}

void tst_XMLObject::aNullElementReadsAsAbsent()
{
    QDomElement e;
    O::setProperty(e, P, P);
    O::setAttribute(e, P, P);
    QVERIFY(O::createElement(e, P).isNull());
    QVERIFY(O::createTextNode(e, P).isNull());
    QVERIFY(O::getProperty(e, P).isNull());
    QVERIFY(O::toString(e).isNull());
    QCOMPARE(O::getAttributeInt(e, P), 0);
}

QTEST_GUILESS_MAIN(tst_XMLObject)
#include "tst_xmlobject.moc"
