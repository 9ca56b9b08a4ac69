#include "xmlobject.h"

#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlui.h"

#include <climits>

using Type = XMLObject::XMLOBJECT_TYPE;
using Nodes = std::list<QDomNode>;
using Ints = QList<int>;
using Words = QList<unsigned int>;

namespace {

const QString P = QStringLiteral("p");
const QString NONE;

// Qt warns about operations on null nodes; the library shall not come so far.
int warnings = 0;
void countWarnings(QtMsgType, const QMessageLogContext &, const QString &) { ++warnings; }

template<typename... T>
constexpr auto takesProperty(int)
    -> decltype(XMLObject::setProperty(std::declval<QDomElement &>(), P, std::declval<T>()...),
        XMLObject::setAttribute(std::declval<QDomElement &>(), P, std::declval<T>()...), true)
{
    return true;
}
template<typename... T>
constexpr bool takesProperty(...)
{
    return false;
}

static_assert(takesProperty<const char *>(0) && takesProperty<bool>(0) &&
        takesProperty<QString>(0) && takesProperty<int>(0) && takesProperty<double>(0) &&
        takesProperty<unsigned int, int>(0),
    "values of every kind");
static_assert(!takesProperty<void *>(0) && !takesProperty<const char16_t *>(0) &&
        !takesProperty<QDomElement *>(0),
    "no pointer becomes a bool");
static_assert(sizeof(XMLUI) == sizeof(XMLObject) && sizeof(XMLImage) == sizeof(XMLObject) &&
        sizeof(XMLMessage) == sizeof(XMLObject),
    "no members of their own");

}  // namespace

class tst_XMLObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations();
    void virtualOrder();
    void kinds_data();
    void kinds();
    void ownElement();
    void toolbox();
    void nodesOfType();
    void storedText();
    void readNumbers_data();
    void readNumbers();
    void readLists_data();
    void readLists();
    void foundProperty_data();
    void foundProperty();
    void replacedProperty();
    void attributes();
    void nullElements();
};

void tst_XMLObject::operations()
{
    using O = XMLObject;
    using E = const QDomElement &;
    using W = QDomElement &;
    using S = const QString &;
    using D = QDomDocument;
    QVERIFY((exist<D(S, S)>({ &O::createDocument })));
    QVERIFY((exist<void(S, S)>({ &O::createDocumentV })));
    QVERIFY((exist<QDomElement(W, S)>({ &O::createElement })));
    QVERIFY((exist<QDomText(W, S)>({ &O::createTextNode })));
    QVERIFY((exist<void(W, S)>({ &O::createElementV, &O::createTextNodeV, &O::removeAttribute })));
    QVERIFY((exist<QDomElement(E, S)>({ &O::getElement })));
    QVERIFY((exist<void(W, Type)>({ &O::removeNodesOfType })));
    QVERIFY((exist<int(E, Type, Nodes &)>({ &O::getNodesOfType })));
    QVERIFY((exist<QString(const QDomNode &)>({ &O::toString })));
    QVERIFY((exist<QString(E, S)>({ &O::getProperty, &O::getAttribute })));
    QVERIFY((exist<int(E, S)>({ &O::getPropertyInt, &O::getAttributeInt })));
    QVERIFY((exist<long(E, S)>({ &O::getPropertyLong, &O::getAttributeLong })));
    QVERIFY((exist<unsigned(E, S, int)>({ &O::getPropertyUInt, &O::getAttributeUInt })));
    QVERIFY((exist<unsigned long(E, S, int)>({ &O::getPropertyULong, &O::getAttributeULong })));
    QVERIFY((exist<double(E, S)>({ &O::getPropertyDouble, &O::getAttributeDouble })));
    QVERIFY((exist<bool(E, S)>({ &O::getPropertyBool, &O::getAttributeBool, &O::hasProperty })));
    QVERIFY((exist<Ints(E, S, int)>({ &O::getPropertyLongList })));
    QVERIFY((exist<Words(E, S, int)>({ &O::getPropertyULongList })));
    QVERIFY((exist<void(W, S, S)>({ &O::setProperty, &O::setAttribute })));
    QVERIFY((exist<void(W, S, double)>({ &O::setProperty, &O::setAttribute })));
    QVERIFY((exist<void(W, S, unsigned, int)>({ &O::setProperty, &O::setAttribute })));
    QVERIFY((exist<void(W, S, int)>({ &O::setProperty, &O::setAttribute })));
    QVERIFY((exist<void(W, S, bool)>({ &O::setProperty, &O::setAttribute })));
    QVERIFY((exist<Ints(S, bool *, int)>({ &O::toLongList })));
    QVERIFY((exist<Words(S, bool *, int)>({ &O::toULongList })));
    QVERIFY((existIn<O, E() const>({ &O::getNodeConst })));
    QCOMPARE(XMLObject::NUMLIST_SEP, str(" "));
    QVERIFY(!XMLObject::TQ_NAMESPACE.isEmpty());
}

// QObject has twelve virtual operations, counting its destructor as the two that it is.
void tst_XMLObject::virtualOrder()
{
    QCOMPARE(slotOf<void(const QDomElement &)>(&XMLObject::setNode), size_t(12));
    QCOMPARE(slotOf(&Derived<XMLUI>::last), size_t(13));
    QCOMPARE(slotOf(&Derived<XMLImage>::last), size_t(13));
    QCOMPARE(slotOf(&Derived<XMLMessage>::last), size_t(13));
    QCOMPARE(slotOf(&Derived<XMLAction>::last), size_t(13));
}

void tst_XMLObject::kinds_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    const char *const names[] = { "tqxml", "packetable", "action", "ui", "img", "msg" };
    for (int i = 0; i < 6; ++i) {
        QTest::newRow(names[i]) << i << str(names[i]);
    }
    for (const int other : { 6, -1, INT_MIN, INT_MAX }) {
        QTest::addRow("%d", other) << other << str("nobody");
    }
}

void tst_XMLObject::kinds()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QCOMPARE(XMLObject::rootNodeName(Type(type)), name);
    const XMLObject object { Type(type) };
    QCOMPARE(object.rootNodeName(), name);
    QCOMPARE(object.toString().trimmed(), QStringLiteral("<%1/>").arg(name));
    QCOMPARE(object.getNodeConst().parentNode().nodeName(), str("dummydoc"));
    QVERIFY(!object.parent());
    const Ints tests { object.isXMLPacketable(), object.isXMLAction(), object.isXMLUI(),
        object.isXMLImage(), object.isXMLMessage() };
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(tests.at(i), int(type == i + 1));
    }
}

void tst_XMLObject::ownElement()
{
    XMLObject object(XMLObject::XMLOBJECT_UI);
    const QString before = object.toString();
    QDomElement copy = object.getNode();
    QVERIFY(copy.parentNode().isNull());
    copy.setAttribute(P, str("1"));
    QCOMPARE(object.toString(), before);
    QDomElement own = object.getNodeConst();
    own.setAttribute(P, str("1"));
    QVERIFY(object.toString() != before);

    Xml source("<x>%1<y/>%2</x>");
    object.setNode(source.root);
    QVERIFY(object.isXMLUI() && object.getNodeConst().parentNode().isNull());
    source.root.setAttribute(P, str("1"));
    QCOMPARE(canonical(object.getNodeConst()), canonical(Xml("<x>%1<y/>%2</x>").root));
    object.setNode(object.getNodeConst());
    QCOMPARE(object.getNodeConst().text(), str("%1%2"));
    object.setNode(QDomElement());
    QVERIFY(object.getNodeConst().isNull() && object.getNode().isNull());
    QCOMPARE(object.toString(), QString());
}

void tst_XMLObject::toolbox()
{
    const QDomDocument plain = XMLObject::createDocument(NONE, str("a"));
    const QDomDocument spaced = XMLObject::createDocument(str("urn:x"), str("a"));
    XMLObject::createDocumentV(str("urn:x"), str("a"));
    QDomElement root = XMLObject::getDocumentRoot(plain);
    QCOMPARE(root.tagName(), str("a"));
    QVERIFY(root.namespaceURI().isEmpty());
    QCOMPARE(XMLObject::getDocumentRoot(spaced).namespaceURI(), str("urn:x"));

    const QDomNode created = XMLObject::createElement(root, str("b"));
    QCOMPARE(created, root.lastChild());
    XMLObject::createElementV(root, str("c"));
    const QDomNode text = XMLObject::createTextNode(root, str("<%1"));
    QCOMPARE(text, root.lastChild());
    XMLObject::createTextNodeV(root, str("d"));
    QVERIFY(XMLObject::createElement(root, NONE).isNull());
    QCOMPARE(canonical(root), str("<a ><b ></><c ></>[3 #text:<%1][3 #text:d]</>"));
    QCOMPARE(XMLObject::toString(root), str(" <a>\n  <b/>\n  <c/>&lt;%1d</a>\n"));
    QVERIFY(XMLObject::isXMLPacketable(Xml("<packetable/>").root));
    QVERIFY(!XMLObject::isXMLPacketable(Xml("<Packetable/>").root));
}

void tst_XMLObject::nodesOfType()
{
    Xml xml("<ui><?action x?><action/><action n='2'/><!--action--><x><action/></x>"
            "<![CDATA[action]]><img/><action/></ui>");
    const Type action = XMLObject::XMLOBJECT_ACTION;
    Nodes nodes { xml.document };
    QCOMPARE(XMLObject::getNodesOfType(xml.root, XMLObject::XMLOBJECT_MSG, nodes), 0);
    QCOMPARE(nodes.size(), size_t(1));
    QCOMPARE(XMLObject::getNodesOfType(xml.root, action, nodes), 4);  // by name, the first is none
    QCOMPARE(nodes.size(), size_t(5));
    QCOMPARE(nodes.front(), QDomNode(xml.document));
    QCOMPARE(std::next(nodes.begin(), 3)->toElement().attribute(str("n")), str("2"));
    XMLObject::removeNodesOfType(xml.root, action);
    QVERIFY(!XMLObject::hasNodesOfType(xml.root, action));
    QVERIFY(XMLObject::hasNodesOfType(xml.root, XMLObject::XMLOBJECT_IMAGE));
    QCOMPARE(xml.root.childNodes().count(), 4);
    QVERIFY(XMLObject::hasNodesOfType(xml.root.firstChildElement(str("x")), action));
}

void tst_XMLObject::storedText()
{
    const auto stored = [](const char *text, auto... value) {
        Xml xml("<e/>");
        for (int i = 0; i < 2; ++i) {
            XMLObject::setProperty(xml.root, P, value...);
            XMLObject::setAttribute(xml.root, P, value...);
        }
        QCOMPARE(canonical(xml.root),
            QStringLiteral("<e p=%1><p >[3 #text:%1]</></>").replace(str("%1"), str(text)));
    };
    stored("%1 %2 <&\"'\xf0\x9f\x8e\x89", str("%1 %2 <&\"'\xf0\x9f\x8e\x89"));
    stored("\xc3\xa4", "\xc3\xa4");
    stored("1", true);
    stored("0", false);
    stored("-2147483648", INT_MIN);
    stored("ff", 255U, 16);
    stored("101", 5U, 2);
    stored("ffffffff", UINT_MAX, 16);
    stored("1e+20", 1e20);
    Xml xml("<e/>");
    XMLObject::setProperty(xml.root, P, 0.1234567);
    XMLObject::setAttribute(xml.root, P, 0.1234567);
    QCOMPARE(canonical(xml.root), str("<e p=0.1234567><p >[3 #text:0.123457]</></>"));
    XMLObject::setProperty(xml.root, P, Words { 1, 26, 255, UINT_MAX }, 16);
    QCOMPARE(XMLObject::getProperty(xml.root, P), str("1 1a ff ffffffff"));
    XMLObject::setProperty(xml.root, P, Ints { 1, -26, INT_MIN }, 16);
    QCOMPARE(XMLObject::getProperty(xml.root, P), str("1 -1a -80000000"));
    XMLObject::setProperty(xml.root, P, Ints {}, 16);
    QCOMPARE(XMLObject::getProperty(xml.root, P), str(""));
}

void tst_XMLObject::readNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    const std::pair<const char *, int> rows[] = { { "", 0 }, { "42", 42 }, { " 42 ", 42 },
        { "12abc", 0 }, { "2147483647", INT_MAX }, { "2147483648", 0 }, { "-2147483648", INT_MIN },
        { "-2147483649", 0 }, { "4294967295", 0 }, { "4294967296", 0 },
        { "99999999999999999999", 0 }, { "ffffffff", 0 }, { "100000000", 100000000 },
        { "1ffffffff", 0 }, { "0x1f", 0 }, { "+7", 7 }, { "-1", -1 }, { "01", 1 }, { "1", 1 },
        { "true", 0 }, { "2", 2 }, { "1e3", 0 }, { "0.5", 0 }, { "\t1\n", 1 }, { "1 2", 0 },
        { "\xef\xbc\x91", 0 }, { "00000000000000001", 1 }, { "1_", 0 }, { "zz", 0 },
        { "0012345", 12345 }, { "ABCDEF", 0 }, { "-", 0 } };
    for (const auto &row : rows) {
        QTest::addRow("'%s'", row.first) << str(row.first) << row.second;
    }
}

void tst_XMLObject::readNumbers()
{
    QFETCH(QString, text);
    QFETCH(int, number);
    Xml xml("<e/>");
    QDomElement &e = xml.root;
    XMLObject::setProperty(e, P, text);
    e.setAttribute(P, text);
    QCOMPARE(XMLObject::getPropertyInt(e, P), number);
    QCOMPARE(XMLObject::getAttributeInt(e, P), number);
    QCOMPARE(XMLObject::getPropertyLong(e, P), long(number));
    QCOMPARE(XMLObject::getAttributeLong(e, P), long(number));
    QCOMPARE(XMLObject::getPropertyBool(e, P), number == 1);
    QCOMPARE(XMLObject::getAttributeBool(e, P), number == 1);
    QVERIFY(XMLObject::getPropertyDouble(e, P) == text.toDouble());
    QVERIFY(XMLObject::getAttributeDouble(e, P) == text.toDouble());
    for (const int base : { 2, 8, 10, 16, 36 }) {
        const unsigned int word = text.toUInt(nullptr, base);
        QCOMPARE(XMLObject::getPropertyUInt(e, P, base), word);
        QCOMPARE(XMLObject::getAttributeUInt(e, P, base), word);
        QCOMPARE(XMLObject::getPropertyULong(e, P, base), static_cast<unsigned long>(word));
        QCOMPARE(XMLObject::getAttributeULong(e, P, base), static_cast<unsigned long>(word));
    }
}

void tst_XMLObject::readLists_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("base");
    QTest::addColumn<Ints>("members");
    QTest::addColumn<bool>("ok");
    QTest::newRow("hexadecimal") << str("1 1a FF") << 16 << Ints { 1, 26, 255 } << true;
    QTest::newRow("unreadable") << str("1 x 3") << 10 << Ints { 1, 3 } << false;
    QTest::newRow("first unreadable") << str("x 1 3") << 10 << Ints { 1, 3 } << false;
    QTest::newRow("blanks") << str("  1   2 ") << 10 << Ints { 1, 2 } << true;
    QTest::newRow("only blanks") << str("   ") << 10 << Ints {} << true;
    QTest::newRow("tab") << str("1\t2 3") << 10 << Ints { 3 } << false;
    QTest::newRow("comma") << str("1,2") << 10 << Ints {} << false;
    QTest::newRow("too large") << str("1 100000000 2") << 16 << Ints { 1, 2 } << false;
}

void tst_XMLObject::readLists()
{
    QFETCH(QString, text);
    QFETCH(int, base);
    QFETCH(Ints, members);
    QFETCH(bool, ok);
    bool flags[] = { !ok, !ok };
    QCOMPARE(XMLObject::toLongList(text, &flags[0], base), members);
    const Words words = XMLObject::toULongList(text, &flags[1], base);
    QCOMPARE(flags[0], ok);
    QCOMPARE(flags[1], ok);
    QCOMPARE(XMLObject::toLongList(text, nullptr, base), members);
    QCOMPARE(Ints(words.begin(), words.end()), members);
    for (bool flag : { false, true }) {
        const bool before = flag;
        QVERIFY(XMLObject::toLongList(QString(), &flag, base).isEmpty());
        QVERIFY(XMLObject::toULongList(str(""), &flag, base).isEmpty());
        QCOMPARE(flag, before);
    }
    Xml xml("<e/>");
    XMLObject::setProperty(xml.root, P, text);
    const Ints read = ok ? members : Ints {};
    QCOMPARE(XMLObject::getPropertyLongList(xml.root, P, base), read);
    QCOMPARE(XMLObject::getPropertyULongList(xml.root, P, base), ok ? words : Words {});
    QVERIFY(XMLObject::getPropertyLongList(xml.root, str("q"), base).isEmpty());
    QCOMPARE(XMLObject::toLongList(str("-1a 80000000"), nullptr, 16), Ints { -26 });
    QCOMPARE(XMLObject::toULongList(str("-1a 80000000"), nullptr, 16), Words { 0x80000000 });
}

void tst_XMLObject::foundProperty_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("value");  // null: there is none
    QTest::newRow("absent") << str("<P>1</P>") << QString();
    QTest::newRow("empty") << str("<p/>") << str("");
    QTest::newRow("first of two") << str("<p>1</p><p>2</p>") << str("1");
    QTest::newRow("grandchild") << str("<q><p>1</p></q>") << QString();
    QTest::newRow("behind others")
        << str("p<!--p--><![CDATA[p]]><q><p>1</p></q><p>7</p>") << str("7");
    QTest::newRow("instruction") << str("<?p 1?><p>7</p>") << QString();
    QTest::newRow("all text below")
        << str("<p>1<!--2--><![CDATA[3]]><?p 4?><q>5<r>6</r></q>7</p>") << str("13567");
}

void tst_XMLObject::foundProperty()
{
    QFETCH(QString, content);
    QFETCH(QString, value);
    Xml xml(QStringLiteral("<e>") + content + str("</e>"));
    QCOMPARE(XMLObject::hasProperty(xml.root, P), !value.isNull());
    QCOMPARE(XMLObject::getProperty(xml.root, P), value);
    QCOMPARE(XMLObject::getProperty(xml.root, P).isNull(), value.isNull());
    QCOMPARE(XMLObject::getElement(xml.root, P).isNull(), value.isNull());
}

void tst_XMLObject::replacedProperty()
{
    Xml xml("<e><p><!--c-->old<q>x</q>more</p><none><q/></none><void/><p>2</p></e>");
    XMLObject::setProperty(xml.root, P, str("new"));
    XMLObject::setProperty(xml.root, str("none"), str("new"));
    XMLObject::setProperty(xml.root, str("void"), str("new"));
    XMLObject::setProperty(xml.root, str("added"), QString());
    QCOMPARE(canonical(xml.root.lastChild()), str("<added >[3 #text:]</>"));
    xml.root.removeChild(xml.root.lastChild());
    const Xml expected("<e><p><!--c-->new<q>x</q>more</p><none><q/></none><void/><p>2</p></e>");
    QCOMPARE(canonical(xml.root), canonical(expected.root));
}

void tst_XMLObject::attributes()
{
    Xml xml("<e p='old'/>");
    XMLObject::setAttribute(xml.root, P, QString());
    XMLObject::setAttribute(xml.root, P, "");
    XMLObject::setAttribute(xml.root, NONE, str("x"));
    XMLObject::setAttribute(xml.root, NONE, 1);
    XMLObject::setAttribute(xml.root, NONE, 1U, 16);
    XMLObject::setAttribute(xml.root, NONE, true);
    XMLObject::setAttribute(xml.root, NONE, 1.0);
    XMLObject::removeAttribute(xml.root, NONE);
    QCOMPARE(canonical(xml.root), str("<e p=old></>"));
    QVERIFY(XMLObject::getAttribute(xml.root, NONE).isNull());
    QVERIFY(XMLObject::getAttribute(xml.root, str("q")).isNull());
    XMLObject::removeAttribute(xml.root, P);
    QCOMPARE(canonical(xml.root), str("<e ></>"));
}

void tst_XMLObject::nullElements()
{
    QDomElement e;
    Nodes nodes;
    const QtMessageHandler previous = qInstallMessageHandler(countWarnings);
    const QDomElement created = XMLObject::createElement(e, P);
    const QDomText text = XMLObject::createTextNode(e, P);
    XMLObject::createElementV(e, P);
    XMLObject::createTextNodeV(e, P);
    XMLObject::removeNodesOfType(e, XMLObject::XMLOBJECT_UI);
    XMLObject::setProperty(e, P, P);
    XMLObject::setProperty(e, P, Ints { 1 }, 10);
    XMLObject::setAttribute(e, P, P);
    XMLObject::setAttribute(e, P, true);
    XMLObject::removeAttribute(e, P);
    const int found = XMLObject::getNodesOfType(e, XMLObject::XMLOBJECT_UI, nodes);
    const bool any = XMLObject::hasNodesOfType(e, XMLObject::XMLOBJECT_UI) ||
        XMLObject::hasProperty(e, P) || XMLObject::getPropertyBool(e, P) ||
        XMLObject::getAttributeInt(e, P) != 0 || XMLObject::isXMLPacketable(e);
    const QString read =
        XMLObject::getProperty(e, P) + XMLObject::getAttribute(e, P) + XMLObject::toString(e);
    const QDomElement root = XMLObject::getDocumentRoot(QDomDocument());
    qInstallMessageHandler(previous);
    QCOMPARE(warnings, 0);
    QVERIFY(created.isNull() && text.isNull() && root.isNull() && !any && found == 0);
    QVERIFY(read.isNull());
}

QTEST_GUILESS_MAIN(tst_XMLObject)
#include "tst_xmlobject.moc"
