#ifndef BOARDAGENT_H
#define BOARDAGENT_H

#include "xmlagent.h"

#include <QString>

class PacketLog;

/// An agent of the window: it registers itself, has every packet logged that it sends or receives,
/// and drops what it received.
class BoardAgent : public XMLAgent
{
public:
    ~BoardAgent() override;

    void receive(XMLPacket *packet) final;

protected:
    /// The name is for people. Router and log are not owned and must outlive the agent.
    BoardAgent(int type, const QString &name, XMLRouter &to, PacketLog &log);

    /// Hands the packet to the router.
    void send(XMLPacket *packet);
    /// Reads what arrived; the packet ends with the call.
    virtual void take(const XMLPacket &packet) = 0;

private:
    PacketLog &m_log;
};

#endif
