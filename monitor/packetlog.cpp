#include "packetlog.h"

#include "xmlagent.h"
#include "xmlpacket.h"

#include <QCoreApplication>
#include <QIODevice>

#include <algorithm>
#include <chrono>

namespace TQXmlInternal {

namespace {

constexpr int BRIDGE = -1;

// Writing texts may take this much of each slice of time, in microseconds.
constexpr qint64 SLICE = 50000;
constexpr qint64 MAX_SPENT = 20000;

qint64 now()
{
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
}

qint64 bytesOf(const PacketRecord &record)
{
    return qint64(sizeof(PacketRecord)) + record.text.size();
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
        const qint64 room = PacketLog::MAX_TEXT - m_kept.size();
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

PacketLog::PacketLog() { m_buffer.reserve(4096); }

const PacketRecord *PacketLog::find(qint64 number) const
{
    return number >= m_first && number < end() ? &m_records[size_t(number - m_first)] : nullptr;
}

PacketRecord *PacketLog::at(qint64 number)
{
    return const_cast<PacketRecord *>(std::as_const(*this).find(number));
}

std::vector<qint64> PacketLog::takeChanged()
{
    m_awaitsNews = true;
    return std::exchange(m_changed, {});
}

void PacketLog::tellListener()
{
    if (m_awaitsNews && m_listener) {
        m_awaitsNews = false;
        m_listener();
    }
}

void PacketLog::append(const PacketRecord &record)
{
    m_records.push_back(record);
    m_bytes += bytesOf(record);
    while (m_records.size() > MAX_RECORDS || m_bytes > MAX_BYTES) {
        dropOldest();
        ++m_dropped;
    }
    tellListener();
}

void PacketLog::dropOldest()
{
    const PacketRecord &oldest = m_records.front();
    const auto requests = m_requests.find({ oldest.source, oldest.destination });
    if (requests != m_requests.end() && requests->front() <= m_first) {
        requests->pop_front();
        if (requests->empty()) {
            m_requests.erase(requests);
        }
    }
    m_bytes -= bytesOf(oldest);
    m_records.pop_front();
    ++m_first;
}

void PacketLog::clear()
{
    m_first = end();
    m_records.clear();
    m_requests.clear();
    m_changed.clear();
    m_bytes = m_dropped = m_missed = m_textless = 0;
}

QString PacketLog::agentName(int agentID) const
{
    const auto name = m_agentNames.find(agentID);
    if (name != m_agentNames.end()) {
        return *name;
    }
    return agentID == BRIDGE ? QCoreApplication::translate("XMLMonitor", "server bridge")
                             : QCoreApplication::translate("XMLMonitor", "agent %1").arg(agentID);
}

bool PacketLog::hasTime(qint64 time)
{
    if (time / SLICE != m_slice) {
        m_slice = time / SLICE;
        m_spent = 0;
    }
    return m_spent < MAX_SPENT;
}

PacketRecord PacketLog::describe(const XMLPacket &packet)
{
    PacketRecord record;
    record.time = now();
    record.source = packet.getSourceAgentID();
    record.destination = packet.getDestinationAgentID();
    if (!hasTime(record.time)) {
        record.kind = PacketRecord::NotKept;
        ++m_textless;
        return record;
    }
    Beginning beginning(m_buffer);
    packet.write(&beginning);
    record.text = QByteArray(m_buffer.constData(), m_buffer.size());
    record.size = beginning.written;
    record.kind = PacketRecord::kindOf(record.text);
    m_spent += now() - record.time;
    return record;
}

void PacketLog::packetSent(const XMLPacket &packet)
{
    if (m_isPaused) {
        ++m_missed;
        return tellListener();
    }
    PacketRecord record = describe(packet);
    const qint64 request = takeRequest(record);
    if (request >= 0) {
        pair(record, request);
    }
    m_queued.insert(&packet, end());
    append(record);
}

void PacketLog::packetDropped(const XMLPacket &packet, DROP reason)
{
    if (m_isPaused) {
        ++m_missed;
        return tellListener();
    }
    PacketRecord record = describe(packet);
    record.state = PacketRecord::State(int(PacketRecord::SourceUnknown) + reason);
    append(record);
}

// Marks the record of a packet that left the queue.
void PacketLog::settle(const XMLPacket &packet, PacketRecord::State state)
{
    m_current = m_queued.contains(&packet) ? m_queued.take(&packet) : -1;
    PacketRecord *record = at(m_current);
    if (!record) {
        return;
    }
    record->state = state;
    record->delivery = now() - record->time;
    noteChange(m_current);
    if (record->kind == PacketRecord::Action && record->destination != BRIDGE) {
        m_requests[{ record->source, record->destination }].push_back(m_current);
    }
}

void PacketLog::packetDelivered(const XMLPacket &packet, const XMLAgent &)
{
    settle(packet, PacketRecord::Delivered);
}

void PacketLog::packetLost(const XMLPacket &packet) { settle(packet, PacketRecord::Lost); }

// The number of the packet that this one replies to, or -1. That is the packet that its sender is
// receiving now, or else the oldest action that the sender got from the destination and has not
// replied to. The bridge replies at once or not at all.
qint64 PacketLog::takeRequest(const PacketRecord &reply)
{
    const PacketRecord *current = find(m_current);
    if (reply.source == reply.destination) {
        return -1;
    }
    if (current && current->source == reply.destination && current->destination == reply.source &&
        current->partner < 0) {
        return m_current;
    }
    const Way way { reply.destination, reply.source };
    while (m_requests.contains(way)) {
        std::deque<qint64> &requests = m_requests[way];
        const qint64 number = requests.front();
        requests.pop_front();
        if (requests.empty()) {
            m_requests.remove(way);
        }
        const PacketRecord *request = find(number);
        if (request && request->partner < 0) {
            return number;
        }
    }
    return -1;
}

void PacketLog::pair(PacketRecord &reply, qint64 number)
{
    PacketRecord &request = *at(number);
    request.partner = end();
    reply.partner = number;
    reply.isReply = true;
    reply.answer = request.answer = reply.time - request.time;
    noteChange(number);
}

void PacketLog::noteChange(qint64 number)
{
    if (m_changed.size() >= 4 * MAX_RECORDS) {  // nobody takes them
        m_changed.erase(std::remove_if(m_changed.begin(), m_changed.end(),
                            [this](qint64 changed) { return changed < m_first; }),
            m_changed.end());
    }
    m_changed.push_back(number);
    tellListener();
}

void PacketLog::addAgent(PacketRecord::State state, int agentID, int agentType)
{
    PacketRecord record;
    record.time = now();
    record.source = agentID;
    record.destination = agentType;
    record.state = state;
    record.kind = PacketRecord::Agent;
    if (!m_isPaused) {
        append(record);
    }
}

void PacketLog::agentAdded(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentAdded, agentID, agentType);
}

void PacketLog::agentRemoved(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentRemoved, agentID, agentType);
}

void PacketLog::agentSupplied(int agentID, int agentType)
{
    addAgent(PacketRecord::AgentSupplied, agentID, agentType);
}

}  // namespace TQXmlInternal
