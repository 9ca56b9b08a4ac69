// Describes what a router does, so that a monitor can show it. Writing the text of a packet is what
// takes time, and the router waits for it. So time is divided into periods, and when texts have
// taken their share of a period, the packets of its rest are described without their texts.

#include "packetwitness.h"

#include "xmlagent.h"
#include "xmlpacket.h"

#include <QIODevice>

#include <algorithm>
#include <chrono>
#include <utility>

namespace TQXmlInternal {

namespace {

// In microseconds. When the texts of a period have taken MAX_SPENT, it gets no further ones.
constexpr qint64 PERIOD = 50000;
constexpr qint64 MAX_SPENT = 20000;

qint64 now()
{
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
}

// Counts all bytes that are written but keeps only the first ones, so that the text of a huge
// packet need not fit into memory.
class Beginning : public QIODevice
{
public:
    explicit Beginning(QByteArray &kept) : m_kept(kept)
    {
        m_kept.resize(0);
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }
    qint64 written = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 length) override
    {
        const qint64 room = PacketWitness::MAX_TEXT - m_kept.size();
        m_kept.append(data, int(std::min(length, room)));
        written += length;
        return length;
    }

private:
    QByteArray &m_kept;
};

}  // namespace

static_assert(int(PacketRecord::SourceUnknown) + XMLRouterObserver::DROP_EQUALS_LAST ==
        PacketRecord::EqualsLast &&
    int(PacketRecord::SourceUnknown) + XMLRouterObserver::DROP_SENT_ALREADY ==
        PacketRecord::SentAlready);

PacketWitness::PacketWitness() { m_buffer.reserve(4096); }

bool PacketWitness::hasTime(qint64 time)
{
    if (time / PERIOD != m_period) {
        m_period = time / PERIOD;
        m_spent = 0;
    }
    return m_spent < MAX_SPENT;
}

void PacketWitness::writeText(const XMLPacket &packet, PacketRecord &record)
{
    Beginning beginning(m_buffer);
    packet.write(&beginning);
    record.text = QByteArray(m_buffer.constData(), m_buffer.size());
    record.size = beginning.written;
    record.kind = PacketRecord::kindOf(record.text);
    m_spent += now() - record.time;
}

// Describes a packet that was given to send().
void PacketWitness::tell(const XMLPacket &packet, PacketRecord::State state)
{
    PacketEvent event;
    event.packet = &packet;
    event.record.time = now();
    event.record.source = packet.getSourceAgentID();
    event.record.destination = packet.getDestinationAgentID();
    event.record.state = state;
    event.record.kind = PacketRecord::NotKept;
    if (!isIdle() && hasTime(event.record.time)) {
        writeText(packet, event.record);
    }
    take(std::move(event));
}

// Says that a packet left the queue.
void PacketWitness::settle(const XMLPacket &packet, PacketRecord::State state)
{
    PacketEvent event;
    event.packet = &packet;
    event.record.time = now();
    event.record.state = state;
    take(std::move(event));
}

void PacketWitness::addAgent(PacketRecord::State state, int agentID, int agentType)
{
    PacketEvent event;
    event.record.time = now();
    event.record.source = agentID;
    event.record.destination = agentType;  // as PacketRecord says; there is no destination
    event.record.state = state;
    event.record.kind = PacketRecord::Agent;
    take(std::move(event));
}

void PacketWitness::packetSent(const XMLPacket &packet) { tell(packet, PacketRecord::Waiting); }

void PacketWitness::packetDropped(const XMLPacket &packet, DROP reason)
{
    tell(packet, PacketRecord::State(int(PacketRecord::SourceUnknown) + reason));
}

void PacketWitness::packetDelivered(const XMLPacket &packet, const XMLAgent &)
{
    settle(packet, PacketRecord::Delivered);
}

void PacketWitness::packetLost(const XMLPacket &packet) { settle(packet, PacketRecord::Lost); }

void PacketWitness::agentAdded(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentAdded, agentID, agentType);
}

void PacketWitness::agentRemoved(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentRemoved, agentID, agentType);
}

void PacketWitness::agentSupplied(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentSupplied, agentID, agentType);
}

}  // namespace TQXmlInternal
