#ifndef TQXML_MONITOR_PACKETWITNESS_H
#define TQXML_MONITOR_PACKETWITNESS_H

#include "packetrecord.h"
#include "xmlrouterobserver.h"

namespace TQXmlInternal {

// What a router told its observer. Can be handed to another thread.
struct PacketEvent
{
    // For a packet that left the router's queue, only time and state are set.
    PacketRecord record;
    const XMLPacket *packet = nullptr;  // is only compared
};

// Turns what a router tells into events. Writes texts for less than half of the time; packets
// beyond that are described without a text.
class PacketWitness : public XMLRouterObserver
{
public:
    static constexpr int MAX_TEXT = 1 << 20;  // bytes kept of one packet

    void packetSent(const XMLPacket &packet) override;
    void packetDropped(const XMLPacket &packet, DROP reason) override;
    void packetDelivered(const XMLPacket &packet, const XMLAgent &agent) override;
    void packetLost(const XMLPacket &packet) override;
    void agentAdded(int agentID, int agentType) override;
    void agentRemoved(int agentID, int agentType) override;
    void agentSupplied(int agentID, int agentType) override;

protected:
    PacketWitness();

    virtual void take(PacketEvent event) = 0;
    // No texts are written if nobody records.
    virtual bool isIdle() const = 0;

private:
    void tell(const XMLPacket &packet, PacketRecord::State state);
    void settle(const XMLPacket &packet, PacketRecord::State state);
    void addAgent(PacketRecord::State state, int agentID, int agentType);
    void writeText(const XMLPacket &packet, PacketRecord &record);
    bool hasTime(qint64 time);

    qint64 m_period = 0;  // number of the period of time in which a text was last wanted
    qint64 m_spent = 0;  // microseconds of it, for writing texts
    QByteArray m_buffer;  // for writing
};

}  // namespace TQXmlInternal

#endif
