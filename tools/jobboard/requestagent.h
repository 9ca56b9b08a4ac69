#ifndef REQUESTAGENT_H
#define REQUESTAGENT_H

#include "boardagent.h"
#include "rows.h"

#include <QObject>
#include <QString>

#include <deque>
#include <optional>

class Bridge;

/// One request for a list.
struct Request
{
    int type;  ///< a request type of the server bridge
    TQKEY_ELEMENT owner;  ///< whose items; of all owners with the null key
    QString name;  ///< for people
};

/// Asks for lists, one after the other, and for items. Emits complete replies; of others only the
/// error.
///
/// Sends each request from the event loop, not from receive(). Otherwise the router would serve all
/// of them in one run, and the thread would read nothing else until the last one.
class RequestAgent : public QObject, public BoardAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 1;

    /// The bridge serves this agent alone. It is not owned and must outlive the agent.
    RequestAgent(const Bridge &bridge, XMLRouter &to);

    void ask(const Request &request);
    /// Moves the waiting requests of that type and, unless it is the null key, for that owner to
    /// the front.
    void prefer(int type, const TQKEY_ELEMENT &owner);
    /// Drops the waiting requests; one under way is still answered.
    void stop();
    /// How many requests are waiting or under way.
    int pending() const;

    /// Asks the ItemAgent with that id for an item, at once.
    void askItem(const TQKEY_ELEMENT &key, const QString &name, int agentID);

Q_SIGNALS:
    /// The complete reply to a request of that type. It is deleted after the call.
    void replied(int type, const XMLPacket &reply);
    /// The bridge has served a request; without a result it sends no reply. The error is empty
    /// unless reading failed; then no reply was emitted.
    void served(const QString &error);
    /// The reply to askItem(). It is deleted after the call.
    void itemReplied(const XMLPacket &reply);

protected:
    void take(const XMLPacket &packet) override;

private:
    void sendNext();
    void finish();

    const Bridge &m_bridge;
    std::deque<Request> m_waiting;
    std::optional<Request> m_underWay;
};

#endif
