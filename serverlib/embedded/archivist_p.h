#ifndef ARCHIVIST_P_H
#define ARCHIVIST_P_H

#include "archivenode.h"
#include "openstore_p.h"

#include <memory>
#include <vector>

namespace TQServerInternal {

// Loads archive trees: an item and, below it, the items that it refers to.
class Archivist
{
public:
    explicit Archivist(OpenStore &store) : m_store(store) {}

    // The tree of the item of that type with that id; null when there is none.
    std::unique_ptr<ArchiveNode> load(PACKETDATATYPES type, int id);
    // True when a query failed, so that items are missing in the tree.
    bool failed() const { return m_failed; }

private:
    std::unique_ptr<ArchiveNode> load(
        PACKETDATATYPES type, const char *where, const QVariant &value);
    std::unique_ptr<TQPacketable> loadItem(
        PACKETDATATYPES type, const char *where, const QVariant &value);
    void addReferred(ArchiveNode &node);
    bool isOnPath(const TQKEY_ELEMENT &key) const;

    OpenStore &m_store;
    std::vector<TQKEY_ELEMENT> m_path;  // from the root to the node that is being loaded
    size_t m_items = 0;
    bool m_failed = false;
};

}  // namespace TQServerInternal

#endif
