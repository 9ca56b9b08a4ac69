#ifndef BOARDAGENT_H
#define BOARDAGENT_H

#include "xmlagent.h"

/// An agent of the program. It registers itself, and deletes what it received.
class BoardAgent : public XMLAgent
{
public:
    ~BoardAgent() override;

    void receive(XMLPacket *packet) final;

protected:
    /// The router is not owned and must outlive the agent.
    BoardAgent(int type, XMLRouter &to);

    /// Reads a packet, which is deleted after the call.
    virtual void take(const XMLPacket &packet) = 0;
};

#endif
