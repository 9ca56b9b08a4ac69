#ifndef REQUESTAGENT_H
#define REQUESTAGENT_H

#include "xmlagent.h"

#include "tqtypes.h"

#include <QDomNode>
#include <QObject>

#include <deque>
#include <list>
#include <optional>

class PacketLog;
class XMLUI;

/// One request for data.
struct Request
{
    int type;  ///< a request type of the server bridge
    std::optional<TQKEY_ELEMENT> owner;  ///< whose items; of all owners without
    QString name;  ///< for people
};

/// Asks the server bridge, one request after the other, and hands on what it replies.
///
/// Between two requests the event loop comes to its turn: a request that was sent from inside
/// receive() would be served in the same run of the router, and the window would stand still until
/// the last one is.
class RequestAgent : public QObject, public XMLAgent
{
    Q_OBJECT

public:
    static constexpr int TYPE = 1;

    /// Registers itself. Router and log are not owned and must outlive the agent.
    RequestAgent(XMLRouter &to, PacketLog &log);
    ~RequestAgent() override;

    void ask(const Request &request);
    /// Lets the waiting requests for that owner go first.
    void prefer(const TQKEY_ELEMENT &owner);
    /// Forgets the waiting requests; one under way is still answered.
    void stop();
    /// How many requests are waiting or under way.
    int pending() const;

    /// Sends a page to the agent that shows it.
    void sendPage(XMLUI &page, int agentID);

    void receive(XMLPacket *packet) override;

Q_SIGNALS:
    /// The items belong to the packet, which ends with the call.
    void replied(int type, const std::list<QDomNode> &items);
    /// The bridge is done with a request, whether it replied or, having found nothing, did not.
    void served();

private:
    void send(XMLPacket *packet);
    void sendNext();
    void finish();

    PacketLog &m_log;
    std::deque<Request> m_waiting;
    std::optional<Request> m_underWay;
};

#endif
