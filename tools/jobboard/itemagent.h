#ifndef ITEMAGENT_H
#define ITEMAGENT_H

#include "boardagent.h"

#include "tqtypes.h"

#include <QString>

#include <memory>

class TQCommServer;
class XMLPacketable;

/// Answers requests for one item; the server bridge answers only requests for lists. Everything
/// that the item refers to is inlined. If the item is not in the store, or could not be read
/// completely, the answer is a message that says why.
class ItemAgent : public BoardAgent
{
public:
    static constexpr int TYPE = 3;
    /// Type of the request's action; its key is that of the item.
    static constexpr int REQUEST_ITEM = 2000;

    /// The connection is not owned and must outlive the agent.
    ItemAgent(TQCommServer &server, XMLRouter &to);

protected:
    void take(const XMLPacket &packet) override;

private:
    // The complete item; null, with the reason, if there is none.
    std::unique_ptr<XMLPacketable> read(const TQKEY_ELEMENT &key, QString &error);

    TQCommServer &m_server;
};

#endif
