#ifndef TQXML_MONITOR_PACKETQUEUE_H
#define TQXML_MONITOR_PACKETQUEUE_H

#include "packetwitness.h"

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace TQXmlInternal {

// Hands events from the threads of routers to the thread of a log, in bounded memory: when there is
// no room, the oldest event is dropped. Every function may be called in any thread.
class PacketQueue
{
public:
    static constexpr size_t MAX_EVENTS = 100000;
    static constexpr qint64 MAX_BYTES = 64 << 20;  // of all texts

    struct Events
    {
        std::deque<PacketEvent> events = {};
        qint64 dropped = 0;
    };

    // Calls wake when an event comes into the empty queue, in the thread of add().
    void setReceiver(std::function<void()> wake);
    // There is no log any more. On return wake is not running, and is not called again.
    void close();
    void add(PacketEvent event);
    // Empties the queue.
    Events take();
    void setIdle(bool isIdle) { m_isIdle = isIdle; }
    bool isIdle() const { return m_isIdle; }

private:
    std::mutex m_mutex;  // for all members but m_isIdle
    Events m_waiting;
    qint64 m_bytes = 0;
    std::function<void()> m_wake;  // empty if nobody takes events
    std::atomic<bool> m_isIdle { false };
};

// The observer of a router in another thread.
class PacketRelay : public PacketWitness
{
public:
    explicit PacketRelay(std::shared_ptr<PacketQueue> queue) : m_queue(std::move(queue)) {}

protected:
    void take(PacketEvent event) override { m_queue->add(std::move(event)); }
    bool isIdle() const override { return m_queue->isIdle(); }

private:
    const std::shared_ptr<PacketQueue> m_queue;
};

}  // namespace TQXmlInternal

#endif
