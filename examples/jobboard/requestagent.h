#ifndef REQUESTAGENT_H
#define REQUESTAGENT_H

#include "boardagent.h"

#include "tqtypes.h"

#include <QDomNode>
#include <QObject>

#include <deque>
#include <list>
#include <optional>

class Bridge;
class XMLUI;

/// One request for a list.
struct Request
{
    int type;  ///< a request type of the server bridge
    std::optional<TQKEY_ELEMENT> owner;  ///< whose items; of all owners without
    QString name;  ///< for people
};

/// Asks for lists, one request after the other, and for items, and hands on what is replied, unless
/// it may be short.
///
/// Between two requests for lists the event loop comes to its turn: a request that was sent from
/// inside receive() would be served in the same run of the router, and the window would stand
/// still until the last one is.
class RequestAgent : public QObject, public BoardAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 1;

    /// The bridge serves this agent alone. It is not owned and must outlive the agent.
    RequestAgent(const Bridge &bridge, XMLRouter &to, PacketLog &log);

    void ask(const Request &request);
    /// Lets the waiting requests for that owner go first.
    void prefer(const TQKEY_ELEMENT &owner);
    /// Forgets the waiting requests; one under way is still answered.
    void stop();
    /// How many requests are waiting or under way.
    int pending() const;

    /// Asks the agent with that id, an ItemAgent, for an item; at once.
    void askItem(const TQKEY_ELEMENT &key, const QString &name, int agentID);
    /// Sends a page to the agent that shows it.
    void sendPage(XMLUI &page, int agentID);

Q_SIGNALS:
    /// The whole reply of the bridge to a request of that type. The items end with the call.
    void replied(int type, const std::list<QDomNode> &items);
    /// The bridge is done with a request, whether it replied or, having found nothing, did not. The
    /// error is empty unless reading failed; then nothing was handed on.
    void served(const QString &error);
    /// The reply to askItem(): the item, or null and why there is none.
    void itemReceived(const QDomElement &item, const QString &error);

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
