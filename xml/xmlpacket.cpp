#include "xmlpacket.h"

#include "domtree_p.h"
#include "draft_p.h"
#include "text_p.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacketable.h"
#include "xmlui.h"
#include "xmlwriter_p.h"

#include <QFile>

#include <algorithm>
#include <cstdio>

using namespace TQXmlInternal;

const QString XMLPacket::HEADER = QStringLiteral("header");
const QString XMLPacket::SOURCE = QStringLiteral("src");
const QString XMLPacket::DESTINATION = QStringLiteral("dst");
const QString XMLPacket::BODY = QStringLiteral("body");
const QString XMLPacket::AGENT_ID = QStringLiteral("agent_id");

struct XMLPacket::Tree
{
    // All elements are in the document, unless an application took them out.
    QDomDocument document;
    QDomElement root;
    QDomElement header;
    QDomElement source;
    QDomElement destination;
    QDomElement body;

    // Whether an element of the header is still in the document.
    bool shows(const QDomElement &id) const
    {
        return !id.parentNode().isNull() && !header.parentNode().isNull() &&
            !root.parentNode().isNull();
    }
};

XMLPacket::XMLPacket() : XMLObject(XMLOBJECT_PACKET) {}

XMLPacket::~XMLPacket() { releaseObjects(); }

// Objects that share an element with this packet keep its document.
void XMLPacket::releaseObjects()
{
    const auto hasObject = [](const BodyItem &item) { return item.object() != nullptr; };
    if (std::any_of(m_items.begin(), m_items.end(), hasObject)) {
        tree();
    }
}

void XMLPacket::forgetObject(int place) { m_items[size_t(place)].forgetObject(); }

void XMLPacket::init(const XMLPacket *other)
{
    releaseObjects();
    if (other && other->m_tree) {
        auto copy = std::make_unique<Tree>();
        copy->document = withinDepth(other->m_tree->document).cloneNode(true).toDocument();
        copy->root = copy->document.documentElement();
        copy->header = getElement(copy->root, HEADER);
        copy->source = getElement(copy->header, SOURCE);
        copy->destination = getElement(copy->header, DESTINATION);
        copy->body = getElement(copy->root, BODY);
        m_items.clear();
        m_tree = std::move(copy);
        return;
    }
    m_source = other ? other->m_source : std::nullopt;
    m_destination = other ? other->m_destination : std::nullopt;
    m_items = other ? std::vector<BodyItem>(other->m_items) : std::vector<BodyItem>();
    m_tree.reset();
}

XMLPacket::Tree &XMLPacket::tree() const
{
    if (m_tree) {
        return *m_tree;
    }
    auto tree = std::make_unique<Tree>();
    tree->document = createDocument(TQ_NAMESPACE, rootNodeName());
    tree->root = tree->document.documentElement();
    tree->header = createElement(tree->root, HEADER);
    tree->source = createElement(tree->header, SOURCE);
    tree->destination = createElement(tree->header, DESTINATION);
    tree->body = createElement(tree->root, BODY);
    if (m_source) {
        setAttribute(tree->source, AGENT_ID, *m_source);
    }
    if (m_destination) {
        setAttribute(tree->destination, AGENT_ID, *m_destination);
    }
    for (const BodyItem &item : m_items) {
        const QDomElement e = item.appendTo(tree->body);
        if (item.object()) {
            item.object()->setElement(e);
        }
    }
    std::vector<BodyItem>().swap(m_items);
    m_tree = std::move(tree);
    return *m_tree;
}

XMLPacket &XMLPacket::operator=(const XMLPacket &other)
{
    init(&other);
    return *this;
}

bool XMLPacket::operator==(const XMLPacket &other) const
{
    if (!m_tree && !other.m_tree) {
        return m_source == other.m_source && m_destination == other.m_destination &&
            m_items == other.m_items;
    }
    if (m_tree && other.m_tree) {
        return sameDocument(m_tree->document, other.m_tree->document);
    }
    // Most packets differ in their ids already, which saves building one of them.
    if (getSourceAgentID() != other.getSourceAgentID() && showsSource() && other.showsSource()) {
        return false;
    }
    if (getDestinationAgentID() != other.getDestinationAgentID() && showsDestination() &&
        other.showsDestination()) {
        return false;
    }
    return sameDocument(tree().document, other.tree().document);
}

bool XMLPacket::operator!=(const XMLPacket &other) const { return !(*this == other); }

bool XMLPacket::showsSource() const { return !m_tree || m_tree->shows(m_tree->source); }
bool XMLPacket::showsDestination() const { return !m_tree || m_tree->shows(m_tree->destination); }

int XMLPacket::getSourceAgentID() const
{
    return m_tree ? getAttributeInt(m_tree->source, AGENT_ID) : m_source.value_or(0);
}

int XMLPacket::getDestinationAgentID() const
{
    return m_tree ? getAttributeInt(m_tree->destination, AGENT_ID) : m_destination.value_or(0);
}

void XMLPacket::setSourceAgentID(int agentID)
{
    if (m_tree) {
        setAttribute(m_tree->source, AGENT_ID, agentID);
    } else {
        m_source = agentID;
    }
}

void XMLPacket::setDestinationAgentID(int agentID)
{
    if (m_tree) {
        setAttribute(m_tree->destination, AGENT_ID, agentID);
    } else {
        m_destination = agentID;
    }
}

bool XMLPacket::isEmpty() const { return m_tree ? !m_tree->body.hasChildNodes() : m_items.empty(); }

bool XMLPacket::hasNodesOfType(XMLOBJECT_TYPE t) const
{
    if (m_tree) {
        return XMLObject::hasNodesOfType(m_tree->body, t);
    }
    const QString name = rootNodeName(t);
    return std::any_of(m_items.begin(), m_items.end(),
        [&name](const BodyItem &item) { return item.name() == name; });
}

int XMLPacket::getNodesOfType(XMLOBJECT_TYPE t, std::list<QDomNode> &out) const
{
    // If there is no such node, the document need not be built.
    return hasNodesOfType(t) ? XMLObject::getNodesOfType(tree().body, t, out) : 0;
}

QDomElement XMLPacket::appendCopy(const XMLObject &item)
{
    if (tree().body.isNull()) {
        return QDomElement();
    }
    return tree().body.appendChild(item.getNode()).toElement();
}

void XMLPacket::appendMoved(XMLObject &item)
{
    if (!m_tree && !item.m_isBuilt && !item.m_holder) {
        item.m_holder = this;
        item.m_place = int(m_items.size());
        Draft draft = item.takeDraft();
        draft.setObject(&item);
        m_items.emplace_back(std::move(draft));
        return;
    }
    QDomElement &body = tree().body;
    const QDomElement moved = item.getNodeConst();
    if (body.isNull() || moved.isNull() || isWithin(body, moved)) {
        return;
    }
    body.appendChild(moved);
    item.m_owner = m_tree->document;
}

QDomElement XMLPacket::append(XMLPacketable &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLAction &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLUI &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLImage &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLMessage &item) { return appendCopy(item); }

void XMLPacket::appendV(XMLPacketable &item) { appendMoved(item); }
void XMLPacket::appendV(XMLAction &item) { appendMoved(item); }
void XMLPacket::appendV(XMLUI &item) { appendMoved(item); }
void XMLPacket::appendV(XMLImage &item) { appendMoved(item); }
void XMLPacket::appendV(XMLMessage &item) { appendMoved(item); }

QDomElement XMLPacket::append(TQPacketable &p, bool current)
{
    QDomElement &body = tree().body;
    return body.isNull() ? QDomElement() : PacketItem(p, current).appendTo(body);
}

void XMLPacket::appendV(TQPacketable &p, bool current)
{
    if (m_tree) {
        append(p, current);
    } else {
        m_items.emplace_back(PacketItem(p, current));
    }
}

bool XMLPacket::write(QIODevice *device) const
{
    if (!device || !device->isWritable()) {
        return false;
    }
    XmlWriter writer(device);
    if (m_tree) {
        writeTree(writer, m_tree->document);
    } else {
        writeUnbuilt(writer);
    }
    return writer.finish();
}

void XMLPacket::writeUnbuilt(XmlWriter &writer) const
{
    const auto writeID = [&writer](const QString &name, std::optional<int> agentID) {
        writer.openElement(name);
        if (agentID) {
            writer.attribute(AGENT_ID, numberText(*agentID, 10));
        }
        writer.closeElement(name);
    };
    writer.openElement(rootNodeName());
    writer.attribute(QStringLiteral("xmlns"), TQ_NAMESPACE);
    writer.openElement(HEADER);
    writeID(SOURCE, m_source);
    writeID(DESTINATION, m_destination);
    writer.closeElement(HEADER);
    writer.openElement(BODY);
    for (const BodyItem &item : m_items) {
        item.write(writer);
    }
    writer.closeElement(BODY);
    writer.closeElement(rootNodeName());
}

void XMLPacket::print() const
{
    QFile output;
    if (output.open(stdout, QIODevice::WriteOnly)) {
        write(&output);
    }
}
