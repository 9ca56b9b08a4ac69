#ifndef WHOLEROWS_H
#define WHOLEROWS_H

#include <QFrame>

class QAbstractScrollArea;

/// The frame of a view that shows only whole rows or lines; the rest below the last one stays
/// empty. All rows have the same height.
class WholeRows : public QFrame
{
    Q_OBJECT

public:
    /// The view becomes its child; an item view must have its model already.
    explicit WholeRows(QAbstractScrollArea *view, QWidget *parent = nullptr);

    QSize minimumSizeHint() const override;
    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int rowHeight() const;
    void fit();

    QAbstractScrollArea *m_view;  // child
    int m_rowHeight = 0;  // 0 until there is a row
};

#endif
