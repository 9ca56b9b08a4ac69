#include "xmlpacket.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QTemporaryFile>

#include <climits>
#include <cstdio>

#include <unistd.h>

namespace {

// What an operation writes to the standard output.
QString printed(const std::function<void()> &print)
{
    QTemporaryFile file;
    const int saved = dup(STDOUT_FILENO);
    if (std::fflush(stdout) != 0 || !file.open() || dup2(file.handle(), STDOUT_FILENO) < 0) {
        qFatal("cannot redirect the standard output");
    }
    print();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    file.seek(0);
    return QString::fromUtf8(file.readAll());
}

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

template<typename Item>
void appendCopiesAndAppendVMoves(XMLObject::XMLOBJECT_TYPE type)
{
    Item item;
    XMLPacket packet;
    QDomElement own = item.getNodeConst();
    const QDomElement copy = packet.append(item);
    const QDomNode body = copy.parentNode();
    own.setAttribute(str("n"), 1);
    QVERIFY(!copy.hasAttribute(str("n")));
    packet.appendV(item);
    QCOMPARE(body.lastChild(), own);
    QCOMPARE(item.getNodeConst(), own);
    std::list<QDomNode> nodes { body };
    QCOMPARE(packet.getNodesOfType(type, nodes), 2);
    QCOMPARE(nodes.size(), size_t(3));
    XMLPacket second;
    second.appendV(item);  // takes it from the first
    QCOMPARE(body.lastChild(), copy);
    QVERIFY(second.hasNodesOfType(type));
    QVERIFY(!second.isEmpty());
}

// A moved item may go before its packet, and after it: also where that gave up its document.
template<typename Item>
void itemAndPacketMayGoInEitherOrder(XMLObject::XMLOBJECT_TYPE)
{
    auto item = std::make_unique<Item>();
    const auto use = [&item] {
        QDomElement e = item->getNodeConst();
        XMLObject::createElementV(e, str("child"));
        XMLPacket().append(*item);
        QVERIFY(item->getNode().hasChildNodes());
    };
    XMLPacket().appendV(*item);
    use();
    XMLPacket packet;
    packet.appendV(*item);
    packet.init(nullptr);
    use();
    packet.appendV(*item);
    item.reset();
    XMLPacket copy;
    copy = packet;
    QVERIFY(!copy.isEmpty());
}

}  // namespace

class tst_XMLPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyPacketIsPrintedWithItsHeader();
    void idsAreKept();
    void itemsAreCopiedOrMoved();
    void serverItemsAreConverted();
    void whatIsNoItemIsLeftAlone();
    void aPacketThatItsBodyLiesInIsNotMoved();
    void aMessageHoldsOneText();

    void packetsAreEqualWhenTheirTextsAre();
    void whatTheTextDoesNotShowDoesNotCount();
    void idsInAReplacedHeaderCount();
    void manyAttributesAreComparedInAnyOrder();
    void aDeepTreeIsCutInACopy();
    void withoutABodyNothingIsAppended();
    void itemsOutliveTheirPackets();

private:
    using Check = void (*)(XMLObject::XMLOBJECT_TYPE);
    static void checkEachKind(const QList<Check> &checks)
    {
        for (int i = 0; i < checks.size(); ++i) {
            checks[i](XMLObject::XMLOBJECT_TYPE(XMLObject::XMLOBJECT_PACKETABLE + i));
        }
    }
};

void tst_XMLPacket::anEmptyPacketIsPrintedWithItsHeader()
{
    const XMLPacket packet;
    QCOMPARE(printed([&] { packet.print(); }),
        str("<tqxml xmlns=\"urn:tqxml:packet:1\">\n <header>\n  <src/>\n  <dst/>\n </header>\n"
            " <body/>\n</tqxml>\n"));
    QCOMPARE(packet.toString().trimmed(), str("<tqxml/>"));  // that of the object itself
    XMLPacket other;
    XMLMessage message(str("\xc3\xa4"));
    other.append(message);
    QVERIFY(printed([&] { other.print(); }).contains(str("<msg msg=\"\xc3\xa4\"/>")));
}

void tst_XMLPacket::idsAreKept()
{
    XMLPacket packet;
    QCOMPARE(packet.getSourceAgentID(), 0);
    QCOMPARE(packet.getDestinationAgentID(), 0);
    for (const int id : { -1, 1, INT_MAX, INT_MIN, 0 }) {
        XMLPacket copy;
        copy = packet;
        QVERIFY(copy == packet);
        packet.setSourceAgentID(id);
        QVERIFY(copy != packet);
        copy = packet;
        packet.setDestinationAgentID(~id);
        QVERIFY(copy != packet);
        copy = packet;
        const XMLPacket &same = copy;
        copy = same;
        QCOMPARE(copy.getSourceAgentID(), id);
        QCOMPARE(copy.getDestinationAgentID(), ~id);
        QVERIFY(copy.isEmpty());
    }
    packet.init(nullptr);
    QVERIFY(packet == XMLPacket());
}

void tst_XMLPacket::itemsAreCopiedOrMoved()
{
    checkEachKind({ appendCopiesAndAppendVMoves<XMLPacketable>,
        appendCopiesAndAppendVMoves<XMLAction>, appendCopiesAndAppendVMoves<XMLUI>,
        appendCopiesAndAppendVMoves<XMLImage>, appendCopiesAndAppendVMoves<XMLMessage> });
}

void tst_XMLPacket::itemsOutliveTheirPackets()
{
    checkEachKind({ itemAndPacketMayGoInEitherOrder<XMLPacketable>,
        itemAndPacketMayGoInEitherOrder<XMLAction>, itemAndPacketMayGoInEitherOrder<XMLUI>,
        itemAndPacketMayGoInEitherOrder<XMLImage>, itemAndPacketMayGoInEitherOrder<XMLMessage> });
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

void tst_XMLPacket::whatIsNoItemIsLeftAlone()
{
    Message whole;
    QDomNode body = whole.element.parentNode();
    QDomDocument document = body.ownerDocument();
    whole.element.appendChild(whole.element.cloneNode());  // which is no child of the body
    body.appendChild(document.createElement(str("action")));
    std::list<QDomNode> nodes;
    QCOMPARE(whole.packet.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes), 1);
    QVERIFY(!whole.packet.hasNodesOfType(XMLObject::XMLOBJECT_TYPE(7)));
}

void tst_XMLPacket::aPacketThatItsBodyLiesInIsNotMoved()
{
    Message whole;
    XMLUI page;
    page.getNodeConst().toElement().appendChild(whole.element.ownerDocument().documentElement());
    whole.packet.appendV(page);
    QCOMPARE(whole.packet.append(page).firstChildElement().tagName(), str("tqxml"));
}

void tst_XMLPacket::aMessageHoldsOneText()
{
    XMLMessage message(str("%1 \xc3\xa4\n<&"));
    message.setMessage(QString());  // leaves the earlier one
    QCOMPARE(message.getMessage(), str("%1 \xc3\xa4\n<&"));
    message.setNode(QDomElement());
    message.setMessage(str("x"));
    QVERIFY(message.getMessage().isNull());
    QVERIFY(XMLPacket().append(message).isNull());
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
    for (Message *message : { &plain, &withEmpty }) {
        QDomDocument document = message->element.ownerDocument();
        if (message == &withEmpty) {
            message->element.appendChild(document.createTextNode(QString()));
        }
        message->element.appendChild(document.createCDATASection(str("x")));
    }
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
    QDomDocument document = damaged.element.ownerDocument();
    document.documentElement().removeChild(damaged.element.parentNode());
    XMLPacket copy;
    copy = damaged.packet;
    XMLMessage message(str("x"));
    TQPacketable item(PACKETDATATYPE_OUTPUT);
    copy.appendV(message);
    QVERIFY(copy.append(message).isNull());
    QVERIFY(copy.append(item, true).isNull());
    QVERIFY(copy.isEmpty());
    QVERIFY(copy == damaged.packet);
}

QTEST_GUILESS_MAIN(tst_XMLPacket)
#include "tst_xmlpacket.moc"
