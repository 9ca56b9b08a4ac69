#ifndef ITEMAGENT_H
#define ITEMAGENT_H

#include "boardagent.h"

#include "tqtypes.h"

#include <memory>

class TQCommServer;
class XMLPacketable;

/// Answers requests for one item, which the server bridge knows only as part of a list: the item
/// comes with everything inlined that it refers to. When it is not in the store, or could not be
/// read whole, a message in its place says why.
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
    // The whole item; null, with the reason, when there is none.
    std::unique_ptr<XMLPacketable> read(const TQKEY_ELEMENT &key, QString &error);

    TQCommServer &m_server;
};

#endif
