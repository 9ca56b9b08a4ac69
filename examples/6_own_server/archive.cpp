// Trees of an item and all items that it refers to.

#include "shop.h"

#include <algorithm>
#include <memory>

struct ArchiveNode::Children
{
    std::vector<std::unique_ptr<ArchiveNode>> nodes;
};

ArchiveNode::ArchiveNode(TQPacketable *item) : packetable(item), m_children(new Children) {}
ArchiveNode::~ArchiveNode()
{
    delete m_children;
    delete packetable;
}
void ArchiveNode::add(ArchiveNode *child)
{
    if (child) {
        m_children->nodes.emplace_back(child);
    }
}

ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *reference) const
{
    if (!reference) {
        return nullptr;
    }
    const auto holdsReferred = [reference](const std::unique_ptr<ArchiveNode> &node) {
        const TQPacketable &item = *node->packetable;
        if (reference->datatype != PACKETDATATYPE_NONE && reference->datatype != item.datatype) {
            return false;
        }
        if (TQKEY_CC::isValid(reference->key)) {
            return item.dbkey.key == reference->key.key && item.dbkey.hkey == reference->key.hkey;
        }
        return reference->name && item.name && std::string(reference->name) == item.name;
    };
    const auto &nodes = m_children->nodes;
    const auto found = std::find_if(nodes.begin(), nodes.end(), holdsReferred);
    return found == nodes.end() ? nullptr : found->get();
}

namespace {

constexpr int MAX_DEPTH = 16;  // because items may refer to each other in a circle

// The item that the reference is about and, below it, what it refers to.
std::unique_ptr<ArchiveNode> load(Shop &shop, const TQDB_REFERENCE &reference, int depth)
{
    const PACKETDATATYPES type = reference.datatype;
    const auto rows = shop.rows(type);
    const bool isByKey = TQKEY_CC::isValid(reference.key);
    const auto isReferred = [&](const Row &row) {
        return isByKey ? row.key.key == reference.key.key : row.name == reference.name;
    };
    for (const Row &row : rows.value_or(std::vector<Row>())) {
        if (!isReferred(row)) {
            continue;
        }
        std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(type));
        item->loadRecord(reinterpret_cast<unsigned char *>(Record::make(row, nullptr)));
        item->setName(row.name.c_str());
        if (!isByKey) {
            item->dbkey = TQKEY_CC::getNullKey();  // what is found by name has no key in a tree
        }
        auto node = std::make_unique<ArchiveNode>(item.release());
        TQDB_REFERENCE *next = nullptr;
        node->packetable->getReferences(0, &next, 0);
        for (; next && depth < MAX_DEPTH; next = next->next) {
            node->add(load(shop, *next, depth + 1).release());
        }
        return node;
    }
    return nullptr;
}

}  // namespace

ArchiveNode *loadArchive(Shop &shop, PACKETDATATYPES type, const TQKEY_ELEMENT &key)
{
    const bool isKnown = TQKEY_CC::isValid(key) && key.hkey == type;
    return isKnown ? load(shop, { nullptr, type, key, nullptr }, 0).release() : nullptr;
}
