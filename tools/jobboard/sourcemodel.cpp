#include "sourcemodel.h"

#include <QLocale>

#include <algorithm>

namespace {

bool isSame(const Source &a, const Source &b)
{
    return a.kind == b.kind && a.key == b.key && (a.kind == Source::Book || a.name == b.name);
}

}  // namespace

// The internal id of an index is 0 for a group, and else one more than the number of its group.
SourceModel::SourceModel(QObject *parent) : QAbstractItemModel(parent)
{
    m_groups = {
        { { Source::All, tr("All jobs"), {} }, Source::All, {} },
        { { Source::All, tr("Outputs"), {} }, Source::Output, {} },
        { { Source::Publications, tr("Publications"), {} }, Source::Publication, {} },
        { { Source::Books, tr("Books"), {} }, Source::Book, {} },
    };
}

bool SourceModel::hasSameRows(const std::vector<Group> &groups) const
{
    const auto isSameEntry = [](const JobStore::Entry &a, const JobStore::Entry &b) {
        return isSame(a.source, b.source);
    };
    return std::equal(
        groups.begin(), groups.end(), m_groups.begin(), [&](const Group &a, const Group &b) {
            return std::equal(a.entries.begin(), a.entries.end(), b.entries.begin(),
                b.entries.end(), isSameEntry);
        });
}

void SourceModel::show(const JobStore &store)
{
    std::vector<Group> groups = m_groups;
    for (Group &group : groups) {
        if (group.kind != Source::All) {
            group.entries = store.entries(group.kind);
        }
    }
    m_all = int(store.size());
    if (!hasSameRows(groups)) {
        beginResetModel();
        m_groups = std::move(groups);
        endResetModel();
        return;
    }
    m_groups = std::move(groups);
    const int last = rowCount() - 1;
    Q_EMIT dataChanged(index(0, Count), index(last, Count));
    for (int group = 0; group <= last; ++group) {
        const QModelIndex top = index(group, Name);
        if (rowCount(top) > 0) {
            Q_EMIT dataChanged(index(0, Count, top), index(rowCount(top) - 1, Count, top));
        }
    }
}

const JobStore::Entry *SourceModel::entry(const QModelIndex &index) const
{
    const bool isEntry = index.isValid() && index.internalId() > 0;
    return isEntry ? &m_groups[index.internalId() - 1].entries[size_t(index.row())] : nullptr;
}

Source SourceModel::source(const QModelIndex &index) const
{
    if (const JobStore::Entry *found = entry(index)) {
        return found->source;
    }
    return m_groups[index.isValid() ? size_t(index.row()) : 0].source;
}

QModelIndex SourceModel::find(const Source &source) const
{
    for (int group = 0; group < rowCount(); ++group) {
        const QModelIndex top = index(group, Name);
        if (isSame(m_groups[size_t(group)].source, source)) {
            return top;
        }
        const auto &entries = m_groups[size_t(group)].entries;
        const auto found = std::find_if(entries.begin(), entries.end(),
            [&source](const JobStore::Entry &each) { return isSame(each.source, source); });
        if (found != entries.end()) {
            return index(int(found - entries.begin()), Name, top);
        }
    }
    return index(0, Name);
}

QModelIndex SourceModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent)) {
        return {};
    }
    return createIndex(row, column, quintptr(parent.isValid() ? parent.row() + 1 : 0));
}

QModelIndex SourceModel::parent(const QModelIndex &index) const
{
    const bool isEntry = index.isValid() && index.internalId() > 0;
    return isEntry ? createIndex(int(index.internalId()) - 1, 0, quintptr(0)) : QModelIndex();
}

int SourceModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid()) {
        return int(m_groups.size());
    }
    const bool isGroup = parent.internalId() == 0 && parent.column() == 0;
    return isGroup ? int(m_groups[size_t(parent.row())].entries.size()) : 0;
}

int SourceModel::columnCount(const QModelIndex &) const { return ColumnCount; }

QVariant SourceModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return int(Qt::AlignVCenter | (index.column() == Count ? Qt::AlignRight : Qt::AlignLeft));
    }
    if (role != Qt::DisplayRole && !(role == Qt::ToolTipRole && index.column() == Name)) {
        return {};
    }
    if (index.column() == Name) {
        return source(index).name;
    }
    if (const JobStore::Entry *found = entry(index)) {
        return QLocale().toString(found->count);
    }
    return index.row() == 0 ? QVariant(QLocale().toString(m_all)) : QVariant();
}

QVariant SourceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical || role != Qt::DisplayRole) {
        return {};
    }
    return section == Name ? tr("Jobs of") : tr("Jobs");
}
