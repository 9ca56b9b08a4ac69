#include "packetqueue.h"

namespace TQXmlInternal {

void PacketQueue::setReceiver(std::function<void()> wake)
{
    const std::lock_guard lock(m_mutex);
    m_wake = std::move(wake);
}

void PacketQueue::close()
{
    const std::lock_guard lock(m_mutex);
    m_wake = nullptr;
    m_waiting = {};
    m_isIdle = true;
}

void PacketQueue::add(PacketEvent event)
{
    const std::lock_guard lock(m_mutex);
    if (!m_wake) {
        return;
    }
    std::deque<PacketEvent> &events = m_waiting.events;
    m_bytes += event.record.text.size();
    events.push_back(std::move(event));
    while (events.size() > MAX_EVENTS || m_bytes > MAX_BYTES) {
        m_bytes -= events.front().record.text.size();
        events.pop_front();
        ++m_waiting.dropped;
    }
    if (events.size() == 1) {
        m_wake();
    }
}

PacketQueue::Events PacketQueue::take()
{
    const std::lock_guard lock(m_mutex);
    m_bytes = 0;
    return std::exchange(m_waiting, {});
}

}  // namespace TQXmlInternal
