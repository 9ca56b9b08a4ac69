// A packet builds a QDomDocument only when somebody asks for a node, since the document is what
// takes most of its time and memory. Until then the packet's body is a list of BodyItems: server
// items as packet text (PacketItem), and messages and other objects that have only attributes as
// drafts. A Draft can be written and compared as it is, and makes its element when the document is
// built.

#include "draft_p.h"

#include "vocabulary_p.h"
#include "xmlwriter_p.h"

#include <algorithm>

namespace TQXmlInternal {

void Draft::setAttribute(const QString &name, const QString &value)
{
    const auto known = std::find_if(m_attributes.begin(), m_attributes.end(),
        [&name](const auto &attribute) { return attribute.first == name; });
    if (known != m_attributes.end()) {
        known->second = value;
    } else {
        m_attributes.emplace_back(name, value);
    }
}

QDomElement Draft::appendTo(QDomElement &parent) const
{
    QDomElement e = parent.ownerDocument().createElement(m_name);
    for (const auto &[name, value] : m_attributes) {
        e.setAttribute(name, value);
    }
    parent.appendChild(e);
    return e;
}

void Draft::write(XmlWriter &writer) const
{
    auto attributes = m_attributes;
    std::sort(attributes.begin(), attributes.end());
    writer.openElement(m_name);
    for (const auto &[name, value] : attributes) {
        writer.attribute(name, value);
    }
    writer.closeElement(m_name);
}

bool Draft::operator==(const Draft &other) const
{
    return m_name == other.m_name &&
        std::is_permutation(m_attributes.begin(), m_attributes.end(), other.m_attributes.begin(),
            other.m_attributes.end());
}

XMLObject *BodyItem::object() const
{
    const Draft *draft = std::get_if<Draft>(&m_content);
    return draft ? draft->object() : nullptr;
}

void BodyItem::forgetObject()
{
    if (Draft *draft = std::get_if<Draft>(&m_content)) {
        draft->setObject(nullptr);
    }
}

const QString &BodyItem::name() const
{
    // A PacketItem is a server item, whose element always has this name.
    const Draft *draft = std::get_if<Draft>(&m_content);
    return draft ? draft->name() : PACKETABLE;
}

QDomElement BodyItem::appendTo(QDomElement &parent) const
{
    return std::visit(
        [&parent](const auto &content) { return content.appendTo(parent); }, m_content);
}

void BodyItem::write(XmlWriter &writer) const
{
    std::visit([&writer](const auto &content) { content.write(writer); }, m_content);
}

}  // namespace TQXmlInternal
