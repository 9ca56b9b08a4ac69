#ifndef SOURCEMODEL_H
#define SOURCEMODEL_H

#include "jobstore.h"

#include <QAbstractItemModel>

/// Outputs, publications and books, each with the number of its jobs, below one row for all jobs
/// and three for the groups.
class SourceModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column { Name, Count, ColumnCount };

    explicit SourceModel(QObject *parent);

    /// Shows what the jobs are listed for. A reset, if there are others than before. The store's
    /// texts must be ranked.
    void show(const JobStore &store);
    /// Of an invalid index: all jobs.
    Source source(const QModelIndex &index) const;
    /// The row of the same source; of all jobs if there is none.
    QModelIndex find(const Source &source) const;

    QModelIndex index(
        int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Group
    {
        Source source;  // that the group's own row stands for
        Source::Kind kind;  // of its entries
        std::vector<JobStore::Entry> entries;
    };

    bool hasSameRows(const std::vector<Group> &groups) const;
    const JobStore::Entry *entry(const QModelIndex &index) const;

    std::vector<Group> m_groups;
    int m_all = 0;  // jobs
};

#endif
