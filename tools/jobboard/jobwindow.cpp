#include "jobwindow.h"

#include "board.h"
#include "detailpane.h"

#include <QShortcut>
#include <QVBoxLayout>

JobWindow::JobWindow(const Board &board, const TQKEY_ELEMENT &key, const QString &name,
    const Item &item, QWidget *parent)
    : QWidget(parent, Qt::Window), m_key(key), m_fields(new DetailPane(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(name);
    resize(fontMetrics().averageCharWidth() * 60, fontMetrics().height() * 30);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_fields);
    m_fields->setPlaceholder(tr("The job is being read."));
    connect(
        new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this, &QWidget::close);
    connect(&board, &Board::itemRead, this, &JobWindow::take);
    take(item);
}

// An error keeps what is there; the main window says it.
void JobWindow::take(const Item &item)
{
    if (item.key == m_key && item.error.isEmpty()) {
        m_fields->setFields(item.fields);
    }
}
