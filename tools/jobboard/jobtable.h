#ifndef JOBTABLE_H
#define JOBTABLE_H

#include "jobmodel.h"
#include "placeholder.h"

#include <QTableView>

class QAction;
class QMenu;

/// The table of jobs. Its columns can be moved, sorted by and hidden; several rows can be selected
/// and copied.
class JobTable : public WithPlaceholder<QTableView>
{
    Q_OBJECT

public:
    /// The model is not owned and must outlive the table.
    JobTable(JobModel &jobs, QWidget *parent);

    /// Columns that are shown, from left to right.
    QList<int> shownColumns() const;
    /// Selected rows, from top to bottom.
    QList<int> selectedRows() const;
    /// All rows, from top to bottom.
    QList<int> allRows() const;
    /// Of the shown columns.
    QStringList headings() const;
    /// The texts of a row in the shown columns.
    QStringList cells(int row) const;
    const JobModel &jobs() const { return m_jobs; }
    /// Fills a menu with an action for each column, which shows or hides it.
    void addColumnActions(QMenu &menu);

public Q_SLOTS:
    /// Puts the selected rows on the clipboard, as text with tabs and as an HTML table.
    void copy() const;

Q_SIGNALS:
    void columnsChanged();

private:
    void setUpHeader();
    void notePlace(QAbstractItemModel::LayoutChangeHint why);
    void keepPlace();

    JobModel &m_jobs;
    bool m_wasCurrentVisible = false;
    QPersistentModelIndex m_top;  // row that stays at the top
};

#endif
