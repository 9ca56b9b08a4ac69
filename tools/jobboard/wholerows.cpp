#include "wholerows.h"

#include <QAbstractItemView>
#include <QEvent>

#include <algorithm>

WholeRows::WholeRows(QAbstractScrollArea *view, QWidget *parent) : QFrame(parent), m_view(view)
{
    setFrameStyle(view->frameStyle());
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    view->setFrameShape(NoFrame);
    view->setParent(this);
    view->viewport()->installEventFilter(this);
    if (const auto *items = qobject_cast<QAbstractItemView *>(view)) {
        connect(items->model(), &QAbstractItemModel::rowsInserted, this, [this] {
            if (m_rowHeight == 0) {
                fit();
            }
        });
    }
}

QSize WholeRows::minimumSizeHint() const
{
    const QSize frame(2 * frameWidth(), 2 * frameWidth());
    return m_view->minimumSizeHint().expandedTo(m_view->minimumSize()) + frame;
}

bool WholeRows::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        fit();  // a header or a scroll bar may have appeared or vanished
    }
    return QFrame::eventFilter(watched, event);
}

void WholeRows::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    fit();
}

int WholeRows::rowHeight() const
{
    if (const auto *items = qobject_cast<QAbstractItemView *>(m_view)) {
        return items->visualRect(items->model()->index(0, 0)).height();
    }
    // Some fonts give a line spacing that is smaller than their letters.
    return std::max(m_view->fontMetrics().lineSpacing(), m_view->fontMetrics().height());
}

void WholeRows::fit()
{
    m_rowHeight = std::max(m_rowHeight, rowHeight());
    const int others = m_view->height() - m_view->viewport()->height();
    const int room = std::max(0, contentsRect().height() - others);
    m_view->setGeometry(
        contentsRect().adjusted(0, 0, 0, m_rowHeight > 0 ? -(room % m_rowHeight) : 0));
}
