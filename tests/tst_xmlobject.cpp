#include "xmlobject.h"

#include "util.h"
#include "xmlaction.h"

#include <climits>

using O = XMLObject;
using Type = XMLObject::XMLOBJECT_TYPE;
using Ints = QList<int>;
using Words = QList<unsigned int>;

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
    void ownElement();
    void kinds();
    void children();
    void storedText();
    void readNumbers();
    void readLists();
    void properties();
    void aPropertyEndsWithItsElement();
    void aPropertyWithoutTextIsNotAbsent();
    void tabsAndLineEndsInAttributesAreWritten();
    void nullElements();
};

void tst_XMLObject::ownElement()
{
    O object(O::XMLOBJECT_UI);
    object.getNode().setAttribute(P, 1);
    QVERIFY(object.getNode().parentNode().isNull());
    QVERIFY(!object.toString().contains(P));
    object.getNodeConst().toElement().setAttribute(P, 1);
    QVERIFY(object.toString().contains(P));
    Xml source("<x>%1<y/>%2</x>");
    object.setNode(source.root);
    source.root.setAttribute(P, 1);
    object.setNode(object.getNodeConst());
    QCOMPARE(canonical(object.getNodeConst()), str("<x >[3 #text:%1]<y ></>[3 #text:%2]</>"));
    object.setNode(QDomElement());
    QVERIFY(object.getNodeConst().isNull());
    QVERIFY(object.toString().isNull());
}

void tst_XMLObject::kinds()
{
    const char *const names[] = { "nobody", "tqxml", "packetable", "action", "ui", "img", "msg" };
    for (const int type : { INT_MIN, -1, 0, 1, 2, 3, 4, 5, 6, INT_MAX }) {
        const O object { Type(type) };
        const bool tests[] = { object.isXMLPacketable(), object.isXMLAction(), object.isXMLUI(),
            object.isXMLImage(), object.isXMLMessage() };
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(tests[i], i + 1 == type);
        }
        const char *const name = names[type < 0 || type > 5 ? 0 : type + 1];
        QCOMPARE(object.toString().trimmed(), str("<%1/>").arg(str(name)));
        QCOMPARE(object.getNodeConst().parentNode().nodeName(), str("dummydoc"));
    }
}

void tst_XMLObject::children()
{
    const QDomDocument document = O::createDocument(str("urn:x"), str("a"));
    QDomElement root = O::getDocumentRoot(document);
    QCOMPARE(O::createElement(root, str("b")).tagName(), str("b"));
    QCOMPARE(O::createTextNode(root, str("<%1")).data(), str("<%1"));
    QVERIFY(O::createElement(root, QString()).isNull());
    QCOMPARE(O::toString(root), str(" <a xmlns=\"urn:x\">\n  <b/>&lt;%1</a>\n"));
    Xml xml("<ui><?action x?><action/><action n='2'/><!--action--><x><action/></x>"
            "<![CDATA[action]]><img/><action/></ui>");
    std::list<QDomNode> nodes { xml.document };
    QCOMPARE(O::getNodesOfType(xml.root, O::XMLOBJECT_ACTION, nodes), 4);  // by name
    QCOMPARE(std::next(nodes.begin(), 3)->toElement().attribute(str("n")), str("2"));
    O::removeNodesOfType(xml.root, O::XMLOBJECT_ACTION);
    QVERIFY(!O::hasNodesOfType(xml.root, O::XMLOBJECT_ACTION));
    QVERIFY(O::hasNodesOfType(xml.root, O::XMLOBJECT_IMAGE));
    QCOMPARE(xml.root.childNodes().count(), 4);
}

void tst_XMLObject::storedText()
{
    const auto stored = [](auto... value) {
        Xml xml("<e/>");
        for (int i = 0; i < 2; ++i) {
            O::setProperty(xml.root, P, value...);
            O::setAttribute(xml.root, P, value...);
        }
        O::setAttribute(xml.root, P, QString());
        O::setAttribute(xml.root, QString(), 1);
        return canonical(xml.root);
    };
    const QString form = str("<e p=%1><p >[3 #text:%1]</></>");
    QCOMPARE(stored("%1 <&\"'\xc3\xa4"), form.arg(str("%1 <&\"'\xc3\xa4")));
    QCOMPARE(stored(true), form.arg(1));
    QCOMPARE(stored(INT_MIN), form.arg(INT_MIN));
    QCOMPARE(stored(UINT_MAX, 16), form.arg(str("ffffffff")));
    QCOMPARE(stored(0.1234567), str("<e p=0.1234567><p >[3 #text:0.123457]</></>"));
    QCOMPARE(O::toString(Words { 1, 26, UINT_MAX }, 16), str("1 1a ffffffff"));
    QCOMPARE(O::toString(Ints { 1, -26, INT_MIN }, 16), str("1 -1a -80000000"));
}

void tst_XMLObject::readNumbers()
{
    const std::pair<const char *, int> rows[] = { { "", 0 }, { " 42 ", 42 }, { "12abc", 0 },
        { "2147483647", INT_MAX }, { "2147483648", 0 }, { "-2147483648", INT_MIN }, { "-", 0 },
        { "4294967295", 0 }, { "4294967296", 0 }, { "1ffffffff", 0 }, { "0x1f", 0 }, { "+7", 7 },
        { "01", 1 }, { "true", 0 }, { "0.5", 0 }, { "\t1\n", 1 }, { "\xef\xbc\x91", 0 },
        { "00000000000000001", 1 }, { "1_", 0 }, { "ABCDEF", 0 }, { "0012345", 12345 } };
    for (const auto &[name, number] : rows) {
        const QString text = str(name);
        Xml xml("<e/>");
        const QDomElement &e = xml.root;
        O::setProperty(xml.root, P, text);
        xml.root.setAttribute(P, text);
        QVERIFY2(O::getPropertyLong(e, P) == number && O::getAttributeLong(e, P) == number, name);
        QCOMPARE(O::getPropertyBool(e, P) + O::getAttributeBool(e, P), number == 1 ? 2 : 0);
        QCOMPARE(O::getPropertyDouble(e, P) + O::getAttributeDouble(e, P), 2 * text.toDouble());
        QCOMPARE(O::getAttributeULong(e, P, 37), text.toUInt());  // no base, so ten
        for (const int base : { 2, 8, 10, 16, 36 }) {
            QCOMPARE(O::getPropertyULong(e, P, base), text.toUInt(nullptr, base));
            QCOMPARE(O::getAttributeULong(e, P, base), text.toUInt(nullptr, base));
        }
    }
}

void tst_XMLObject::readLists()
{
    const std::tuple<const char *, Ints, bool> rows[] = { { "1 1a FF", { 1, 26, 255 }, true },
        { "1 x -3", { 1, -3 }, false }, { "x 1 3", { 1, 3 }, false }, { "   ", {}, true },
        { "  1   2 ", { 1, 2 }, true }, { "1\t2 3", { 3 }, false }, { "1,2", {}, false },
        { "1 100000000 80000000 2", { 1, 2 }, false } };
    for (const auto &[text, members, isRead] : rows) {
        bool ok = !isRead;
        QCOMPARE(O::toLongList(str(text), &ok, 16), members);
        QVERIFY2(ok == isRead, text);
        QVERIFY(O::toULongList(QString(), &ok, 16).isEmpty());
        QVERIFY(ok == isRead);
        Xml xml("<e/>");
        O::setProperty(xml.root, P, text);
        QCOMPARE(O::getPropertyLongList(xml.root, P, 16), isRead ? members : Ints());
    }
    bool ok = true;
    QCOMPARE(O::toULongList(str("-1a 80000000"), &ok, 16), Words { 0x80000000 });
    QVERIFY(!ok);
}

void tst_XMLObject::properties()
{
    const char *const rows[][2] = { { "<P>1</P><q><p>1</p></q>", nullptr }, { "<p/>", "" },
        { "p<!--p--><![CDATA[p]]><q><p>1</p></q><p>7</p><p>2</p>", "7" },
        { "<?p 1?><p>7</p>", nullptr },
        { "<p>1<!--2--><![CDATA[3]]><?p 4?><q>5<r>6</r></q>7</p>", "13567" } };
    for (const auto &row : rows) {
        const Xml xml(str("<e>%1</e>").arg(str(row[0])));
        QCOMPARE(O::hasProperty(xml.root, P), row[1] != nullptr);
        QCOMPARE(O::getProperty(xml.root, P), str(row[1]));
        QCOMPARE(O::getProperty(xml.root, P).isNull(), !row[1]);
    }
    Xml xml(
        "<e><p><!--c--><![CDATA[kept]]>old<q>x</q>more</p><none><q/></none><void/><p>2</p></e>");
    for (const char *name : { "p", "none", "void", "added" }) {
        O::setProperty(xml.root, str(name), str("new"));
    }
    const Xml expected(
        "<e><p><!--c--><![CDATA[kept]]>new<q>x</q>more</p><none><q/></none><void/><p>2</p>"
        "<added>new</added></e>");
    QCOMPARE(canonical(xml.root), canonical(expected.root));
}

void tst_XMLObject::aPropertyEndsWithItsElement()
{
    const Xml page("<page><name>Cover<b>!</b></name><colour>red</colour></page>");
    QCOMPARE(O::getProperty(page.root, str("name")), str("Cover!"));
}

void tst_XMLObject::aPropertyWithoutTextIsNotAbsent()
{
    Xml page("<page/>");
    O::setProperty(page.root, P, QString());
    QVERIFY(O::hasProperty(page.root, P));
    QVERIFY(!O::getProperty(page.root, P).isNull());
}

void tst_XMLObject::tabsAndLineEndsInAttributesAreWritten()
{
    const QString text = str("first\tcolumn\nsecond\r\nline \"<&>\"");
    O object(O::XMLOBJECT_MSG);
    object.getNodeConst().toElement().setAttribute(P, text);
    QCOMPARE(Xml(object.toString()).root.attribute(P), text);
}

void tst_XMLObject::nullElements()
{
    QDomElement e;
    std::list<QDomNode> nodes;
    O::removeNodesOfType(e, O::XMLOBJECT_UI);
    O::setProperty(e, P, P);
    O::setAttribute(e, P, P);
    O::removeAttribute(e, P);
    O::removeAttribute(e, QString());
    QVERIFY(O::createElement(e, P).isNull());
    QVERIFY(O::createTextNode(e, P).isNull());
    QVERIFY(O::getNodesOfType(e, O::XMLOBJECT_UI, nodes) == 0);
    QVERIFY(!O::hasProperty(e, P));
    QVERIFY(O::getProperty(e, P).isNull());
    QVERIFY(O::toString(e).isNull());
    QVERIFY(O::getDocumentRoot(QDomDocument()).isNull());
    QVERIFY(O::getAttributeInt(e, P) == 0);
    QVERIFY(O::getAttributeInt(e, QString()) == 0);
}

QTEST_GUILESS_MAIN(tst_XMLObject)
#include "tst_xmlobject.moc"
