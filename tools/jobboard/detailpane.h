#ifndef DETAILPANE_H
#define DETAILPANE_H

#include <QTreeWidget>

class QDomElement;

/// The fields of one item: first its own values, then the items that it refers to with theirs.
class DetailPane : public QTreeWidget
{
    Q_OBJECT

public:
    explicit DetailPane(QWidget *parent);

    /// Shows a packetable element; a null element leaves the pane empty.
    void setItem(const QDomElement &packetable);

private:
    void addFields(QTreeWidgetItem *parent, const QDomElement &packetable);
};

#endif
