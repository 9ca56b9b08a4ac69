#ifndef TQXML_MONITOR_PACKETLOG_H
#define TQXML_MONITOR_PACKETLOG_H

#include "packetqueue.h"
#include "packetwitness.h"

#include <QHash>

#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace TQXmlInternal {

// Records what it is told of a router, in bounded memory and bounded time. Records are numbered in
// the order of recording; when there is no room, the oldest ones are dropped.
class PacketLog : public PacketWitness
{
public:
    static constexpr int MAX_RECORDS = 50000;
    static constexpr qint64 MAX_BYTES = 64 << 20;  // of all records

    // Numbers of the oldest record and of the next one.
    qint64 first() const { return m_first; }
    qint64 end() const { return m_first + qint64(m_records.size()); }
    // Null when there is no such record, or not any more.
    const PacketRecord *find(qint64 number) const;
    // The numbers of records that changed since the last call.
    std::vector<qint64> takeChanged();
    // Is called with the first change after takeChanged().
    void setListener(std::function<void()> listener) { m_listener = std::move(listener); }

    void append(const PacketRecord &record);
    // The next numbers go on. What was dropped is forgotten, too.
    void clear();
    // A paused log counts packets, and records nothing.
    void setPaused(bool isPaused);
    bool isPaused() const { return m_isPaused; }

    qint64 bytes() const { return m_bytes; }
    qint64 dropped() const { return m_dropped; }  // for want of room
    qint64 missed() const { return m_missed; }  // while the log was paused
    qint64 textless() const { return m_textless; }  // there was no time to write the text

    void setAgentName(int agentID, const QString &name) { m_agentNames[agentID] = name; }
    const QHash<int, QString> &agentNames() const { return m_agentNames; }
    QString agentName(int agentID) const;

    // For the observers of routers in other threads. What they tell is recorded by takeQueued().
    const std::shared_ptr<PacketQueue> &queue() const { return m_queue; }
    void takeQueued();

protected:
    void take(PacketEvent event) override;
    bool isIdle() const override { return m_isPaused; }

private:
    using Route = std::pair<int, int>;  // of a packet: ids of source and destination

    PacketRecord *at(qint64 number);
    void dropOldest();
    void settle(const PacketEvent &event);
    qint64 takeRequest(const PacketRecord &reply);
    void pair(PacketRecord &reply, qint64 number);
    void noteChange(qint64 number);
    void tellListener();

    std::deque<PacketRecord> m_records;
    qint64 m_first = 0;
    qint64 m_bytes = 0;
    qint64 m_dropped = 0;
    qint64 m_missed = 0;
    qint64 m_textless = 0;
    bool m_isPaused = false;
    std::vector<qint64> m_changed;
    std::function<void()> m_listener;
    bool m_awaitsNews = true;  // whether the listener is to be called
    QHash<int, QString> m_agentNames;
    QHash<const XMLPacket *, qint64> m_queued;  // numbers; the packets are only compared
    QHash<Route, std::deque<qint64>> m_requests;  // delivered, without a reply so far
    qint64 m_current = -1;  // number of the packet that was delivered last
    const std::shared_ptr<PacketQueue> m_queue = std::make_shared<PacketQueue>();
};

}  // namespace TQXmlInternal

#endif
