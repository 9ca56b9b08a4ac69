#include "xmlpacket.h"

#include "tqpacketable.h"
#include "tqregistry.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QRegularExpression>

#include <climits>
#include <memory>
#include <random>

using Type = XMLObject::XMLOBJECT_TYPE;
using Nodes = std::list<QDomNode>;
using Item = std::shared_ptr<XMLObject>;

namespace {

// An item of one of the five kinds, and the two ways to append it.
struct Kind
{
    Type type;
    std::function<Item()> make;
    std::function<QDomElement(XMLPacket &, XMLObject &)> append;
    std::function<void(XMLPacket &, XMLObject &)> appendV;
};

template<typename T>
Kind kind(Type type)
{
    return { type, [] { return std::make_shared<T>(); },
        [](XMLPacket &packet, XMLObject &item) { return packet.append(static_cast<T &>(item)); },
        [](XMLPacket &packet, XMLObject &item) { packet.appendV(static_cast<T &>(item)); } };
}

Nodes nodesOf(const XMLPacket &packet, Type type)
{
    Nodes nodes;
    packet.getNodesOfType(type, nodes);
    return nodes;
}

// The document of a packet that holds a message.
QDomDocument documentOf(const XMLPacket &packet)
{
    return nodesOf(packet, XMLObject::XMLOBJECT_MSG).front().ownerDocument();
}

// A document's text with the attributes of each tag in order.
QString sortedText(const QDomDocument &document)
{
    static const QRegularExpression attributes(str("(?<=<)([^\\s<>/!?]+)((?: \\S+=\"[^\"]*\")+)"));
    QString text = document.toString(1);
    QString sorted;
    auto end = text.size() * 0;
    for (auto i = attributes.globalMatch(text); i.hasNext();) {
        const QRegularExpressionMatch match = i.next();
        QStringList list = match.captured(2).split(str("\" "));
        for (QString &attribute : list) {
            attribute = attribute.trimmed().remove(QLatin1Char('"'));
        }
        list.sort();
        sorted += text.mid(end, match.capturedStart(2) - end) + list.join(QLatin1Char('\n'));
        end = match.capturedEnd(2);
    }
    return sorted + text.mid(end);
}

// Changes an element in one of many small ways.
void change(QDomElement e, int way)
{
    QDomDocument d = e.ownerDocument();
    const QString text = str("a,b,ab,,d e,c,&<>").split(QLatin1Char(',')).at(way / 16 % 7);
    const QString name = QString(QLatin1Char('x')).repeated(way / 112 + 1);
    const std::function<void()> ways[] = { [&] { e.setAttribute(name, text); },
        [&] { e.removeAttribute(name); },
        [&] { e.setAttributeNS(str("urn:") + text, str("n:y") + name, text); },
        [&] { e.appendChild(d.createElementNS(str("urn:x"), str("n:") + name)); },
        [&] { e.appendChild(d.createComment(text)); },
        [&] { e.appendChild(d.createProcessingInstruction(name, text)); },
        [&] { e.removeChild(e.lastChild()); }, [&] { e.appendChild(e.firstChild()); },
        [&] { e.setTagName(name); }, [&] { e.appendChild(d.createElement(name)); },
        [&] { e.appendChild(d.createTextNode(text)); } };
    ways[qMin(way % 16, 10)]();
}

}  // namespace
Q_DECLARE_METATYPE(Kind)

class tst_XMLPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations();
    void newPacket();
    void agentIDs();
    void messages();
    void items_data();
    void items();
    void serverItem();
    void copies();
    void damagedPacket();
    void cycle();
    void equality();
    void lifetime_data();
    void lifetime();
};

void tst_XMLPacket::operations()
{
    using O = XMLPacket;
    QVERIFY((existIn<O, void(const XMLPacket *)>({ &O::init })));
    QVERIFY((existIn<O, int() const>({ &O::getSourceAgentID, &O::getDestinationAgentID })));
    QVERIFY((existIn<O, void(int)>({ &O::setSourceAgentID, &O::setDestinationAgentID })));
    QVERIFY((existIn<O, bool(Type) const>({ &O::hasNodesOfType })));
    QVERIFY((existIn<O, int(Type, Nodes &) const>({ &O::getNodesOfType })));
    QVERIFY((existIn<O, QDomElement(TQPacketable &, bool)>({ &O::append })));
    QVERIFY((existIn<O, void(TQPacketable &, bool)>({ &O::appendV })));
    QCOMPARE(slotOf<XMLPacket &(const XMLPacket &)>(&O::operator=), size_t(13));
    QCOMPARE(slotOf(&O::operator==), size_t(14));
    QCOMPARE(slotOf(&O::operator!=), size_t(15));
    QCOMPARE(slotOf(&Derived<O>::last), size_t(16));
    const QStringList constants { O::HEADER, O::SOURCE, O::DESTINATION, O::BODY, O::AGENT_ID };
    QCOMPARE(constants.join(QLatin1Char(' ')), str("header src dst body agent_id"));
}

void tst_XMLPacket::newPacket()
{
    const XMLPacket packet;
    QVERIFY(packet.isEmpty() && !packet.parent());
    QCOMPARE(packet.getSourceAgentID(), 0);
    QCOMPARE(packet.getDestinationAgentID(), 0);
    const QByteArray text = printed([&] { packet.print(); });
    QCOMPARE(QString::fromUtf8(text),
        QStringLiteral(
            "<tqxml xmlns=\"%1\">\n <header>\n  <src/>\n  <dst/>\n </header>\n <body/>\n</tqxml>\n")
            .arg(XMLObject::TQ_NAMESPACE));
    QCOMPARE(packet.toString().trimmed(), str("<tqxml/>"));
    QCOMPARE(packet.getNode().tagName(), str("tqxml"));
    QCOMPARE(packet.getNodeConst().parentNode().nodeName(), str("dummydoc"));
}

void tst_XMLPacket::agentIDs()
{
    XMLPacket packet;
    for (const int id : { -1, 1, INT_MAX, INT_MIN, 0 }) {
        packet.setSourceAgentID(id);
        packet.setDestinationAgentID(-(id + 1));
        QCOMPARE(packet.getSourceAgentID(), id);
        QCOMPARE(packet.getDestinationAgentID(), -(id + 1));
    }
    XMLMessage message;
    packet.append(message);
    const QDomElement header = documentOf(packet).documentElement().firstChildElement();
    QCOMPARE(canonical(header), str("<header ><src agent_id=0></><dst agent_id=-1></></>"));
}

void tst_XMLPacket::messages()
{
    XMLMessage message;
    QVERIFY(message.getMessage().isNull() && message.isXMLMessage());
    XMLMessage text(str("%1 \xc3\xa4\n<&"));
    text.setMessage(QString());
    XMLPacket packet;
    packet.append(text);
    QCOMPARE(messageOf(packet), str("%1 \xc3\xa4\n<&"));
    QCOMPARE(canonical(text.getNodeConst()), str("<msg msg=%1 \xc3\xa4\n<&></>"));
    message.setNode(QDomElement());
    message.setMessage(str("x"));
    QVERIFY(message.getMessage().isNull() && packet.append(message).isNull());
}

void tst_XMLPacket::items_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("packetable") << kind<XMLPacketable>(XMLObject::XMLOBJECT_PACKETABLE);
    QTest::newRow("action") << kind<XMLAction>(XMLObject::XMLOBJECT_ACTION);
    QTest::newRow("ui") << kind<XMLUI>(XMLObject::XMLOBJECT_UI);
    QTest::newRow("img") << kind<XMLImage>(XMLObject::XMLOBJECT_IMAGE);
    QTest::newRow("msg") << kind<XMLMessage>(XMLObject::XMLOBJECT_MSG);
}

void tst_XMLPacket::items()
{
    QFETCH(Kind, kind);
    const Item item = kind.make();
    XMLPacket packet;
    XMLPacket second;
    QDomElement own = item->getNodeConst();
    QDomElement copy = kind.append(packet, *item);
    QCOMPARE(copy.tagName(), str(QTest::currentDataTag()));
    QCOMPARE(QDomNode(copy), nodesOf(packet, kind.type).back());
    own.setAttribute(str("n"), 1);
    QVERIFY(!copy.hasAttribute(str("n")));
    kind.appendV(packet, *item);
    own.setAttribute(str("n"), 2);
    QCOMPARE(nodesOf(packet, kind.type).back().toElement().attribute(str("n")), str("2"));
    QCOMPARE(QDomNode(own), nodesOf(packet, kind.type).back());
    kind.appendV(second, *item);
    QCOMPARE(nodesOf(packet, kind.type).size(), size_t(1));
    QCOMPARE(QDomNode(item->getNodeConst()), nodesOf(second, kind.type).back());

    copy.appendChild(copy.cloneNode(true));  // only direct children of the body count
    copy.parentNode().insertBefore(
        copy.ownerDocument().createProcessingInstruction(copy.tagName(), str("x")), copy);
    Nodes nodes { copy };
    QCOMPARE(packet.getNodesOfType(kind.type, nodes), 2);
    QCOMPARE(nodes.size(), size_t(3));
    QVERIFY(packet.hasNodesOfType(kind.type) && !packet.isEmpty());
    QVERIFY(!packet.hasNodesOfType(Type(7)));
}

void tst_XMLPacket::serverItem()
{
    const std::unique_ptr<TQPacketable> item(
        PacketableUtil::getPacketable(PACKETDATATYPE_SPECIMEN));
    char text[] = "SI 63\n101 %1\nTI 0\n";
    QVERIFY(item->fromPacket(text, sizeof(text) - 1, false, true));
    item->setName("n");
    XMLPacket packet;
    const QDomElement appended = packet.append(*item, true);
    packet.appendV(*item, false);
    const QString tail = str("hkey=0;%1key=0;name=n><item datatype=63><_101 value=%2></></></>");
    QCOMPARE(QDomNode(appended), nodesOf(packet, XMLObject::XMLOBJECT_PACKETABLE).front());
    QCOMPARE(canonical(appended),
        str("<packetable datatype=63;") + tail.arg(str("is_current=1;"), str("%1")));
    QCOMPARE(canonical(appended.nextSibling()),
        str("<packetable datatype=63;") + tail.arg(QString(), str("%1")));
}

void tst_XMLPacket::copies()
{
    XMLPacket packet;
    packet.setSourceAgentID(3);
    XMLAction one(str("a"), 1, 2);
    XMLMessage two(str("b"));
    packet.append(one);
    packet.append(two);
    XMLPacket copy;
    QCOMPARE(&(copy = packet), &copy);
    QVERIFY(copy == packet && !(copy != packet));
    QCOMPARE(copy.getSourceAgentID(), 3);
    copy.setSourceAgentID(4);
    QVERIFY(copy != packet);
    copy.setSourceAgentID(3);
    copy.append(one);
    QVERIFY(copy != packet && packet != copy);
    XMLPacket swapped;
    swapped.setSourceAgentID(3);
    swapped.append(two);
    swapped.append(one);
    QVERIFY(swapped != packet);
    XMLPacket &same = packet;
    packet = same;
    QVERIFY(packet != copy && packet.hasNodesOfType(XMLObject::XMLOBJECT_ACTION));
    packet.append(one);
    QVERIFY(packet == copy);
    packet.init(nullptr);
    QVERIFY(packet.isEmpty() && packet == XMLPacket());
}

void tst_XMLPacket::damagedPacket()
{
    XMLPacket packet;
    packet.setSourceAgentID(1);
    XMLMessage message(str("x"));
    packet.append(message);
    QDomDocument document = documentOf(packet);
    QDomElement root = document.documentElement();
    root.removeChild(root.firstChild());
    root.insertBefore(
        document.createProcessingInstruction(str("header"), str("x")), root.firstChild());
    root.replaceChild(document.createComment(str("body")), root.lastChild());
    XMLPacket copy;
    copy = packet;
    copy.setSourceAgentID(1);
    copy.appendV(message);
    TQPacketable item(PACKETDATATYPE_SPECIMEN);
    QVERIFY(copy.append(message).isNull() && copy.append(item, true).isNull() && copy.isEmpty());
    QVERIFY(nodesOf(copy, XMLObject::XMLOBJECT_MSG).empty());
    QCOMPARE(copy.getSourceAgentID(), 0);
    QVERIFY(copy == packet);
}

// An element that the body lies in is not moved into the body.
void tst_XMLPacket::cycle()
{
    XMLPacket packet;
    XMLMessage message(str("x"));
    packet.append(message);
    XMLUI page;
    QDomElement e = page.getNodeConst();
    const QDomDocument document = documentOf(packet);
    e.appendChild(document.documentElement());
    packet.appendV(page);
    QVERIFY(e.parentNode().nodeName() != XMLPacket::BODY);
    QCOMPARE(messageOf(packet), str("x"));
    QVERIFY(packet.append(page).firstChildElement().tagName() == str("tqxml"));
}

// Packets are equal when their texts are, up to the order of attributes.
void tst_XMLPacket::equality()
{
    std::mt19937 engine(16);
    const auto random = [&engine](int limit) { return int(engine() % unsigned(limit)); };
    int equal = 0;
    int different = 0;
    for (int run = 0; run < 6000; ++run) {
        XMLPacket packets[2];
        QDomElement elements[2];
        for (int i = 0; i < 2; ++i) {
            XMLMessage message(str("m"));
            elements[i] = packets[i].append(message);
            const QString names = i ? str("cba") : str("abc");
            for (const QChar name : names) {
                elements[i].setAttribute(name, QString(name.unicode() - 'a', name));
            }
        }
        for (int steps = random(5); steps > 0; --steps) {
            const int way = random(16 * 7 * 3);
            const bool below = random(3) == 0;
            for (QDomElement &e : elements) {
                QDomElement child = e.lastChildElement();
                change(below && !child.isNull() ? child : e, way);
            }
        }
        for (int steps = random(3); steps > 0; --steps) {
            change(elements[random(2)], random(16 * 7 * 3));
        }
        const bool isEqual = packets[0] == packets[1];
        const QString texts[] = { sortedText(elements[0].ownerDocument()),
            sortedText(elements[1].ownerDocument()) };
        QVERIFY2(isEqual == (texts[0] == texts[1]), qPrintable(texts[0] + texts[1]));
        QCOMPARE(packets[0] != packets[1], !isEqual);
        XMLPacket copy;
        copy = packets[0];
        QVERIFY2(copy == packets[0], qPrintable(texts[0]));
        ++(isEqual ? equal : different);
    }
    QVERIFY2(equal > 1500 && different > 1500, qPrintable(QString::number(equal)));
}

void tst_XMLPacket::lifetime_data() { items_data(); }

// Packet and moved item may go in either order, and the item may move on.
void tst_XMLPacket::lifetime()
{
    QFETCH(Kind, kind);
    const auto use = [&](XMLObject &item) {
        QDomElement e = item.getNodeConst();
        e.setAttribute(str("n"), str("1"));
        XMLObject::createElementV(e, str("child"));
        XMLPacket other;
        kind.append(other, item);
        kind.make()->setNode(e);
        QVERIFY(item.getNode().hasAttribute(str("n")) && !item.toString().isEmpty());
    };
    Item item = kind.make();
    {
        XMLPacket first;
        kind.appendV(first, *item);
        use(*item);
    }
    use(*item);
    XMLPacket second;
    XMLPacket copy;
    kind.appendV(second, *item);
    copy = second;
    second.init(nullptr);  // drops the document that both share
    use(*item);
    kind.appendV(second, *item);
    kind.appendV(second, *item);
    use(*item);
    item.reset();
    QVERIFY(second.hasNodesOfType(kind.type) && second != copy);
    copy = second;
    QVERIFY(second == copy);
}

QTEST_GUILESS_MAIN(tst_XMLPacket)
#include "tst_xmlpacket.moc"
