#ifndef PACKETLOG_H
#define PACKETLOG_H

#include <QHash>
#include <QStandardItemModel>

class XMLPacket;

/// The packets that the window's agents sent and received, newest first. It keeps a line and the
/// compressed text of each, not the packet. Old ones are dropped; the heading then says so.
class PacketLog : public QStandardItemModel
{
    Q_OBJECT

public:
    enum Direction { Sent, Received };
    enum Column { Time, Way, Agents, Content, Size, ColumnCount };

    static constexpr int MAX_PACKETS = 500;
    static constexpr int MAX_TEXT = 1 << 20;  ///< bytes kept of one packet, before compression
    static constexpr int MAX_KEPT = 8 << 20;  ///< bytes kept of all, compressed

    PacketLog();

    void setAgentName(int agentID, const QString &name);
    /// Does not change the packet.
    void add(Direction direction, XMLPacket &packet);
    /// The packet as indented XML; a long one is cut, with a remark. Empty without such a row.
    QString text(int row) const;

private:
    QString agentName(int agentID) const;
    QByteArray kept(int row) const;
    void dropOldest();

    QHash<int, QString> m_agentNames;
    int m_kept = 0;  // bytes of all texts, compressed
};

#endif
