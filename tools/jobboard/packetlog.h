#ifndef PACKETLOG_H
#define PACKETLOG_H

#include "rows.h"

#include <QHash>

#include <functional>

class XMLPacket;

/// Describes the packets that the agents send and receive, in their thread.
class PacketLog
{
public:
    enum Direction { Sent, Received };

    static constexpr int MAX_TEXT = 1 << 20;  ///< bytes kept of one packet, before compression

    /// Calls take for each packet.
    explicit PacketLog(std::function<void(const PacketRecord &record)> take);

    void setAgentName(int agentID, const QString &name) { m_agentNames[agentID] = name; }
    void add(Direction direction, const XMLPacket &packet) const;

private:
    QString agentName(int agentID) const;

    std::function<void(const PacketRecord &record)> m_take;
    QHash<int, QString> m_agentNames;
};

#endif
