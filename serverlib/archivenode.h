#ifndef ARCHIVENODE_H
#define ARCHIVENODE_H

#include "tqpacketable.h"

/// \file
/// Trees of items that refer to each other.

/// A node of an archive tree: an item and, below it, the nodes of the items that it refers to.
///
/// libtqxml only walks trees: it reads packetable, asks that item's copy for its references and
/// finds the node of each with findNode(). It loads the bytes of profiles
/// (ICCPROFILEDATA_CC::load()) into the nodes' own items, and changes nothing else.
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
    /// valid key, else equal names, items without a valid key first; where the reference tells a
    /// data type, that too must agree.
    /// Null when there is none, and for null. The node stays this one's.
    ///
    /// The reference comes from another item object with the same fields, so compare keys and
    /// texts, not addresses.
    ArchiveNode *findNode(const TQDB_REFERENCE *reference) const;

    /// The item: owned; may be null. libtqxml looks for the fields that refer to it by its dbkey
    /// or, when that is not valid, by its name. So the item of a reference by key has that key, and
    /// the item of a reference by name has the null key and that name: its member name, also for an
    /// output, which has another after loadRecord(). Names that are not ASCII are not found.
    TQPacketable *packetable;

private:
    struct Children;
    Children *m_children;  // owned; the implementation's own
};

#endif
