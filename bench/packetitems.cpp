#include "bench.h"
#include "domtree_p.h"
#include "handmade.h"
#include "item.h"
#include "qtcompat_p.h"
#include "server.h"
#include "xmlpacket.h"

#include <QBuffer>
#include <QXmlStreamWriter>

#include <cstdlib>
#include <list>
#include <memory>
#include <string>

using namespace TQXmlInternal;

namespace {

using ServerItem = std::shared_ptr<TQPacketable>;

Measured convertAndAsk()
{
    return [item = ServerItem(Item::serverItem())] {
        XMLPacket packet;
        packet.appendV(*item, false);
        std::list<QDomNode> nodes;
        packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        keep(nodes.front().isNull());
    };
}

Measured buildPacket()
{
    return [] {
        HandmadePacket packet;
        Item::buildPacketable(packet.document, packet.body);
        keep(packet.body.hasChildNodes());
    };
}

Measured convertUnseen()
{
    return [item = ServerItem(Item::serverItem())] {
        XMLPacket packet;
        packet.appendV(*item, false);
        keep(packet.isEmpty());
    };
}

Measured copyText()
{
    return [item = ServerItem(Item::serverItem())] {
        unsigned int length = 0;
        char *text = item->toPacket(length);
        const std::string copy(text, length);
        TQ_free(text);
        keep(copy.data());
    };
}

// Writes the lines of a packet text one after the other, as their tags say.
class StreamedItem
{
public:
    explicit StreamedItem(QIODevice *device) : m_writer(device) {}

    void write(const QByteArray &packetText)
    {
        m_writer.writeDefaultNamespace(XMLObject::TQ_NAMESPACE);
        m_writer.writeStartElement(XMLObject::TQ_NAMESPACE, QStringLiteral("tqxml"));
        m_writer.writeStartElement(QStringLiteral("header"));
        m_writer.writeEmptyElement(QStringLiteral("src"));
        m_writer.writeEmptyElement(QStringLiteral("dst"));
        m_writer.writeEndElement();
        m_writer.writeStartElement(QStringLiteral("body"));
        m_writer.writeStartElement(QStringLiteral("packetable"));
        m_writer.writeAttribute(QStringLiteral("datatype"), QString::number(BENCH_TYPE, 16));
        m_writer.writeAttribute(QStringLiteral("hkey"), QStringLiteral("0"));
        m_writer.writeAttribute(QStringLiteral("key"), QStringLiteral("0"));
        const QString text = QString::fromUtf8(packetText);
        QStringView rest(text);
        while (!rest.isEmpty()) {
            const qsizetype end = rest.indexOf(QLatin1Char('\n'));
            writeLine(rest.left(end));
            rest = rest.mid(end + 1);
        }
        m_writer.writeEndElement();
        m_writer.writeEndElement();
        m_writer.writeEndElement();
    }

private:
    void writeLine(QStringView line)
    {
        const qsizetype blank = line.indexOf(QLatin1Char(' '));
        const QStringView tag = line.left(blank);
        const QStringView value = line.mid(blank + 1);
        if (tag == u"SI") {
            m_writer.writeStartElement(QStringLiteral("item"));
            m_writer.writeAttribute(QStringLiteral("datatype"), value.toString());
        } else if (tag == u"SL") {
            m_writer.writeStartElement(QStringLiteral("list"));
            m_writer.writeAttribute(QStringLiteral("size"), value.toString());
        } else if (tag == u"TI" || tag == u"TL") {
            m_writer.writeEndElement();
        } else {
            writeField(tag, value);
        }
    }

    void writeField(QStringView tag, QStringView value)
    {
        m_writer.writeStartElement(QLatin1Char('_') + tag.toString());
        const qsizetype blank = value.indexOf(QLatin1Char(' '));
        switch (Item::formOf(tag.toUInt(nullptr, 16))) {
        case Item::Simple:
            m_writer.writeAttribute(QStringLiteral("value"), value.toString());
            break;
        case Item::Key:
            m_writer.writeAttribute(QStringLiteral("hkey"), value.mid(blank + 1).toString());
            m_writer.writeAttribute(QStringLiteral("key"), value.left(blank).toString());
            break;
        case Item::Numbers:
            writeArray(value.left(blank), value.mid(blank + 1), QLatin1Char(' '));
            break;
        case Item::Strings:
            writeArray(value.left(blank), value.mid(blank + 1), QLatin1Char('\r'));
            break;
        case Item::Binary:
            m_writer.writeAttribute(QStringLiteral("size"), value.left(blank).toString());
            m_writer.writeCharacters(value.mid(blank + 1).toString());
            break;
        }
        m_writer.writeEndElement();
    }

    void writeArray(QStringView size, QStringView values, QChar separator)
    {
        m_writer.writeAttribute(QStringLiteral("size"), size.toString());
        for (qsizetype at = 0; at < values.size();) {
            const qsizetype found = values.indexOf(separator, at);
            const qsizetype end = found < 0 ? values.size() : found;
            m_writer.writeTextElement(QStringLiteral("value"), values.mid(at, end - at).toString());
            at = end + 1;
        }
    }

    QXmlStreamWriter m_writer;
};

QByteArray streamed(const QByteArray &packetText)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    StreamedItem(&buffer).write(packetText);
    return buffer.data();
}

QByteArray written(const XMLPacket &packet)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    packet.write(&buffer);
    return buffer.data();
}

QDomDocument parsed(const QByteArray &xml)
{
    QDomDocument document;
    document.setContent(xml, WITH_NAMESPACES);
    return document;
}

Measured writePacket()
{
    auto packet = std::make_shared<XMLPacket>();
    packet->appendV(*Item::serverItem(), false);
    const QDomDocument document = parsed(written(*packet));
    if (document.isNull() || !sameDocument(document, parsed(streamed(Item::text())))) {
        qFatal("text_to_xml: value and floor write different documents");
    }
    return [packet] { keep(written(*packet).size()); };
}

Measured streamPacket()
{
    return [text = Item::text()] { keep(streamed(text).size()); };
}

const Register FIGURES = {
    { "item_to_packet", convertAndAsk, buildPacket },
    { "item_to_packet_unseen", convertUnseen, copyText },
    { "text_to_xml", writePacket, streamPacket },
};

}  // namespace
