#ifndef PACKETLOG_H
#define PACKETLOG_H

#include <QHash>
#include <QStandardItemModel>

class XMLPacket;

/// The packets that the window's agents sent and received lately, newest first. Of each it keeps a
/// line and its text, compressed, never the packet. The heading says so when older ones were
/// dropped.
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
    /// Leaves the packet as it is.
    void add(Direction direction, XMLPacket &packet);
    /// The packet as indented XML, cut with a remark when it is long; empty for no row.
    QString text(int row) const;

private:
    QString agentName(int agentID) const;
    QByteArray kept(int row) const;
    void dropOldest();

    QHash<int, QString> m_agentNames;
    int m_kept = 0;  // bytes of all texts, compressed
};

#endif
