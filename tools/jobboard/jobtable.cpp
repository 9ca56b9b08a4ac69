#include "jobtable.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>
#include <iterator>

namespace {

// The widths of the columns.
constexpr const char *WIDTHS[] = { "The Harbour Gazette 12 p. 12 and more", "Digital Press Colour",
    "In progress 12", "CMYK + Spot 1", "2024-03-06 06:00", "Copies ▾", "Priority ▾",
    "The Harbour Gazette 12", "Candide, ou l’Optimisme" };
static_assert(std::size(WIDTHS) == JobModel::ColumnCount, "one sample per column");

constexpr QSize STATE_MARK(9, 9);

// Draws the states of jobs, with an edge around the colour on a selected row.
class StateDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const auto colour = index.data(Qt::DecorationRole).value<QColor>();
        if (colour.isValid()) {
            QPixmap square(option->decorationSize);
            square.fill(option->palette.color(QPalette::HighlightedText));
            QPainter(&square).fillRect(square.rect().adjusted(1, 1, -1, -1), colour);
            option->icon.addPixmap(square, QIcon::Selected);
        }
    }
};

QString html(const QList<QStringList> &cells)
{
    QString table = QStringLiteral("<table>");
    QString tag = QStringLiteral("th");
    for (const QStringList &row : cells) {
        table += QStringLiteral("<tr>");
        for (const QString &cell : row) {
            table += QStringLiteral("<%1>%2</%1>").arg(tag, cell.toHtmlEscaped());
        }
        table += QStringLiteral("</tr>\n");
        tag = QStringLiteral("td");
    }
    return table + QStringLiteral("</table>");
}

}  // namespace

JobTable::JobTable(JobModel &jobs, QWidget *parent) : WithPlaceholder(parent), m_jobs(jobs)
{
    setObjectName(QStringLiteral("jobs"));
    setAccessibleName(tr("Jobs"));
    setModel(&jobs);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setTabKeyNavigation(false);  // Tab goes to the next pane
    setAlternatingRowColors(true);
    setShowGrid(false);
    setIconSize(STATE_MARK);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);  // pages are numbered at the end
    setItemDelegateForColumn(JobModel::State, new StateDelegate(this));
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    setUpHeader();
    setSortingEnabled(true);
    sortByColumn(JobModel::Name, Qt::AscendingOrder);
    connect(&jobs, &QAbstractItemModel::layoutAboutToBeChanged, this,
        [this](const QList<QPersistentModelIndex> &, QAbstractItemModel::LayoutChangeHint why) {
            notePlace(why);
        });
    connect(&jobs, &QAbstractItemModel::layoutChanged, this, &JobTable::keepPlace);
}

void JobTable::setUpHeader()
{
    QHeaderView *header = horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionsMovable(true);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    for (int i = JobModel::Name; i < JobModel::ColumnCount; ++i) {
        const int width = fontMetrics().horizontalAdvance(QString::fromUtf8(WIDTHS[i]));
        header->resizeSection(i, width + fontMetrics().averageCharWidth() * 2);
    }
    header->hideSection(JobModel::Publication);
    header->hideSection(JobModel::Book);
    connect(header, &QWidget::customContextMenuRequested, this, [this, header](QPoint at) {
        QMenu menu;
        addColumnActions(menu);
        menu.exec(header->mapToGlobal(at));
    });
}

// After a reload the same row is at the top, unless the table shows its beginning.
void JobTable::notePlace(QAbstractItemModel::LayoutChangeHint why)
{
    m_wasCurrentVisible = viewport()->rect().intersects(visualRect(currentIndex()));
    const bool isKept =
        why == QAbstractItemModel::NoLayoutChangeHint && verticalScrollBar()->value() > 0;
    m_top = isKept ? m_jobs.index(rowAt(0), JobModel::Name) : QModelIndex();
}

// The current row, if it was in view, stays in view, wherever it moves.
void JobTable::keepPlace()
{
    if (m_top.isValid()) {
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(m_top.row());
    }
    m_top = QModelIndex();
    if (m_wasCurrentVisible && currentIndex().isValid()) {
        scrollTo(currentIndex());
    }
}

QList<int> JobTable::shownColumns() const
{
    QList<int> columns;
    for (int i = 0; i < horizontalHeader()->count(); ++i) {
        const int column = horizontalHeader()->logicalIndex(i);
        if (!isColumnHidden(column)) {
            columns << column;
        }
    }
    return columns;
}

QList<int> JobTable::selectedRows() const
{
    QList<int> rows;
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows << row;
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

QList<int> JobTable::allRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_jobs.rowCount(); ++row) {
        rows << row;
    }
    return rows;
}

QStringList JobTable::headings() const
{
    QStringList headings;
    for (const int column : shownColumns()) {
        headings << m_jobs.headerData(column, Qt::Horizontal).toString();
    }
    return headings;
}

QStringList JobTable::cells(int row) const
{
    QStringList cells;
    for (const int column : shownColumns()) {
        cells << m_jobs.index(row, column).data().toString();
    }
    return cells;
}

void JobTable::copy() const
{
    QList<QStringList> table { headings() };
    QString text;
    for (const int row : selectedRows()) {
        table << cells(row);
        text += table.last().join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    if (text.isEmpty()) {
        return;
    }
    auto *copied = new QMimeData;
    copied->setText(text);
    copied->setHtml(html(table));
    QApplication::clipboard()->setMimeData(copied);
}

void JobTable::addColumnActions(QMenu &menu)
{
    for (int i = 0; i < horizontalHeader()->count(); ++i) {
        const int column = horizontalHeader()->logicalIndex(i);
        const QString heading = m_jobs.headerData(column, Qt::Horizontal).toString();
        QAction *action = menu.addAction(heading);
        action->setCheckable(true);
        action->setChecked(!isColumnHidden(column));
        action->setEnabled(isColumnHidden(column) || shownColumns().size() > 1);
        connect(action, &QAction::toggled, this, [this, column](bool isShown) {
            setColumnHidden(column, !isShown);
            Q_EMIT columnsChanged();
        });
    }
}
