#include "xmlpacket.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QProcess>

#include <climits>
#include <ctime>
#include <random>

#include <dlfcn.h>

using Type = XMLObject::XMLOBJECT_TYPE;

namespace {

// An item is copied by append() and moved by appendV().
template<typename T>
void checkItem(Type type)
{
    T item;
    XMLPacket packet;
    QDomElement own = item.getNodeConst();
    QDomElement copy = packet.append(item);
    QDomNode body = copy.parentNode();
    own.setAttribute(str("n"), 1);
    QVERIFY(body.lastChild() == copy);
    QVERIFY(!copy.hasAttribute(str("n")));
    packet.appendV(item);
    QVERIFY(body.lastChild() == own);
    QVERIFY(item.getNodeConst() == own);
    XMLPacket second;
    second.appendV(item);
    QVERIFY(body.lastChild() == copy);
    QVERIFY(second.hasNodesOfType(type));
    QVERIFY(own.parentNode() != body);
    copy.appendChild(copy.cloneNode(true));  // only direct children of the body count
    body.appendChild(copy.ownerDocument().createProcessingInstruction(copy.tagName(), str("x")));
    std::list<QDomNode> nodes { body };
    QVERIFY(packet.getNodesOfType(type, nodes) == 2);
    QVERIFY(nodes.size() == 3);
    QVERIFY(packet.hasNodesOfType(type));
    QVERIFY(!packet.isEmpty());
    QVERIFY(!packet.hasNodesOfType(Type(7)));
}

// Packet and moved item may go in either order, and the item may move on.
template<typename T>
void checkLifetime()
{
    auto item = std::make_unique<T>();
    const auto use = [&item] {
        QDomElement e = item->getNodeConst();
        XMLObject::createElementV(e, str("child"));
        XMLPacket().append(*item);
        T().setNode(e);
        QVERIFY(item->getNode().hasChildNodes());
        QVERIFY(!e.ownerDocument().isNull());
    };
    XMLPacket().appendV(*item);
    use();
    XMLPacket packet;
    XMLPacket copy;
    packet.appendV(*item);
    use();
    copy = packet;
    packet.init(nullptr);  // drops the document that both share
    use();
    packet.appendV(*item);
    item.reset();
    QVERIFY(!packet.isEmpty());
    QVERIFY(packet != copy);
}

// A document's text with the attributes of each tag in order.
QString sortedText(const QDomDocument &document)
{
    QStringList tags = document.toString(1).replace(str(">"), str(" >")).split(QLatin1Char('<'));
    for (QString &tag : tags) {
        QStringList words = tag.replace(str("/ >"), str(" / >")).split(QLatin1Char(' '));
        words.sort();
        tag = words.join(QLatin1Char(' '));
    }
    return tags.join(QLatin1Char('<'));
}

// Changes an element in one of 12 small ways, some likelier, with one of 7 texts and 3 names.
void change(QDomElement e, unsigned int way)
{
    QDomDocument d = e.ownerDocument();
    const QString text = str("a,b,ab,,de,c,&<>").split(QLatin1Char(',')).at(int(way / 16 % 7));
    const QString name = QString(int(way / 112 + 1), QLatin1Char('x'));
    const std::function<void()> ways[] = { [&] { e.setAttribute(name, text); },
        [&] { e.removeAttribute(name); }, [&] { e.setAttributeNS(text, str("n:y") + name, text); },
        [&] { e.appendChild(d.createElementNS(str("urn:") + text, str("n:x"))); },
        [&] { e.appendChild(d.createComment(text)); },
        [&] { e.appendChild(d.createProcessingInstruction(name, text)); },
        [&] { e.removeChild(e.lastChild()); }, [&] { e.appendChild(e.firstChild()); },
        [&] { e.setTagName(name); }, [&] { e.appendChild(d.createElement(name)); },
        [&] { e.appendChild(d.createCDATASection(text)); },
        [&] { e.appendChild(d.createTextNode(text)); } };
    ways[qMin(way % 16, 11U)]();
}

// Whether copies equal their original, in whatever order QtXml keeps their many attributes.
bool haveEqualCopies()
{
    XMLUI page;
    QDomElement e = page.getNodeConst();
    for (int i = 0; i < 60; ++i) {
        QDomElement child = XMLObject::createElement(e, str("x"));
        child.setAttribute(str("first"), i);
        child.setAttribute(str("a%1").arg(i), i);
        e.setAttribute(str("a%1").arg(i), i);
    }
    XMLPacket packets[3];
    packets[0].append(page);
    packets[1] = packets[0];
    packets[2].appendV(page);
    return packets[0] == packets[1] && packets[0] == packets[2];
}

}  // namespace

class tst_XMLPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void header();
    void items();
    void damagedPacket();
    void equality();
    void whatTheTextShowsCounts();
    void manyAttributes();
    void aDeepTreeIsCutInACopy();
    void hashSeeds();
    void lifetime();
};

void tst_XMLPacket::header()
{
    XMLPacket packet;
    const char form[] = "<tqxml xmlns=\"%1\">\n <header>\n  <src/>\n  <dst/>\n </header>\n"
                        " <body/>\n</tqxml>\n";
    QCOMPARE(str(printed([&] { packet.print(); })), str(form).arg(XMLObject::TQ_NAMESPACE));
    QCOMPARE(packet.toString().trimmed(), str("<tqxml/>"));
    QVERIFY(packet.getSourceAgentID() == 0);
    QVERIFY(packet.getDestinationAgentID() == 0);
    XMLPacket copy;
    for (const int id : { -1, 1, INT_MAX, INT_MIN, 0 }) {
        packet.setSourceAgentID(id);
        QVERIFY(packet != copy);
        QVERIFY(&(copy = packet) == &copy);
        QVERIFY(packet == copy);
        packet.setDestinationAgentID(~id);
        QVERIFY(packet != copy);
        QVERIFY(packet.isEmpty());
        const XMLPacket &same = packet;
        packet = same;
        QVERIFY(packet.getSourceAgentID() == id);
        QVERIFY(packet.getDestinationAgentID() == ~id);
    }
    packet.init(nullptr);
    QVERIFY(packet == XMLPacket());
}

void tst_XMLPacket::items()
{
    int type = XMLObject::XMLOBJECT_PACKETABLE;
    for (const auto check : { checkItem<XMLPacketable>, checkItem<XMLAction>, checkItem<XMLUI>,
             checkItem<XMLImage>, checkItem<XMLMessage> }) {
        check(Type(type++));
    }
    XMLPacket packet;
    TQPacketable server(PACKETDATATYPE_OUTPUT);
    const QDomElement current = packet.append(server, true);
    packet.appendV(server, false);
    QCOMPARE(canonical(current.nextSibling()), canonical(current).remove(str("is_current=1;")));
    QVERIFY(current.hasAttribute(XMLPacketable::IS_CURRENT));
    XMLMessage message(str("%1 \xc3\xa4\n<&"));
    message.setMessage(QString());
    QCOMPARE(canonical(message.getNodeConst()), str("<msg msg=%1></>").arg(message.getMessage()));
    message.setNode(QDomElement());
    message.setMessage(str("x"));
    QVERIFY(message.getMessage().isNull());
    QVERIFY(packet.append(message).isNull());
}

void tst_XMLPacket::damagedPacket()
{
    XMLPacket packet;
    packet.setSourceAgentID(1);
    XMLMessage message(str("x"));
    QDomDocument document = packet.append(message).ownerDocument();
    QDomElement root = document.documentElement();
    XMLUI page;  // an element that the body lies in is not moved into the body
    page.getNodeConst().toElement().appendChild(root);
    packet.appendV(page);
    QCOMPARE(packet.append(page).firstChildElement().tagName(), str("tqxml"));
    document.appendChild(root);
    root.replaceChild(
        document.createProcessingInstruction(str("header"), str("x")), root.firstChild());
    root.replaceChild(document.createComment(str("body")), root.lastChild());
    XMLPacket other;  // with a source that it did not make
    XMLPacket plain;
    QDomNode header = other.append(message).parentNode().previousSibling();
    plain.append(message);
    plain.setSourceAgentID(2);
    header.replaceChild(Xml("<src agent_id='2'/>").root, header.firstChild());
    QVERIFY(plain == other);
    QVERIFY(other == plain);
    XMLPacket copy;
    copy = packet;
    copy.setSourceAgentID(1);
    copy.appendV(message);
    TQPacketable item(PACKETDATATYPE_OUTPUT);
    QVERIFY(copy.append(message).isNull());
    QVERIFY(copy.append(item, true).isNull());
    QVERIFY(copy.isEmpty());
    QVERIFY(!copy.hasNodesOfType(XMLObject::XMLOBJECT_MSG));
    QVERIFY(copy.getSourceAgentID() == 0);
    QVERIFY(copy == packet);
}

// Packets are equal when their texts are, up to the order of attributes.
void tst_XMLPacket::equality()
{
    std::mt19937 engine(16);
    int equal = 0;
    for (int run = 0; run < 6000; ++run) {
        XMLPacket packets[2];
        XMLMessage message(str("m"));
        QDomElement elements[] = { packets[0].append(message), packets[1].append(message) };
        for (auto steps = engine() % 7; steps > 0; --steps) {
            const auto way = static_cast<unsigned int>(engine() % (16 * 7 * 3));
            const bool isBelow = engine() % 3 == 0;
            const auto odd = engine() % 16;  // 0 and 1: one is left out; 2: texts differ
            for (unsigned int i = 0; i < 2; ++i) {
                const QDomElement child = elements[i].lastChildElement();
                if (odd != i) {
                    change(isBelow && !child.isNull() ? child : elements[i],
                        odd == 2 ? way + 16 * i : way);
                }
            }
        }
        const QString texts[] = { sortedText(elements[0].ownerDocument()),
            sortedText(elements[1].ownerDocument()) };
        const bool isEqual = packets[0] == packets[1];
        QVERIFY2(isEqual == (texts[0] == texts[1]), qPrintable(texts[0] + texts[1]));
        QCOMPARE(packets[0] != packets[1], !isEqual);
        equal += isEqual;
    }
    QVERIFY2(equal > 1500 && equal < 4500, qPrintable(QString::number(equal)));
}

// An empty text writes nothing beside a CDATA section; an empty namespace is written, none is not.
void tst_XMLPacket::whatTheTextShowsCounts()
{
    XMLPacket packets[4];
    QDomElement elements[4];
    for (int i = 0; i < 4; ++i) {
        XMLMessage message;
        elements[i] = packets[i].append(message);
        QDomDocument document = elements[i].ownerDocument();
        if (i == 1) {
            elements[i].appendChild(document.createTextNode(QString()));
        }
        elements[i].appendChild(i < 2 ? QDomNode(document.createCDATASection(str("x")))
                : i == 2              ? document.createElement(str("x"))
                                      : document.createElementNS(str(""), str("x")));
    }
    QVERIFY(packets[0] == packets[1]);
    QVERIFY(packets[1] == packets[0]);
    QVERIFY(packets[2] != packets[3]);
}

// Equality with many attributes: exact, and in time that grows with them, not with their square.
void tst_XMLPacket::manyAttributes()
{
    for (const bool isPrefixed : { false, true }) {
        std::clock_t times[2];
        for (const int count : { 500, 8000 }) {
            XMLPacket packets[2];
            XMLMessage message;
            QDomElement elements[] = { packets[0].append(message), packets[1].append(message) };
            for (int i = 0; i < 2 * count; ++i) {  // in opposite orders
                const QString n = QString::number(i % 2 == 0 ? i / 2 : count - 1 - i / 2);
                isPrefixed ? elements[i % 2].setAttributeNS(str("urn:x"), str("x:a") + n, n)
                           : elements[i % 2].setAttribute(str("a") + n, n);
            }
            std::clock_t &time = times[count == 500 ? 0 : 1];
            for (int run = 0; run < 3; ++run) {
                const std::clock_t start = std::clock();
                QVERIFY(packets[0] == packets[1]);
                const std::clock_t taken = std::clock() - start;
                time = run == 0 ? taken : qMin(time, taken);
            }
            elements[0].attributes().item(count / 2).setNodeValue(str("\" b=\""));
            QVERIFY(packets[0] != packets[1]);
        }
        QVERIFY2(times[1] < 80 * times[0], qPrintable(QString::number(times[1])));
    }
}

// Copying takes no more stack for a deep tree than for a shallow one.
void tst_XMLPacket::aDeepTreeIsCutInACopy()
{
    XMLPacket packet;
    XMLMessage message;
    QDomElement e = packet.append(message);
    QDomDocument document = e.ownerDocument();
    e.appendChild(deepTree(document, str("x"), 30000));
    runOnSmallStack([&] {
        XMLPacket copy;
        copy = packet;
        QVERIFY(copy != packet);
        QCOMPARE(copy.hasNodesOfType(XMLObject::XMLOBJECT_MSG), true);
    });
}

// The order of attributes goes by a hash, whose seed each process draws.
void tst_XMLPacket::hashSeeds()
{
    const int count = dlsym(RTLD_DEFAULT, "__asan_init") ? 100 : 1000;  // starts slowly under ASan
    const QString command =
        str("seq %1 | env -u QT_HASH_SEED xargs -n 1 -P 4 \"$0\" copies").arg(count);
    const QString program = QCoreApplication::applicationFilePath();
    QCOMPARE(QProcess::execute(str("sh"), { str("-c"), command, program }), 0);
}

void tst_XMLPacket::lifetime()
{
    for (const auto check : { checkLifetime<XMLPacketable>, checkLifetime<XMLAction>,
             checkLifetime<XMLUI>, checkLifetime<XMLImage>, checkLifetime<XMLMessage> }) {
        check();
    }
}

int main(int argc, char *argv[])
{
    if (argc > 1 && QByteArray(argv[1]) == "copies") {
        return haveEqualCopies() ? 0 : 1;
    }
    QCoreApplication application(argc, argv);
    tst_XMLPacket test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_xmlpacket.moc"
