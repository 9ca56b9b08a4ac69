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
    /// Called after each reply of the bridge with how many there were, and how many there will be.
    /// Not called when the connection is asked.
    using Progress = std::function<void(size_t done, size_t total)>;

    /// Keeps references to both.
    RowSource(TQCommServer &server, const Query &query) : m_server(server), m_query(query) {}

    /// Hands over one item after another, as the replies come. Ends early when a query fails (see
    /// TQCommServer::failures()) or when no more items are wanted; then it returns false. Nothing
    /// of a reply that may lack items is handed over.
    bool run(const TakeItem &take, const Progress &progress);

    /// A reply without items as XML: "<tqxml ...", the header and an empty body.
    static QByteArray emptyPacket();

private:
    bool askBridge(const TakeItem &take, const Progress &progress);
    bool askConnection(const TakeItem &take);

    TQCommServer &m_server;
    const Query &m_query;
};

#endif
