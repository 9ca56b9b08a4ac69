#include "detailpane.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>

namespace {

void add(QTreeWidgetItem *parent, const std::vector<Field> &fields)
{
    for (const Field &field : fields) {
        auto *row = new QTreeWidgetItem(parent, { field.heading, field.text });
        row->setToolTip(1, field.text);
        add(row, field.fields);
    }
}

}  // namespace

DetailPane::DetailPane(QWidget *parent) : WithPlaceholder(parent)
{
    setObjectName(QStringLiteral("detail"));
    setAccessibleName(tr("Details of the job"));
    setHeaderLabels({ tr("Field"), tr("Value") });
    setAlternatingRowColors(true);
    setUniformRowHeights(true);
    setIndentation(fontMetrics().averageCharWidth() * 2);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
}

void DetailPane::setFields(const std::vector<Field> &fields)
{
    clear();
    add(invisibleRootItem(), fields);
    expandAll();
}

void DetailPane::keyPressEvent(QKeyEvent *event)
{
    if (event == QKeySequence::Copy && currentItem()) {
        QApplication::clipboard()->setText(currentItem()->text(1));
    } else {
        WithPlaceholder::keyPressEvent(event);
    }
}
