#include "jobmodel.h"

#include "itemfields.h"
#include "look.h"

#include <QColor>

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

namespace {

// Where a column has its value, and what it is called.
struct ColumnInfo
{
    unsigned tag;  // of the job's field
    Label JobStore::Job::*text;
    int JobStore::Job::*number;
};
using Job = JobStore::Job;
constexpr ColumnInfo COLUMNS[] = {
    { JobField::Name, &Job::name, nullptr }, { JobField::Output, &Job::output, nullptr },
    { JobField::State, nullptr, &Job::state }, { JobField::Colours, &Job::colours, nullptr },
    { JobField::Created, &Job::created, nullptr }, { JobField::Copies, nullptr, &Job::copies },
    { JobField::Priority, nullptr, &Job::priority },
    { JobField::Publication, &Job::publication, nullptr },
    { JobField::Book, nullptr, nullptr },  // the title is not the job's own
};
static_assert(std::size(COLUMNS) == JobModel::ColumnCount, "one entry per column");

int alignmentOf(int column)
{
    const bool isRight = COLUMNS[column].number && column != JobModel::State;
    return int(Qt::AlignVCenter | (isRight ? Qt::AlignRight : Qt::AlignLeft));
}

bool isOfSource(const Job &job, const Source &source, const Label &name)
{
    switch (source.kind) {
    case Source::All:
        return true;
    case Source::Publications:
        return !job.publication.isEmpty();
    case Source::Books:
        return TQKEY_CC::isValid(job.book);
    case Source::Output:
        return job.output == name;
    case Source::Publication:
        return job.publication == name;
    case Source::Book:
        return job.book == source.key;
    }
    return false;
}

// Jobs compare by a column like these numbers. Negative values of numbers keep their order.
quint64 orderOf(const JobStore &store, const Job &job, int column)
{
    const ColumnInfo &info = COLUMNS[column];
    if (info.number) {
        return quint64(qint64(job.*info.number) - JobRow::ABSENT);
    }
    return store.texts().order(info.text ? job.*info.text : store.bookTitle(job));
}

bool isFound(const JobStore &store, const Job &job, TextSearch &search, const std::set<int> &states)
{
    if (states.count(job.state) > 0 || search.isIn(store.bookTitle(job))) {
        return true;
    }
    return std::any_of(std::begin(COLUMNS), std::end(COLUMNS), [&](const ColumnInfo &column) {
        if (column.text) {
            return search.isIn(job.*column.text);
        }
        const bool isNumber = column.number && column.tag != JobField::State;
        return isNumber && job.*column.number != JobRow::ABSENT && search.isIn(job.*column.number);
    });
}

}  // namespace

JobModel::JobModel(QObject *parent)
    : QAbstractTableModel(parent), m_store(std::make_shared<JobStore>())
{
}

void JobModel::show(const std::shared_ptr<JobStore> &store) { arrange(store, NoLayoutChangeHint); }

void JobModel::setFilter(const Filter &filter)
{
    m_filter = filter;
    arrange(m_store, VerticalSortHint);
}

void JobModel::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = std::max(0, column);
    m_sortOrder = order;
    arrange(m_store, VerticalSortHint);
}

unsigned JobModel::fieldOf(int column) { return COLUMNS[column].tag; }

TQKEY_ELEMENT JobModel::key(int row) const
{
    return row >= 0 && row < rowCount() ? job(row).key : TQKEY_CC::getNullKey();
}

int JobModel::rowOf(const TQKEY_ELEMENT &key) const
{
    for (int row = 0; row < rowCount(); ++row) {
        if (job(row).key == key) {
            return row;
        }
    }
    return -1;
}

int JobModel::count() const
{
    int all = 0;
    for (const auto &[state, count] : m_counts) {
        all += count;
    }
    return all;
}

int JobModel::count(int state) const
{
    const auto found = m_counts.find(state);
    return found == m_counts.end() ? 0 : found->second;
}

int JobModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int JobModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QString JobModel::text(const Job &job, int column) const
{
    const ColumnInfo &info = COLUMNS[column];
    if (column == State) {
        return stateName(job.state);
    }
    if (info.number) {
        const int number = job.*info.number;
        return number == JobRow::ABSENT ? QString() : QString::number(number);
    }
    return m_store->texts().text(info.text ? job.*info.text : m_store->bookTitle(job));
}

QVariant JobModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return text(job(index.row()), index.column());
    case Qt::TextAlignmentRole:
        return alignmentOf(index.column());
    case Qt::DecorationRole:
        return index.column() == State ? stateColour(job(index.row()).state) : QVariant();
    default:
        return {};
    }
}

QVariant JobModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical || section < 0 || section >= ColumnCount) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return alignmentOf(section);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    return section == Name ? tr("Job") : fieldHeading(PACKETDATATYPE_JOB, COLUMNS[section].tag);
}

JobModel::Rows JobModel::filtered(const JobStore &store)
{
    TextSearch search(store.texts(), m_filter.text);
    const Label name = store.texts().find(m_filter.source.name);
    std::set<int> states;  // whose names contain the text
    for (int state = 0; state < stateNames().size(); ++state) {
        if (search.isIn(stateName(state))) {
            states.insert(state);
        }
    }
    Rows rows;
    m_counts.clear();
    for (size_t i = 0; i < store.places(); ++i) {
        const Job &job = store.job(i);
        if (!store.isUsed(i) || !isOfSource(job, m_filter.source, name) ||
            !(search.isEmpty() || isFound(store, job, search, states))) {
            continue;
        }
        ++m_counts[job.state];
        if (!m_filter.state || job.state == *m_filter.state) {
            rows.push_back(quint32(i));
        }
    }
    return rows;
}

// The numbers that are compared stand side by side, which is several times as fast as to fetch them
// from the jobs.
void JobModel::sortRows(const JobStore &store, Rows &rows) const
{
    struct Sorted
    {
        quint64 order;
        quint64 name;
        TQKEY_ELEMENT key;
        quint32 index;
    };
    std::vector<Sorted> sorted;
    sorted.reserve(rows.size());
    const bool isDescending = m_sortOrder == Qt::DescendingOrder;
    for (const quint32 index : rows) {
        const Job &job = store.job(index);
        const quint64 value = orderOf(store, job, m_sortColumn);
        sorted.push_back(
            { isDescending ? ~value : value, orderOf(store, job, Name), job.key, index });
    }
    std::sort(sorted.begin(), sorted.end(), [](const Sorted &a, const Sorted &b) {
        return std::tie(a.order, a.name, a.key.hkey, a.key.key) <
            std::tie(b.order, b.name, b.key.hkey, b.key.key);
    });
    std::transform(
        sorted.begin(), sorted.end(), rows.begin(), [](const Sorted &row) { return row.index; });
}

void JobModel::arrange(const std::shared_ptr<JobStore> &store, LayoutChangeHint why)
{
    store->texts().rank();
    Rows rows = filtered(*store);
    sortRows(*store, rows);
    if (!m_rows.empty() && !rows.empty()) {
        exchange(std::move(rows), store, why);
        return;
    }
    beginResetModel();
    m_store = store;
    m_rows = std::move(rows);
    endResetModel();
}

// Rows are added and removed at the end; in between they change places.
void JobModel::exchange(Rows rows, const std::shared_ptr<JobStore> &store, LayoutChangeHint why)
{
    const size_t before = m_rows.size();
    const size_t after = rows.size();
    if (after > before) {
        beginInsertRows({}, int(before), int(after) - 1);
        m_rows.resize(after, m_rows.back());
        endInsertRows();
    }
    Q_EMIT layoutAboutToBeChanged({}, why);
    const QModelIndexList from = persistentIndexList();
    std::vector<quint64> keys;
    QHash<quint64, int> places;  // of the jobs that have indexes
    for (const QModelIndex &index : from) {
        keys.push_back(number(job(index.row()).key));
        places.insert(keys.back(), -1);
    }
    m_store = store;
    rows.resize(std::max(before, after), rows.back());
    m_rows = std::move(rows);
    for (int row = 0; row < int(after) && !places.isEmpty(); ++row) {
        const auto place = places.find(number(job(row).key));
        if (place != places.end()) {
            *place = row;
        }
    }
    QModelIndexList to;
    for (int i = 0; i < from.size(); ++i) {
        const int row = places.value(keys[size_t(i)]);
        to << (row < 0 ? QModelIndex() : index(row, from.at(i).column()));
    }
    changePersistentIndexList(from, to);
    Q_EMIT layoutChanged({}, why);
    if (after < before) {
        beginRemoveRows({}, int(after), int(before) - 1);
        m_rows.resize(after);
        endRemoveRows();
    }
}
