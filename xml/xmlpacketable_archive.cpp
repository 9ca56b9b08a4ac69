#include "xmlpacketable.h"

#include "fields_p.h"
#include "linkedlist_p.h"
#include "text_p.h"
#include "xpkreference.h"

#include "archivenode.h"
#include "tqcommserver.h"
#include "tqitems.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

using namespace TQXmlInternal;

namespace {

// What one conversion inlines at most.
constexpr size_t MAX_LEVELS = 64;
constexpr int MAX_ITEMS = 100000;

quint64 keyNumber(unsigned int key, unsigned int hkey) { return quint64(hkey) << 32 | key; }

// The fields of an item, found by the key or the name that they refer to.
class ReferringFields
{
public:
    // Takes the fields of those "item" children of e that have the data type.
    ReferringFields(const QDomElement &e, PACKETDATATYPES type)
    {
        for (QDomElement item = e.firstChildElement(XMLPacketable::ITEM); !item.isNull();
             item = item.nextSiblingElement(XMLPacketable::ITEM)) {
            if (XMLPacketable::getType(item) != type) {
                continue;
            }
            for (QDomElement field = item.firstChildElement(); !field.isNull();
                 field = field.nextSiblingElement()) {
                add(field);
            }
        }
    }

    // In document order.
    QList<QDomElement> byKey(const TQKEY_ELEMENT &key) const
    {
        return find(m_byKey, keyNumber(key.key, key.hkey));
    }
    QList<QDomElement> byName(const QString &name) const { return find(m_byName, name); }

private:
    void add(const QDomElement &field)
    {
        if (field.hasAttribute(XMLPacketable::KEY) && field.hasAttribute(XMLPacketable::HKEY)) {
            const TQKEY_ELEMENT key = XMLPacketable::getDBkey(field);
            m_byKey[keyNumber(key.key, key.hkey)].append(field);
        }
        const QString name = XMLObject::getAttribute(field, XMLPacketable::VALUE);
        if (!name.isEmpty()) {
            m_byName[name].append(field);
        }
    }

    template<typename Key>
    static QList<QDomElement> find(const std::map<Key, QList<QDomElement>> &index, const Key &key)
    {
        const auto found = index.find(key);
        return found == index.end() ? QList<QDomElement>() : found->second;
    }

    std::map<quint64, QList<QDomElement>> m_byKey;
    std::map<QString, QList<QDomElement>> m_byName;
};

// The data of an ICC profile stays on the server until it is loaded.
void loadProfile(TQCommServer &server, TQPacketable *item)
{
    if (auto *profile = dynamic_cast<ICCPROFILEDATA_CC *>(item)) {
        const char *connected = server.getConnectedHostname();
        std::string host(connected ? connected : "");
        profile->load(host, static_cast<unsigned short>(server.getConnectedPortnum()));
    }
}

}  // namespace

// One conversion of an archive node with everything that it refers to.
class TQXML_NO_EXPORT XMLPacketable::Inlining
{
public:
    explicit Inlining(TQCommServer &server) : m_server(server) {}

    void load(XMLPacketable &item, const ArchiveNode *node);
    void insert(XMLPacketable &item, const ReferringFields &fields, const ArchiveNode *child);

private:
    TQCommServer &m_server;
    std::vector<const ArchiveNode *> m_path;  // what is being inlined, outermost first
    int m_items = 0;  // inlined so far
};

void XMLPacketable::Inlining::load(XMLPacketable &item, const ArchiveNode *node)
{
    TQPacketable *source = node->packetable;
    if (!source) {
        item.dropCache();
        return;
    }
    if (source->datatype == PACKETDATATYPE_ICCPROFILE) {
        loadProfile(m_server, source);
    }
    item.setData(*source);
    if (!item.m_packetable) {
        return;
    }
    TQDB_REFERENCE *head = nullptr;
    item.m_packetable->getReferences(0, &head, 0);
    if (!head) {
        return;
    }
    const ReferringFields fields(item.element(), item.getType());
    const TQDB_REFERENCE *last = lastOf(head);
    for (const TQDB_REFERENCE *reference = head; reference;
         reference = reference == last ? nullptr : reference->next) {
        insert(item, fields, node->findNode(reference));
    }
}

void XMLPacketable::Inlining::insert(
    XMLPacketable &item, const ReferringFields &fields, const ArchiveNode *child)
{
    if (!item.m_packetable || !child || !child->packetable) {
        return;
    }
    if (m_path.size() >= MAX_LEVELS ||
        std::find(m_path.begin(), m_path.end(), child) != m_path.end()) {
        return;
    }
    const TQKEY_ELEMENT key = child->packetable->dbkey;
    const QString name = QString::fromLatin1(child->packetable->name);
    if ((key.key == 0 || key.hkey == 0) && name.isEmpty()) {
        return;
    }
    const bool isByName = !TQKEY_CC::isValid(key) && !name.isEmpty();
    const QList<QDomElement> referring = isByName ? fields.byName(name) : fields.byKey(key);
    m_path.push_back(child);
    for (QDomElement field : referring) {
        if (m_items == MAX_ITEMS) {
            break;
        }
        ++m_items;
        XMLPacketable inlined;
        load(inlined, child);
        field.appendChild(inlined.element());  // `field` now holds the element
    }
    m_path.pop_back();
}

XMLPacketable *XMLPacketable::fromArchiveNode(TQCommServer &server, ArchiveNode *node)
{
    if (!node) {
        return nullptr;
    }
    auto item = std::make_unique<XMLPacketable>();
    item->setData(server, node);
    return item.release();
}

void XMLPacketable::setData(TQCommServer &server, const ArchiveNode *node)
{
    if (node) {
        Inlining(server).load(*this, node);
    }
}

void XMLPacketable::insertInlineData(TQCommServer &server, const ArchiveNode *child)
{
    if (m_packetable && child) {
        Inlining(server).insert(*this, ReferringFields(element(), getType()), child);
    }
}

bool XMLPacketable::getXPKReferences(QList<XPKReference *> &references) const
{
    const QDomElement item = getPacketableItemNode(element()).toElement();
    const auto fields = item.hasChildNodes() ? FieldTable::of(getType(item)) : nullptr;
    if (!fields) {
        return false;
    }
    const auto before = references.size();
    for (QDomElement e = item.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        const QString name = e.tagName();
        unsigned int tag = 0;
        if (!readNumber(QStringView(name).mid(1), 16, tag)) {  // a nested item or list
            continue;
        }
        const FieldTable::Field *field = fields->find(tag);
        const QDomElement inlined = e.firstChildElement();
        if (!field || inlined.isNull() ||
            (field->type != TQELEMENT_NAME && field->type != TQELEMENT_KEY)) {
            continue;
        }
        auto copy = std::make_unique<XMLPacketable>();
        copy->setData(inlined);
        auto reference = field->type == TQELEMENT_NAME
            ? std::make_unique<XPKReference>(copy.get(), getAttribute(e, VALUE))
            : std::make_unique<XPKReference>(copy.get(), getDBkey(e));
        copy.release();
        references.append(reference.get());
        reference.release();
    }
    return references.size() > before;
}
