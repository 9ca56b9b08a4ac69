#include "packetlog.h"

#include "xmlmessage.h"
#include "xmlpacket.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QLocale>
#include <QTime>

#include <algorithm>

namespace {

constexpr int FASTEST = 1;  // compression level
const QString TIME_FORMAT = QStringLiteral("HH:mm:ss.zzz");

QString translated(const char *text) { return QCoreApplication::translate("PacketLog", text); }

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
        const QString rest = QLocale().formattedDataSize(written - lines.size());
        return lines +
            translated(QT_TRANSLATE_NOOP("PacketLog", "… and %1 more")).arg(rest).toUtf8();
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

// A reply's document is not built for it.
QString summary(const XMLPacket &packet)
{
    if (packet.hasNodesOfType(XMLObject::XMLOBJECT_PACKETABLE)) {
        return translated(QT_TRANSLATE_NOOP("PacketLog", "items"));
    }
    std::list<QDomNode> nodes;
    if (packet.getNodesOfType(XMLObject::XMLOBJECT_ACTION, nodes) > 0) {
        return translated(QT_TRANSLATE_NOOP("PacketLog", "request for %1"))
            .arg(XMLObject::getAttribute(nodes.front().toElement(), QStringLiteral("name")));
    }
    if (packet.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes) > 0) {
        XMLMessage message;
        message.setNode(nodes.front().toElement());
        return translated(QT_TRANSLATE_NOOP("PacketLog", "message: %1")).arg(message.getMessage());
    }
    return translated(QT_TRANSLATE_NOOP("PacketLog", "nothing"));
}

}  // namespace

PacketLog::PacketLog(std::function<void(const PacketRecord &record)> take) : m_take(std::move(take))
{
}

QString PacketLog::agentName(int agentID) const
{
    return m_agentNames.value(agentID, QString::number(agentID));
}

void PacketLog::add(Direction direction, const XMLPacket &packet) const
{
    Beginning beginning;
    packet.write(&beginning);
    const QString agents = agentName(packet.getSourceAgentID()) + QStringLiteral(" → ") +
        agentName(packet.getDestinationAgentID());
    m_take({ direction == Sent, QTime::currentTime().toString(TIME_FORMAT), agents, summary(packet),
        beginning.written, qCompress(beginning.text(), FASTEST) });
}
