#ifndef WHOLEROWS_H
#define WHOLEROWS_H

#include <QFrame>

class QAbstractScrollArea;

/// The frame of a view that shows whole rows, or lines of text, only: what is left below the last
/// one stays empty. All rows are of one height.
class WholeRows : public QFrame
{
    Q_OBJECT

public:
    /// Takes the view as its child; an item view has its model already.
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
