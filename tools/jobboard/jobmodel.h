#ifndef JOBMODEL_H
#define JOBMODEL_H

#include "jobstore.h"

#include <QAbstractTableModel>

#include <map>
#include <memory>
#include <optional>

/// The jobs of a JobStore that are asked for, in the order that is asked for.
///
/// Whatever changes, indexes stay with their jobs, so that selection and current row do, too.
class JobModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Name,
        Output,
        State,
        Colours,
        Created,
        Copies,
        Priority,
        Publication,
        Book,
        ColumnCount
    };
    /// Which jobs are shown.
    struct Filter
    {
        Source source = {};
        std::optional<int> state = {};
        QString text = {};  ///< in any column; case and accents do not count
    };

    explicit JobModel(QObject *parent);

    /// Shows these jobs, or what has become of them. The layout changes with the hint that it is
    /// not sorted; otherwise with the hint that it is.
    void show(const std::shared_ptr<JobStore> &store);
    void setFilter(const Filter &filter);
    const Filter &filter() const { return m_filter; }
    /// By the column, then by name and then by key.
    void sort(int column, Qt::SortOrder order) override;

    /// The tag of the field that a column shows.
    static unsigned fieldOf(int column);
    /// The job in a row; the null key outside the rows.
    TQKEY_ELEMENT key(int row) const;
    /// The row of a job; -1 if it is not shown.
    int rowOf(const TQKEY_ELEMENT &key) const;
    /// How many jobs of any state, or of one state, the rest of the filter shows.
    int count() const;
    int count(int state) const;
    int total() const { return int(m_store->size()); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    using Rows = std::vector<quint32>;  // numbers of jobs in the store

    const JobStore::Job &job(int row) const { return m_store->job(m_rows[size_t(row)]); }
    QString text(const JobStore::Job &job, int column) const;
    Rows filtered(const JobStore &store);
    void sortRows(const JobStore &store, Rows &rows) const;
    void arrange(const std::shared_ptr<JobStore> &store, LayoutChangeHint why);
    void exchange(Rows rows, const std::shared_ptr<JobStore> &store, LayoutChangeHint why);

    std::shared_ptr<JobStore> m_store;
    Rows m_rows;
    Filter m_filter;
    std::map<int, int> m_counts;  // by state
    int m_sortColumn = Name;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};

#endif
