#ifndef ITEMAGENT_H
#define ITEMAGENT_H

#include "boardagent.h"

class TQCommServer;

/// Answers requests for one item, which the server bridge knows only as part of a list: the item
/// comes with everything inlined that it refers to. The reply is empty when the store has no such
/// item.
class ItemAgent : public BoardAgent
{
public:
    static constexpr int TYPE = 3;
    /// Type of the requests' actions, whose keys are those of the items.
    static constexpr int REQUEST_ITEM = 2000;

    /// The connection is not owned and must outlive the agent.
    ItemAgent(TQCommServer &server, XMLRouter &to, PacketLog &log);

protected:
    void take(const XMLPacket &packet) override;

private:
    TQCommServer &m_server;
};

#endif
