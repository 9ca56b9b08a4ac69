#include "xmlpacket.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QBuffer>

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

// A device that is full after ten bytes.
class FullDevice : public QBuffer
{
protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        return QBuffer::writeData(data, qMin(length, 10 - pos()));
    }
};

}  // namespace

class tst_XMLPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anItemIsCopiedByAppendAndMovedByAppendV();
    void anItemThatTakesOtherDataLeavesItsPacketAlone();
    void aPacketThatItsBodyLiesInIsNotMoved();

    void aPacketIsWrittenAsXml();
    void whatADeviceDoesNotTakeIsNotWritten();

    void everyKindOfNodeCounts();
    void whatTheTextDoesNotShowDoesNotCount();
    void idsInAReplacedHeaderCount();
    void manyAttributesAreComparedInAnyOrder();
    void aDeepTreeIsCutInACopy();
    void withoutABodyNothingIsAppended();
};

void tst_XMLPacket::anItemIsCopiedByAppendAndMovedByAppendV()
{
    XMLMessage message(str("first"));
    XMLPacket packet;
    const QDomElement copy = packet.append(message);
    message.setMessage(str("second"));
    QCOMPARE(xmlOf(copy), str("<msg msg='first'/>"));
    packet.appendV(message);
    message.setMessage(str("third"));
    std::list<QDomNode> nodes { QDomNode() };
    QCOMPARE(packet.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes), 2);
    QCOMPARE(xmlOf(nodes.back()), str("<msg msg='third'/>"));
    XMLPacket other;
    other.appendV(message);  // takes it from the first
    QCOMPARE(packet.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes), 1);
    QVERIFY(other.hasNodesOfType(XMLObject::XMLOBJECT_MSG));
    QVERIFY(!other.isEmpty());
}

void tst_XMLPacket::anItemThatTakesOtherDataLeavesItsPacketAlone()
{
    XMLPacketable item;
    XMLPacket packet;
    packet.appendV(item);
    XMLPacketable other;
    other.setName(str("p. 12"));
    item.setData(other.getNodeConst());
    std::list<QDomNode> nodes;
    QCOMPARE(packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes), 1);
    QCOMPARE(xmlOf(nodes.front()), str("<packetable/>"));
    QCOMPARE(item.getName(), str("p. 12"));
}

void tst_XMLPacket::aPacketThatItsBodyLiesInIsNotMoved()
{
    Message whole;
    XMLUI page;
    page.getNodeConst().toElement().appendChild(whole.element.ownerDocument().documentElement());
    whole.packet.appendV(page);
    QCOMPARE(whole.packet.append(page).firstChildElement().tagName(), str("tqxml"));
}

void tst_XMLPacket::aPacketIsWrittenAsXml()
{
    XMLPacket packet;
    packet.setSourceAgentID(3);
    packet.setDestinationAgentID(-1);
    XMLMessage message(str("Fish & chips"));
    packet.append(message);
    TQPacketable press(PACKETDATATYPE_OUTPUT);
    press.dbkey = { 1, 8 };
    press.setName("Press");
    packet.append(press, true);
    QBuffer written;
    QVERIFY(written.open(QIODevice::WriteOnly));
    QVERIFY(packet.write(&written));
    QCOMPARE(str(written.data().constData()),
        str("<tqxml xmlns=\"urn:tqxml:packet:1\">\n"
            " <header>\n"
            "  <src agent_id=\"3\"/>\n"
            "  <dst agent_id=\"-1\"/>\n"
            " </header>\n"
            " <body>\n"
            "  <msg msg=\"Fish &amp; chips\"/>\n"
            "  <packetable datatype=\"8\" hkey=\"8\" is_current=\"1\" key=\"1\" name=\"Press\">\n"
            "   <item datatype=\"8\"/>\n"
            "  </packetable>\n"
            " </body>\n"
            "</tqxml>\n"));
}

void tst_XMLPacket::whatADeviceDoesNotTakeIsNotWritten()
{
    Message message;
    QBuffer closed;
    FullDevice full;
    QVERIFY(full.open(QIODevice::WriteOnly));
    QVERIFY(!message.packet.write(nullptr));
    QVERIFY(!message.packet.write(&closed));
    QVERIFY(!message.packet.write(&full));
}

// Each of these makes another packet, whatever is compared with it.
void tst_XMLPacket::everyKindOfNodeCounts()
{
    const QStringList contents { str(""), str("a"), str("ab"), str("<a/>"), str("<a/><b/>"),
        str("<b/><a/>"), str("<a><b/></a>"), str("<a b='1'/>"), str("<a c='1'/>"),
        str("<a b='1' c='1'/>"), str("<a b='c'/>"), str("<!--a-->"), str("<?a b?>"), str("<?b b?>"),
        str("<![CDATA[a]]>"), str("<n:a xmlns:n='urn:1'/>"), str("<n:a xmlns:n='urn:2'/>"),
        str("<a n:b='1' xmlns:n='urn:1'/>") };
    for (const QString &one : contents) {
        for (const QString &other : contents) {
            Message first;
            Message second;
            first.element.appendChild(Xml(str("<x>%1</x>").arg(one)).root);
            second.element.appendChild(Xml(str("<x>%1</x>").arg(other)).root);
            QVERIFY2((first.packet == second.packet) == (one == other), qPrintable(one + other));
            QVERIFY2((first.packet != second.packet) == (one != other), qPrintable(one + other));
        }
    }
}

// Two texts are written as one, an empty one not at all beside a CDATA section. An empty namespace
// is written, none is not.
void tst_XMLPacket::whatTheTextDoesNotShowDoesNotCount()
{
    Message whole;
    Message parts;
    QDomDocument document = whole.element.ownerDocument();
    whole.element.appendChild(document.createTextNode(str("ab")));
    whole.element.appendChild(document.createCDATASection(str("y")));
    QDomDocument other = parts.element.ownerDocument();
    parts.element.appendChild(other.createTextNode(str("a")));
    parts.element.appendChild(other.createTextNode(str("b")));
    parts.element.appendChild(other.createCDATASection(str("y")));
    parts.element.appendChild(other.createTextNode(QString()));
    QVERIFY(whole.packet == parts.packet);
    QVERIFY(parts.packet == whole.packet);
    whole.element.appendChild(document.createElement(str("x")));
    parts.element.appendChild(other.createElementNS(str(""), str("x")));
    QVERIFY(whole.packet != parts.packet);
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
    const auto compare = [](int count) {
        Message up;
        Message down;
        for (int i = 0; i < count; ++i) {
            up.element.setAttribute(str("a%1").arg(i), i);
            down.element.setAttribute(str("a%1").arg(count - 1 - i), count - 1 - i);
        }
        QVERIFY(up.packet == down.packet);
        up.element.setAttribute(str("a0"), str("\" b=\""));
        QVERIFY(up.packet != down.packet);
    };
    QVERIFY(isLinear(10000, compare));
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
}

QTEST_GUILESS_MAIN(tst_XMLPacket)
#include "tst_xmlpacket.moc"
