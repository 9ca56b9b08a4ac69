#include "statedelegate.h"

#include <QPainter>

void StateDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const auto colour = index.data(Qt::DecorationRole).value<QColor>();
    if (!colour.isValid()) {
        return;
    }
    QPixmap square(option->decorationSize);
    square.fill(option->palette.color(QPalette::HighlightedText));
    QPainter(&square).fillRect(square.rect().adjusted(1, 1, -1, -1), colour);
    option->icon.addPixmap(square, QIcon::Selected);
}
