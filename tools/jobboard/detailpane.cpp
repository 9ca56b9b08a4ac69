#include "detailpane.h"

#include "itemfields.h"
#include "xmlpacketable.h"

#include <QHeaderView>

DetailPane::DetailPane(QWidget *parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("detail"));
    setHeaderLabels({ QStringLiteral("Field"), QStringLiteral("Value") });
    setAlternatingRowColors(true);
    setIndentation(fontMetrics().averageCharWidth() * 2);
    setSelectionMode(NoSelection);
    setFocusPolicy(Qt::NoFocus);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
}

void DetailPane::setItem(const QDomElement &packetable)
{
    clear();
    if (!packetable.isNull()) {
        addFields(invisibleRootItem(), packetable);
        expandAll();
    }
}

void DetailPane::addFields(QTreeWidgetItem *parent, const QDomElement &packetable)
{
    const PACKETDATATYPES type = XMLPacketable::getType(packetable);
    const QString inlined = XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE);
    QList<QTreeWidgetItem *> own;
    QList<QTreeWidgetItem *> items;  // below the item's own values
    visitFields(packetable, [&](unsigned tag, const QDomElement &field) {
        const QString text = fieldText(type, tag, field);
        const QDomElement referred = field.firstChildElement(inlined);
        auto *row = new QTreeWidgetItem({ fieldHeading(type, tag), text });
        row->setToolTip(1, text);
        (referred.isNull() ? own : items) << row;
        if (!referred.isNull()) {
            addFields(row, referred);
        }
    });
    parent->addChildren(own + items);
}
