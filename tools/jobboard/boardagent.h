#ifndef BOARDAGENT_H
#define BOARDAGENT_H

#include "packetlog.h"
#include "xmlagent.h"

/// An agent of the program. It registers itself, logs every packet that it sends or receives, and
/// deletes what it received.
class BoardAgent : public XMLAgent
{
public:
    ~BoardAgent() override;

    void receive(XMLPacket *packet) final;

protected:
    /// The name is for people. Router and log are not owned and must outlive the agent.
    BoardAgent(int type, const QString &name, XMLRouter &to, PacketLog &log);

    /// Logs the packet and sends it.
    void send(XMLPacket *packet);
    /// Reads a packet, which is deleted after the call.
    virtual void take(const XMLPacket &packet) = 0;

private:
    PacketLog &m_log;
};

#endif
