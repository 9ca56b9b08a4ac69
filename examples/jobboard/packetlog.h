#ifndef PACKETLOG_H
#define PACKETLOG_H

#include <QHash>
#include <QStandardItemModel>

class XMLPacket;

/// The packets that the window's agents sent and received lately, newest first. Of each it keeps a
/// line and the beginning of its text, never the packet.
class PacketLog : public QStandardItemModel
{
    Q_OBJECT

public:
    enum Direction { Sent, Received };
    enum Column { Time, Way, Agents, Content, Size, ColumnCount };

    static constexpr int MAX_PACKETS = 500;
    static constexpr int MAX_TEXT = 16 * 1024;  ///< bytes kept of one packet

    PacketLog();

    void setAgentName(int agentID, const QString &name);
    /// Leaves the packet as it is.
    void add(Direction direction, XMLPacket &packet);
    /// The packet as indented XML, cut with a remark when it is long; empty for no row.
    QString text(int row) const;

private:
    QString agentName(int agentID) const;

    QHash<int, QString> m_agentNames;
};

#endif
