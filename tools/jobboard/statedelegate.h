#ifndef STATEDELEGATE_H
#define STATEDELEGATE_H

#include <QStyledItemDelegate>

/// Draws the states of jobs, with an edge around the colour on the selected row.
class StateDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

#endif
