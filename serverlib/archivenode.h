#ifndef ARCHIVENODE_H
#define ARCHIVENODE_H

#include "tqpacketable.h"

/// \file
/// Trees of items that refer to each other.

/// A node of an archive tree: an item and, below it, the nodes of the items that it refers to.
///
/// libtqxml walks a tree: it reads packetable, asks a copy of that item for its references and
/// finds the node of each reference with findNode(). The only thing that it changes are ICC
/// profiles: it loads their bytes (ICCPROFILEDATA_CC::load()) into the nodes' own items.
class TQSERVER_EXPORT ArchiveNode
{
public:
    /// A node of that item, which it owns. The item may be null.
    explicit ArchiveNode(TQPacketable *item = nullptr);
    /// Deletes the item and all nodes below.
    ~ArchiveNode();
    ArchiveNode(const ArchiveNode &) = delete;
    ArchiveNode &operator=(const ArchiveNode &) = delete;

    /// Puts a node below this one, which owns it from then on; null is ignored. Add a node only
    /// once, and never below itself, or it is deleted twice.
    void add(ArchiveNode *child);
    /// The node directly below that holds the item that the reference is about; null when there is
    /// none, and for a null reference. The node stays owned by this one.
    ///
    /// - A reference with a valid key finds the item with an equal key.
    /// - Any other reference finds the item with an equal name; an item without a valid key is
    ///   preferred.
    /// - When the reference has a data type, the item must be of that type.
    ///
    /// The reference comes from another item object with the same fields, so compare keys and
    /// texts, not addresses.
    ArchiveNode *findNode(const TQDB_REFERENCE *reference) const;

    /// The item: owned; may be null. libtqxml looks for the fields that refer to it by its dbkey
    /// or, when that is not valid, by its name. So the item of a reference by key has that key. The
    /// item of a reference by name has the null key, and that name in its member name: set it also
    /// for an output, for which loadRecord() clears it. Names that are not ASCII are not found.
    TQPacketable *packetable;

private:
    struct Children;
    Children *m_children;  // owned; the implementation's own
};

#endif
