#ifndef STATEDELEGATE_H
#define STATEDELEGATE_H

#include <QStyledItemDelegate>

/// Draws jobs' states, whose colours keep an edge on the selected row.
class StateDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

#endif
