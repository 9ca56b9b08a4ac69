#include "xmlpacket.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <climits>

namespace {

// A packet with one message, and the message's element.
struct Message
{
    Message()
    {
        XMLMessage message(str("m"));
        element = packet.append(message);
    }
    XMLPacket packet;
    QDomElement element;
};

// A document's text with the attributes of each tag in order: equal packets have the same.
QString sortedText(const QDomElement &e)
{
    const QString text = e.ownerDocument().toString(1).replace(str(">"), str(" >"));
    QStringList tags = text.split(QLatin1Char('<'));
    for (QString &tag : tags) {
        QStringList words = tag.replace(str("/ >"), str(" / >")).split(QLatin1Char(' '));
        words.sort();
        tag = words.join(QLatin1Char(' '));
    }
    return tags.join(QLatin1Char('<'));
}

// Changes an element, or one below, in some small way.
void change(QDomElement e, Random &random)
{
    const QDomElement below = e.lastChildElement();
    if (!below.isNull() && random.onceIn(3)) {
        return change(below, random);
    }
    QDomDocument d = e.ownerDocument();
    const QString text =
        random.oneOf(QStringList { str("a"), str("b"), str("ab"), str("&<>"), str("") });
    const QString name = random.oneOf(QStringList { str("x"), str("xx") });
    const std::function<void()> changes[] = { [&] { e.setAttribute(name, text); },
        [&] { e.setAttributeNS(text, str("n:y") + name, text); }, [&] { e.removeAttribute(name); },
        [&] { e.setTagName(name); }, [&] { e.removeChild(e.lastChild()); },
        [&] { e.appendChild(e.firstChild()); },
        [&] { e.appendChild(d.createElementNS(str("urn:") + text, str("n:x"))); },
        [&] { e.appendChild(d.createElement(name)); },
        [&] { e.appendChild(d.createProcessingInstruction(name, text)); },
        [&] { e.appendChild(d.createComment(text)); },
        [&] { e.appendChild(d.createCDATASection(text)); },
        [&] { e.appendChild(d.createTextNode(text)); },
        [&] { e.appendChild(d.createTextNode(text)); } };
    random.oneOf(changes)();
}

}  // namespace

class tst_XMLPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anItemIsCopiedByAppendAndMovedByAppendV();
    void idsAreKeptAndCount();
    void serverItemsAreConverted();
    void aPacketThatItsBodyLiesInIsNotMoved();

    void packetsAreEqualWhenTheirTextsAre();
    void whatTheTextDoesNotShowDoesNotCount();
    void idsInAReplacedHeaderCount();
    void manyAttributesAreComparedInAnyOrder();
    void aDeepTreeIsCutInACopy();
    void withoutABodyNothingIsAppended();

private:
    template<typename Item>
    static void checkItem(XMLObject::XMLOBJECT_TYPE type);
};

void tst_XMLPacket::anItemIsCopiedByAppendAndMovedByAppendV()
{
    checkItem<XMLPacketable>(XMLObject::XMLOBJECT_PACKETABLE);
    checkItem<XMLAction>(XMLObject::XMLOBJECT_ACTION);
    checkItem<XMLUI>(XMLObject::XMLOBJECT_UI);
    checkItem<XMLImage>(XMLObject::XMLOBJECT_IMAGE);
    checkItem<XMLMessage>(XMLObject::XMLOBJECT_MSG);
}

// A moved item may go before its packets and after them.
template<typename Item>
void tst_XMLPacket::checkItem(XMLObject::XMLOBJECT_TYPE type)
{
    auto item = std::make_unique<Item>();
    auto packet = std::make_unique<XMLPacket>();
    QDomElement own = item->getNodeConst();
    const QDomElement copy = packet->append(*item);
    own.setAttribute(str("n"), 1);
    QVERIFY(!copy.hasAttribute(str("n")));
    packet->appendV(*item);
    QCOMPARE(item->getNodeConst(), own);
    std::list<QDomNode> nodes { QDomNode() };
    QCOMPARE(packet->getNodesOfType(type, nodes), 2);
    QCOMPARE(nodes.back(), own);
    packet.reset();
    QVERIFY(!own.ownerDocument().isNull());
    XMLObject::createElementV(own, str("child"));
    QVERIFY(item->getNode().hasChildNodes());
    XMLPacket first;
    XMLPacket second;
    first.appendV(*item);
    second.appendV(*item);  // takes it from the first
    item.reset();
    QVERIFY(!first.hasNodesOfType(type));
    QVERIFY(first.isEmpty());
    QVERIFY(second.hasNodesOfType(type));
    QVERIFY(!second.isEmpty());
}

void tst_XMLPacket::idsAreKeptAndCount()
{
    XMLPacket packet;
    QCOMPARE(packet.getSourceAgentID(), 0);
    for (const int id : { -1, 1, INT_MAX, INT_MIN, 0 }) {
        XMLPacket copy;
        copy = packet;
        packet.setSourceAgentID(id);
        QVERIFY(copy != packet);
        copy = packet;
        QVERIFY(copy == packet);
        packet.setDestinationAgentID(~id);
        QVERIFY(copy != packet);
        copy = packet;
        QCOMPARE(copy.getSourceAgentID(), id);
        QCOMPARE(copy.getDestinationAgentID(), ~id);
    }
    packet.init(nullptr);
    QVERIFY(packet == XMLPacket());
}

void tst_XMLPacket::serverItemsAreConverted()
{
    XMLPacket packet;
    TQPacketable server(PACKETDATATYPE_OUTPUT);
    server.dbkey = { 1, 8 };
    const QDomElement current = packet.append(server, true);
    packet.appendV(server, false);
    const QString form = str("<packetable datatype='8' hkey='8'%1 key='1'>"
                             "<item datatype='8'/></packetable>");
    QCOMPARE(xmlOf(current), form.arg(str(" is_current='1'")));
    QCOMPARE(xmlOf(current.nextSibling()), form.arg(QString()));
}

void tst_XMLPacket::aPacketThatItsBodyLiesInIsNotMoved()
{
    Message whole;
    XMLUI page;
    page.getNodeConst().toElement().appendChild(whole.element.ownerDocument().documentElement());
    whole.packet.appendV(page);
    QCOMPARE(whole.packet.append(page).firstChildElement().tagName(), str("tqxml"));
}

// Up to the order of attributes.
void tst_XMLPacket::packetsAreEqualWhenTheirTextsAre()
{
    Random random;
    int equal = 0;
    for (int run = 0; run < 6000; ++run) {
        Message first;
        Message second;
        for (int steps = random.below(7); steps > 0; --steps) {
            Random same = random;
            change(first.element, random);
            change(second.element, random.onceIn(8) ? random : same);
        }
        const QString texts[] = { sortedText(first.element), sortedText(second.element) };
        const bool isEqual = first.packet == second.packet;
        QVERIFY2(isEqual == (texts[0] == texts[1]), qPrintable(texts[0] + texts[1]));
        QCOMPARE(first.packet != second.packet, !isEqual);
        equal += isEqual;
    }
    QVERIFY2(equal > 1500 && equal < 5000, qPrintable(QString::number(equal)));
}

// An empty text writes nothing beside a CDATA section. An empty namespace is written, none is not.
void tst_XMLPacket::whatTheTextDoesNotShowDoesNotCount()
{
    Message plain;
    Message withEmpty;
    const auto append = [](Message &message, const QDomNode &node) {
        message.element.appendChild(node);
    };
    append(plain, plain.element.ownerDocument().createCDATASection(str("x")));
    QDomDocument own = withEmpty.element.ownerDocument();
    append(withEmpty, own.createTextNode(QString()));
    append(withEmpty, own.createCDATASection(str("x")));
    append(withEmpty, own.createTextNode(QString()));
    QVERIFY(plain.packet == withEmpty.packet);
    QVERIFY(withEmpty.packet == plain.packet);
    QDomDocument document = plain.element.ownerDocument();
    plain.element.appendChild(document.createElement(str("x")));
    withEmpty.element.appendChild(document.createElementNS(str(""), str("x")));
    QVERIFY(plain.packet != withEmpty.packet);
}

void tst_XMLPacket::idsInAReplacedHeaderCount()
{
    Message plain;
    plain.packet.setSourceAgentID(2);
    Message other;  // with a source that it did not make
    QDomNode header = other.element.parentNode().previousSibling();
    header.replaceChild(Xml("<src agent_id='2'/>").root, header.firstChild());
    QVERIFY(plain.packet == other.packet);
    QVERIFY(other.packet == plain.packet);
}

void tst_XMLPacket::manyAttributesAreComparedInAnyOrder()
{
    const auto compare = [](const QString &prefix, int count) {
        Message up;
        Message down;
        for (int i = 0; i < count; ++i) {
            const QString first = QString::number(i);
            const QString last = QString::number(count - 1 - i);
            up.element.setAttribute(prefix + first, first);
            down.element.setAttribute(prefix + last, last);
        }
        QVERIFY(up.packet == down.packet);
        up.element.attributes().item(count / 2).setNodeValue(str("\" b=\""));
        QVERIFY(up.packet != down.packet);
    };
    compare(str("a"), 200);
    compare(str("x:a"), 200);
    QVERIFY(isLinear(10000, [&](int count) { compare(str("a"), count); }));
}

// Copying takes no more stack for a deep tree than for a shallow one.
void tst_XMLPacket::aDeepTreeIsCutInACopy()
{
    Message deep;
    QDomDocument document = deep.element.ownerDocument();
    deep.element.appendChild(deepTree(document, str("x"), 30000));
    runOnSmallStack([&] {
        XMLPacket copy;
        copy = deep.packet;
        QVERIFY(copy != deep.packet);
        QVERIFY(copy.hasNodesOfType(XMLObject::XMLOBJECT_MSG));
    });
}

void tst_XMLPacket::withoutABodyNothingIsAppended()
{
    Message damaged;
    QDomElement root = damaged.element.ownerDocument().documentElement();
    root.removeChild(damaged.element.parentNode());
    XMLPacket copy;
    copy = damaged.packet;
    XMLMessage message(str("x"));
    copy.appendV(message);
    QVERIFY(copy.append(message).isNull());
    QVERIFY(copy.isEmpty());
    QVERIFY(copy == damaged.packet);
}

QTEST_GUILESS_MAIN(tst_XMLPacket)
#include "tst_xmlpacket.moc"
