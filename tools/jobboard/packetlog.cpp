#include "packetlog.h"

#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"

#include <QIODevice>
#include <QLocale>
#include <QTextStream>
#include <QTime>

#include <algorithm>

namespace {

constexpr const char *WAYS[] = { "sent", "received" };  // by direction
constexpr int TEXT_ROLE = Qt::UserRole;
constexpr int FASTEST = 1;  // compression level
constexpr Qt::Alignment RIGHT = Qt::AlignRight | Qt::AlignVCenter;
const QString TIME_FORMAT = QStringLiteral("HH:mm:ss.zzz");

QString sizeText(qint64 bytes) { return QLocale().formattedDataSize(bytes); }

// Counts all bytes that are written but keeps only the first ones, so that the text of a huge
// packet never has to fit into memory.
class Beginning : public QIODevice
{
public:
    Beginning() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

    // The kept text, with a remark if it was cut.
    QByteArray text() const
    {
        if (m_kept.size() == written) {
            return m_kept;
        }
        const QByteArray lines = m_kept.left(m_kept.lastIndexOf('\n') + 1);
        return lines + "… and " + sizeText(written - lines.size()).toUtf8() + " more";
    }

    qint64 written = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 length) override
    {
        const qint64 room = PacketLog::MAX_TEXT - m_kept.size();
        m_kept.append(data, int(std::min(length, room)));
        written += length;
        return length;
    }

private:
    QByteArray m_kept;
};

void write(const QDomNode &node, QIODevice &device)
{
    QTextStream stream(&device);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    stream.setCodec("UTF-8");
#endif
    node.save(stream, 1);
}

// The packet's document. An item is appended for a moment, because only elements lead to it.
QDomDocument documentOf(XMLPacket &packet)
{
    XMLMessage message;
    QDomElement item = packet.append(message);
    item.parentNode().removeChild(item);
    return item.ownerDocument();
}

struct Naming
{
    XMLObject::XMLOBJECT_TYPE type;
    const char *prefix;
    const char *attribute;  // of the item, after the prefix
};
constexpr Naming NAMED[] = {
    { XMLObject::XMLOBJECT_ACTION, "request for ", "name" },
    { XMLObject::XMLOBJECT_UI, "page ", "name" },
    { XMLObject::XMLOBJECT_MSG, "message: ", "msg" },
};

QString summary(const XMLPacket &packet)
{
    std::list<QDomNode> nodes;
    for (const Naming &named : NAMED) {
        if (packet.getNodesOfType(named.type, nodes) > 0) {
            const QString name =
                XMLObject::getAttribute(nodes.front().toElement(), QLatin1String(named.attribute));
            return QLatin1String(named.prefix) + name;
        }
    }
    const int items = packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    return items == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(items);
}

}  // namespace

PacketLog::PacketLog()
{
    setHorizontalHeaderLabels({ QStringLiteral("Time"), QStringLiteral("Direction"),
        QStringLiteral("From and to"), QStringLiteral("Content"), QStringLiteral("Size") });
    horizontalHeaderItem(Size)->setTextAlignment(RIGHT);
}

void PacketLog::setAgentName(int agentID, const QString &name) { m_agentNames[agentID] = name; }

QString PacketLog::agentName(int agentID) const
{
    return m_agentNames.value(agentID, QString::number(agentID));
}

void PacketLog::add(Direction direction, XMLPacket &packet)
{
    Beginning beginning;
    write(documentOf(packet), beginning);
    const QString agents = agentName(packet.getSourceAgentID()) + QStringLiteral(" → ") +
        agentName(packet.getDestinationAgentID());
    const QString texts[ColumnCount] = { QTime::currentTime().toString(TIME_FORMAT),
        QLatin1String(WAYS[direction]), agents, summary(packet), sizeText(beginning.written) };
    QList<QStandardItem *> row;
    for (const QString &text : texts) {
        row << new QStandardItem(text);
        row.last()->setEditable(false);
        row.last()->setToolTip(text);
    }
    row[Size]->setTextAlignment(RIGHT);
    const QByteArray text = qCompress(beginning.text(), FASTEST);
    row[Time]->setData(text, TEXT_ROLE);
    insertRow(0, row);
    m_kept += int(text.size());
    while (rowCount() > MAX_PACKETS || m_kept > MAX_KEPT) {
        dropOldest();
    }
}

void PacketLog::dropOldest()
{
    const int oldest = rowCount() - 1;
    m_kept -= int(kept(oldest).size());
    removeRow(oldest);
    horizontalHeaderItem(Content)->setText(
        QStringLiteral("Content (the last %1 packets)").arg(oldest));
}

QByteArray PacketLog::kept(int row) const { return index(row, Time).data(TEXT_ROLE).toByteArray(); }

QString PacketLog::text(int row) const
{
    return rowCount() > row && row >= 0 ? QString::fromUtf8(qUncompress(kept(row))) : QString();
}
