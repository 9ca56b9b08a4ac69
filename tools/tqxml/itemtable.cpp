#include "itemtable.h"

#include "texttable.h"
#include "values.h"

#include "xmlpacketable.h"

#include "tqregistry.h"

#include <QHash>

namespace {

QString headingOf(PACKETDATATYPES type, unsigned tag)
{
    const char *heading = TQFieldHeading(type, tag);
    return heading ? QString::fromUtf8(heading) : XMLPacketable::getXMLTagNameFromDATATAG(int(tag));
}

QString keyOf(const QDomElement &e)
{
    return e.hasAttribute(XMLPacketable::KEY)
        ? keyText(e.attribute(XMLPacketable::KEY), e.attribute(XMLPacketable::HKEY))
        : QString();
}

// The text of a simple value, a key or an array.
QString fieldText(const QDomElement &field, const QString &separator)
{
    if (field.hasAttribute(XMLPacketable::VALUE)) {
        return field.attribute(XMLPacketable::VALUE);
    }
    if (field.hasAttribute(XMLPacketable::KEY)) {
        return keyOf(field);
    }
    QStringList entries;
    for (QDomElement entry = field.firstChildElement(XMLPacketable::VALUE); !entry.isNull();
         entry = entry.nextSiblingElement(XMLPacketable::VALUE)) {
        entries << entry.text();
    }
    return entries.join(separator);
}

// The columns after key and name.
class Fields
{
public:
    Fields(PACKETDATATYPES type, const std::vector<unsigned> &tags)
    {
        CONVERTSTRUCTELEMENTINFO *table = TQGetSystemStorageClassConv(type);
        for (const unsigned tag : tags) {
            const auto *record = XMLPacketable::getConvStructFromDataTag(table, tag);
            const bool isStrings = record && record->type == TQELEMENT_TEXTS;
            m_columns.insert(
                XMLPacketable::getXMLTagNameFromDATATAG(int(tag)), int(m_separators.size()));
            m_separators << (isStrings ? QStringLiteral(", ") : QStringLiteral(" "));
        }
    }

    // One cell for each tag.
    QStringList cellsOf(const QDomElement &packetable) const
    {
        QStringList cells;
        while (cells.size() < m_separators.size()) {
            cells << QString();
        }
        for (QDomElement field =
                 XMLPacketable::getPacketableItemNode(packetable).firstChildElement();
             !field.isNull(); field = field.nextSiblingElement()) {
            const int column = m_columns.value(field.tagName(), -1);
            if (column >= 0) {
                cells[column] = fieldText(field, m_separators.at(column));
            }
        }
        return cells;
    }

private:
    QHash<QString, int> m_columns;  // by element name
    QStringList m_separators;  // of the entries of each column
};

}  // namespace

QByteArray itemTable(const std::list<QDomNode> &items, const std::vector<unsigned> &tags)
{
    const PACKETDATATYPES type = XMLPacketable::getType(items.front().toElement());
    QStringList headings { QStringLiteral("Key") };
    for (const unsigned tag : tags) {
        headings << headingOf(type, tag);
    }
    const Fields fields(type, { tags.begin() + 1, tags.end() });
    TextTable table(headings);
    for (const QDomNode &item : items) {
        const QDomElement e = item.toElement();
        table.addRow(QStringList { keyOf(e), XMLPacketable::getName(e) } + fields.cellsOf(e));
    }
    return table.text();
}
