#ifndef TQXML_DRAFT_P_H
#define TQXML_DRAFT_P_H

#include "packetitem_p.h"

#include <QDomElement>
#include <QString>

#include <utility>
#include <variant>
#include <vector>

class XMLObject;

namespace TQXmlInternal {

class XmlWriter;

// An XMLObject's element until somebody asks for it: a name and attributes, no children.
class Draft
{
public:
    explicit Draft(const QString &name) : m_name(name) {}
    // The copy belongs to no object.
    Draft(const Draft &other) : m_name(other.m_name), m_attributes(other.m_attributes) {}
    Draft(Draft &&) noexcept = default;
    Draft &operator=(Draft &&) noexcept = default;
    ~Draft() = default;

    const QString &name() const { return m_name; }
    // Requires a name and a value that are not empty.
    void setAttribute(const QString &name, const QString &value);

    // The object whose element this is in a packet; null if there is none or it was deleted.
    XMLObject *object() const { return m_object; }
    void setObject(XMLObject *object) { m_object = object; }

    // Appends the element to parent, which is not null, and returns it.
    QDomElement appendTo(QDomElement &parent) const;
    void write(XmlWriter &writer) const;

    // Whether both are the same element. The order of attributes does not count.
    bool operator==(const Draft &other) const;

private:
    QString m_name;
    std::vector<std::pair<QString, QString>> m_attributes;
    XMLObject *m_object = nullptr;
};

// A child of a packet's body while the document is not built.
class BodyItem
{
public:
    explicit BodyItem(PacketItem &&item) : m_content(std::move(item)) {}
    explicit BodyItem(Draft &&draft) : m_content(std::move(draft)) {}

    // Null unless the item is a draft that belongs to an object.
    XMLObject *object() const;
    void forgetObject();

    // The tag name of the element that the item stands for.
    const QString &name() const;
    QDomElement appendTo(QDomElement &parent) const;
    void write(XmlWriter &writer) const;
    bool operator==(const BodyItem &other) const { return m_content == other.m_content; }

private:
    std::variant<PacketItem, Draft> m_content;
};

}  // namespace TQXmlInternal

#endif
