#include "detailpane.h"

#include "itemfields.h"
#include "xmlpacketable.h"

#include <QHeaderView>

DetailPane::DetailPane(QWidget *parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("detail"));
    setHeaderLabels({ QStringLiteral("Details"), QString() });
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
    visitFields(packetable, [&](unsigned tag, const QDomElement &field) {
        const QString text = fieldText(type, tag, field);
        auto *row = new QTreeWidgetItem(parent, { fieldHeading(type, tag), text });
        row->setToolTip(1, text);
        const QDomElement referred = field.firstChildElement(inlined);
        if (!referred.isNull()) {
            addFields(row, referred);
        }
    });
}
