// A node of an archive tree finds its children by key and by name, in maps that it fills when it is
// first asked.

#include "archivenode.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

// Both words of a key in one number.
std::uint64_t wordOf(const TQKEY_ELEMENT &key) { return (std::uint64_t(key.hkey) << 32) | key.key; }

bool isOfType(const TQDB_REFERENCE &reference, const TQPacketable &item)
{
    return reference.datatype == PACKETDATATYPE_NONE || reference.datatype == item.datatype;
}

}  // namespace

struct ArchiveNode::Children
{
    using Found = std::vector<ArchiveNode *>;

    // Of the nodes with that key or name, the first that holds an item of the referred type.
    template<typename Index, typename Value>
    static ArchiveNode *first(
        const Index &index, const Value &value, const TQDB_REFERENCE &reference)
    {
        const auto found = index.find(value);
        if (found == index.end()) {
            return nullptr;
        }
        const auto node = std::find_if(found->second.begin(), found->second.end(),
            [&](const ArchiveNode *each) { return isOfType(reference, *each->packetable); });
        return node == found->second.end() ? nullptr : *node;
    }

    // Puts the nodes that came since the last call into the maps.
    void index()
    {
        for (; indexed < nodes.size(); ++indexed) {
            if (nodes[indexed]->packetable) {
                index(nodes[indexed]);
            }
        }
    }

    void index(ArchiveNode *node)
    {
        const TQPacketable &item = *node->packetable;
        const char *name = item.name ? item.name : "";
        byKey[wordOf(item.dbkey)].push_back(node);
        byName[name].push_back(node);
        if (!TQKEY_CC::isValid(item.dbkey)) {
            byNameAlone[name].push_back(node);
        }
    }

    std::vector<ArchiveNode *> nodes;  // owned
    size_t indexed = 0;  // how many of them are in the maps
    std::unordered_map<std::uint64_t, Found> byKey;
    std::unordered_map<std::string, Found> byName;
    std::unordered_map<std::string, Found> byNameAlone;  // of items without a valid key
};

ArchiveNode::ArchiveNode(TQPacketable *item) : packetable(item), m_children(new Children) {}

ArchiveNode::~ArchiveNode()
{
    // Trees may be too deep for recursion, so the nodes below are taken out and deleted one by one.
    std::vector<ArchiveNode *> doomed;
    doomed.swap(m_children->nodes);
    while (!doomed.empty()) {
        ArchiveNode *node = doomed.back();
        doomed.pop_back();
        doomed.insert(doomed.end(), node->m_children->nodes.begin(), node->m_children->nodes.end());
        node->m_children->nodes.clear();
        delete node;
    }
    delete m_children;
    delete packetable;
}

void ArchiveNode::add(ArchiveNode *child)
{
    if (child && child != this) {
        m_children->nodes.push_back(child);
    }
}

ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *reference) const
{
    if (!reference) {
        return nullptr;
    }
    m_children->index();
    if (TQKEY_CC::isValid(reference->key)) {
        return Children::first(m_children->byKey, wordOf(reference->key), *reference);
    }
    if (!reference->name || !*reference->name) {
        return nullptr;
    }
    const std::string name = reference->name;
    ArchiveNode *const alone = Children::first(m_children->byNameAlone, name, *reference);
    return alone ? alone : Children::first(m_children->byName, name, *reference);
}
