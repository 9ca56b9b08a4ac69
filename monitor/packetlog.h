#ifndef TQXML_MONITOR_PACKETLOG_H
#define TQXML_MONITOR_PACKETLOG_H

#include "packetrecord.h"
#include "xmlrouterobserver.h"

#include <QHash>

#include <deque>
#include <functional>
#include <utility>
#include <vector>

namespace TQXmlInternal {

// Records what it is told of a router, in bounded memory and bounded time. Records are numbered in
// the order of recording; when there is no room, the oldest ones are dropped.
class PacketLog : public XMLRouterObserver
{
public:
    static constexpr int MAX_RECORDS = 50000;
    static constexpr qint64 MAX_BYTES = 64 << 20;  // of all records
    static constexpr int MAX_TEXT = 1 << 20;  // bytes kept of one packet

    PacketLog();

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
    void setPaused(bool isPaused) { m_isPaused = isPaused; }
    bool isPaused() const { return m_isPaused; }

    qint64 bytes() const { return m_bytes; }
    qint64 dropped() const { return m_dropped; }  // for want of room
    qint64 missed() const { return m_missed; }  // while the log was paused
    qint64 textless() const { return m_textless; }  // there was no time to write the text

    void setAgentName(int agentID, const QString &name) { m_agentNames[agentID] = name; }
    const QHash<int, QString> &agentNames() const { return m_agentNames; }
    QString agentName(int agentID) const;

    void packetSent(const XMLPacket &packet) override;
    void packetDropped(const XMLPacket &packet, DROP reason) override;
    void packetDelivered(const XMLPacket &packet, const XMLAgent &agent) override;
    void packetLost(const XMLPacket &packet) override;
    void agentAdded(int agentID, int agentType) override;
    void agentRemoved(int agentID, int agentType) override;
    void agentSupplied(int agentID, int agentType) override;

private:
    using Way = std::pair<int, int>;  // ids of source and destination

    PacketRecord describe(const XMLPacket &packet);
    bool hasTime(qint64 now);
    PacketRecord *at(qint64 number);
    void dropOldest();
    void addAgent(PacketRecord::State state, int agentID, int agentType);
    void settle(const XMLPacket &packet, PacketRecord::State state);
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
    QHash<Way, std::deque<qint64>> m_requests;  // delivered, without a reply so far
    qint64 m_current = -1;  // number of the packet that was delivered last
    qint64 m_slice = 0;  // of time, in which texts were written for m_spent microseconds
    qint64 m_spent = 0;
    QByteArray m_buffer;  // for writing
};

}  // namespace TQXmlInternal

#endif
