// Loads archive trees, item by item and depth first. References may form circles, so an item is not
// loaded again below itself; and there are bounds of depth and size, because an item that is
// referred to from many places comes in each of them.

#include "archivist_p.h"

#include "records_p.h"
#include "rows_p.h"

#include <algorithm>

namespace TQServerInternal {

namespace {

constexpr size_t MAX_DEPTH = 64;  // levels below the root
constexpr size_t MAX_ITEMS = 100000;

constexpr const char *BY_KEY = "A.id = ?";
constexpr const char *BY_NAME = "A.name = ?";
constexpr const char *UNORDERED = "";

}  // namespace

std::unique_ptr<ArchiveNode> Archivist::load(PACKETDATATYPES type, int id)
{
    return load(type, BY_KEY, id);
}

std::unique_ptr<ArchiveNode> Archivist::load(
    PACKETDATATYPES type, const char *where, const QVariant &value)
{
    std::unique_ptr<TQPacketable> item = loadItem(type, where, value);
    if (!item) {
        return nullptr;
    }
    const TQKEY_ELEMENT key = item->dbkey;
    auto node = std::make_unique<ArchiveNode>(item.release());
    // An item that is referred to by its name has no key in a tree; see ArchiveNode::packetable.
    if (where == BY_NAME) {
        node->packetable->dbkey = TQKEY_CC::getNullKey();
    }
    m_path.push_back(key);
    addReferred(*node);
    m_path.pop_back();
    return node;
}

std::unique_ptr<TQPacketable> Archivist::loadItem(
    PACKETDATATYPES type, const char *where, const QVariant &value)
{
    const StorageClass *known = storageClass(type);
    if (m_failed || !known || !known->source() || m_items == MAX_ITEMS) {
        return nullptr;
    }
    TQLISTRECORD *list = nullptr;
    m_failed = !readRecords(m_store, *known, { where, UNORDERED }, { value }, &list);
    ListRecord *record = ListRecord::of(list);
    if (!record || isOnPath(record->key)) {
        TQPacketFreeList(&list, type);
        return nullptr;
    }
    TQLISTRECORD *others = list->next;
    list->next = nullptr;
    TQPacketFreeList(&others, type);
    std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(type));
    item->loadRecord(reinterpret_cast<unsigned char *>(list));
    item->setName(record->name.c_str());
    ++m_items;
    return item;
}

void Archivist::addReferred(ArchiveNode &node)
{
    if (m_path.size() > MAX_DEPTH) {
        return;
    }
    TQDB_REFERENCE *reference = nullptr;
    node.packetable->getReferences(0, &reference, 0);
    for (; reference; reference = reference->next) {
        const bool isByKey = TQKEY_CC::isValid(reference->key);
        const ArchiveNode *known = node.findNode(reference);
        // A reference by name needs a node without a key, also where the item is there by its key.
        if (known && (isByKey || !TQKEY_CC::isValid(known->packetable->dbkey))) {
            continue;
        }
        const auto keyType = static_cast<PACKETDATATYPES>(reference->key.hkey);
        std::unique_ptr<ArchiveNode> child = isByKey
            ? load(keyType, BY_KEY, reference->key.key)
            : load(reference->datatype, BY_NAME, QString::fromUtf8(reference->name));
        node.add(child.release());
    }
}

bool Archivist::isOnPath(const TQKEY_ELEMENT &key) const
{
    return std::any_of(m_path.begin(), m_path.end(), [&key](const TQKEY_ELEMENT &above) {
        return above.key == key.key && above.hkey == key.hkey;
    });
}

}  // namespace TQServerInternal
