#ifndef DETAILPANE_H
#define DETAILPANE_H

#include "placeholder.h"
#include "rows.h"

#include <QTreeWidget>

/// The fields of one item: first its own values, then the items that it refers to with theirs.
class DetailPane : public WithPlaceholder<QTreeWidget>
{
    Q_OBJECT

public:
    explicit DetailPane(QWidget *parent);

    /// Shows the fields; without any, the placeholder.
    void setFields(const std::vector<Field> &fields);

protected:
    /// The copy shortcut copies the value of the current field.
    void keyPressEvent(QKeyEvent *event) override;
};

#endif
