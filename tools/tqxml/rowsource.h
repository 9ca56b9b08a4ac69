#ifndef ROWSOURCE_H
#define ROWSOURCE_H

#include "items.h"
#include "listings.h"

#include <functional>
#include <vector>

class TQCommServer;

/// Asks for the items of a listing, reply by reply.
class RowSource
{
public:
    /// What is to be listed. Without keys, the items of all owners.
    struct Query
    {
        const Listing *listing = nullptr;
        std::vector<TQKEY_ELEMENT> keys;
        bool includesPublications = false;
    };
    /// Called after each reply with how many there were, and how many there will be. Returns false
    /// when no more items are wanted.
    using EndReply = std::function<bool(size_t done, size_t total)>;

    /// Keeps references to both.
    RowSource(TQCommServer &server, const Query &query) : m_server(server), m_query(query) {}

    /// Hands over one item after another, as the replies come. Ends early when a query fails (see
    /// TQCommServer::failures()) or when no more items are wanted; then it returns false. Nothing
    /// of a reply that may lack items is handed over.
    bool run(const TakeItem &take, const EndReply &endReply);

    /// A reply without items as XML: "<tqxml ...", the header and an empty body.
    static QByteArray emptyPacket();

private:
    bool askBridge(const TakeItem &take, const EndReply &endReply);
    bool askConnection(const TakeItem &take, const EndReply &endReply);

    TQCommServer &m_server;
    const Query &m_query;
};

#endif
