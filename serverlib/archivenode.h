#ifndef ARCHIVENODE_H
#define ARCHIVENODE_H

#include "tqpacketable.h"

/// A node of an archive tree: an item and, below it, the nodes of the items that it refers to.
class TQSERVER_EXPORT ArchiveNode
{
public:
    /// A node of that item, which it owns; null is possible.
    explicit ArchiveNode(TQPacketable *item = nullptr);
    /// Deletes the item and all nodes below.
    ~ArchiveNode();
    ArchiveNode(const ArchiveNode &) = delete;
    ArchiveNode &operator=(const ArchiveNode &) = delete;

    /// Puts a node below this one, which owns it from then on; null is ignored. A node is added
    /// once, and never below itself: it would be deleted twice.
    void add(ArchiveNode *child);
    /// The node directly below that holds the referred item: equal keys for a reference with a
    /// valid key, else equal names; where the reference tells a data type, that too must agree.
    /// Null when there is none.
    ArchiveNode *findNode(const TQDB_REFERENCE *reference) const;

    TQPacketable *packetable;  ///< owned; may be null

private:
    struct Children;
    Children *m_children;  // owned; the implementation's own
};

#endif
