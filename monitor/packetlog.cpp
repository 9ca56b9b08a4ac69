// Keeps the records of what a router told, and finds out which packet is the reply to which. The
// router does not say that; the log infers it from the order of sending and delivery.

#include "packetlog.h"

#include <QCoreApplication>

#include <algorithm>

namespace TQXmlInternal {

namespace {

constexpr int BRIDGE = -1;  // agent id of the server bridge

qint64 bytesOf(const PacketRecord &record)
{
    return qint64(sizeof(PacketRecord)) + record.text.size();
}

}  // namespace

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
    // Drops its number from the requests without a reply, if it is one. The record of an agent that
    // came or went has the agent's id and type in place of source and destination. It may find
    // requests, too, but their numbers are higher than its own.
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
    takeQueued();
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

void PacketLog::take(PacketEvent event)
{
    const PacketRecord::State state = event.record.state;
    if (state == PacketRecord::Delivered || state == PacketRecord::Lost) {
        return settle(event);
    }
    if (m_isPaused) {
        m_missed += event.record.isPacket() ? 1 : 0;
        return tellListener();
    }
    if (event.record.kind == PacketRecord::NotKept) {
        ++m_textless;
    }
    if (state == PacketRecord::Waiting) {
        const qint64 request = takeRequest(event.record);
        if (request >= 0) {
            pair(event.record, request);
        }
        m_queued.insert(event.packet, end());
    }
    append(event.record);
}

void PacketLog::takeQueued()
{
    PacketQueue::Events waiting = m_queue->take();
    m_dropped += waiting.dropped;
    for (PacketEvent &event : waiting.events) {
        take(std::move(event));
    }
}

void PacketLog::setPaused(bool isPaused)
{
    takeQueued();
    m_isPaused = isPaused;
    m_queue->setIdle(isPaused);
}

// Marks the record of a packet that left the queue.
void PacketLog::settle(const PacketEvent &event)
{
    m_current = m_queued.contains(event.packet) ? m_queued.take(event.packet) : -1;
    PacketRecord *record = at(m_current);
    if (!record) {
        return;
    }
    record->state = event.record.state;
    record->delivery = event.record.time - record->time;
    noteChange(m_current);
    if (record->kind == PacketRecord::Action && record->destination != BRIDGE) {
        m_requests[{ record->source, record->destination }].push_back(m_current);
    }
}

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
    const Route route { reply.destination, reply.source };
    while (m_requests.contains(route)) {
        std::deque<qint64> &requests = m_requests[route];
        const qint64 number = requests.front();
        requests.pop_front();
        if (requests.empty()) {
            m_requests.remove(route);
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

}  // namespace TQXmlInternal
