#include "jobmodel.h"

#include "itemfields.h"
#include "xmlpacketable.h"

#include <QColor>
#include <QLocale>

#include <algorithm>
#include <iterator>

namespace {

enum Kind { Text, Number };

// The columns, in their order.
struct ColumnInfo
{
    unsigned tag;  // of the job's field
    Kind kind;
};
constexpr ColumnInfo COLUMNS[] = {
    { JobField::Name, Text },
    { JobField::Output, Text },
    { JobField::State, Number },
    { JobField::Colours, Text },
    { JobField::Created, Text },
    { JobField::Copies, Number },
    { JobField::Priority, Number },
};
static_assert(std::size(COLUMNS) == JobModel::ColumnCount, "one entry per column");

constexpr QRgb STATE_COLOURS[] = { 0xff8a9299, 0xffe8a317, 0xff3fa34d };  // by state

QVariant stateColour(int state)
{
    const bool isKnown = state >= 0 && size_t(state) < std::size(STATE_COLOURS);
    return isKnown ? QVariant(QColor(STATE_COLOURS[state])) : QVariant();
}

int columnOf(unsigned tag)
{
    const auto found = std::find_if(std::begin(COLUMNS), std::end(COLUMNS),
        [tag](const ColumnInfo &column) { return column.tag == tag; });
    return found == std::end(COLUMNS) ? -1 : int(found - std::begin(COLUMNS));
}

int alignmentOf(int column)
{
    const bool isRight = COLUMNS[column].kind == Number && column != JobModel::State;
    return int(Qt::AlignVCenter | (isRight ? Qt::AlignRight : Qt::AlignLeft));
}

}  // namespace

bool operator==(const TQKEY_ELEMENT &a, const TQKEY_ELEMENT &b)
{
    return a.key == b.key && a.hkey == b.hkey;
}

QCollator textOrder()
{
    QCollator collator { QLocale(QLocale::English) };
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

JobModel::JobModel(QObject *parent) : QAbstractTableModel(parent), m_collator(textOrder()) {}

std::vector<JobModel::Job> JobModel::read(const std::list<QDomNode> &items) const
{
    std::vector<Job> jobs;
    jobs.reserve(items.size());
    for (const QDomNode &item : items) {
        jobs.push_back(read(item.toElement()));
    }
    return jobs;
}

void JobModel::append(std::vector<Job> jobs)
{
    if (jobs.empty()) {
        return;
    }
    beginInsertRows({}, rowCount(), rowCount() + int(jobs.size()) - 1);
    std::move(jobs.begin(), jobs.end(), std::back_inserter(m_jobs));
    endInsertRows();
}

JobModel::Job JobModel::read(const QDomElement &packetable) const
{
    Job job { XMLPacketable::getDBkey(packetable), {}, {}, {}, {},
        m_collator.sortKey(XMLPacketable::getName(packetable)) };
    visitFields(packetable, [&job](unsigned tag, const QDomElement &field) {
        const int column = columnOf(tag);
        if (column >= 0) {
            job.texts[column] = fieldText(PACKETDATATYPE_JOB, tag, field);
            job.numbers[column] = field.attribute(XMLPacketable::VALUE).toInt();
        } else if (tag == JobField::Publication) {
            job.publication = fieldText(PACKETDATATYPE_JOB, tag, field);
        } else if (tag == JobField::Book) {
            job.book = fieldKey(field);
        }
    });
    return job;
}

void JobModel::clear()
{
    beginResetModel();
    m_jobs.clear();
    endResetModel();
}

int JobModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_jobs.size());
}

int JobModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant JobModel::data(const QModelIndex &index, int role) const
{
    const int column = index.column();
    const bool isNumber = COLUMNS[column].kind == Number;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return job(index.row()).texts[column];
    case Qt::TextAlignmentRole:
        return alignmentOf(column);
    case Qt::DecorationRole:
        return column == State ? stateColour(job(index.row()).numbers[State]) : QVariant();
    case SORT_ROLE:
        return isNumber ? QVariant(job(index.row()).numbers[column])
                        : QVariant(job(index.row()).texts[column]);
    default:
        return {};
    }
}

QVariant JobModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return alignmentOf(section);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    return section == Name ? QStringLiteral("Job")
                           : fieldHeading(PACKETDATATYPE_JOB, COLUMNS[section].tag);
}

JobFilter::JobFilter(JobModel &jobs, QObject *parent) : QSortFilterProxyModel(parent), m_jobs(jobs)
{
    setSourceModel(&jobs);
    setSortRole(JobModel::SORT_ROLE);
}

void JobFilter::setSource(const Source &source)
{
    m_source = source;
    invalidate();  // invalidateFilter() would remove the rows one by one
}

void JobFilter::setState(std::optional<int> state)
{
    m_state = state;
    invalidate();
}

void JobFilter::setText(const QString &text)
{
    m_text = text;
    invalidate();
}

bool JobFilter::isOfSource(const JobModel::Job &job) const
{
    switch (m_source.kind) {
    case Source::All:
        return true;
    case Source::Publications:
        return !job.publication.isEmpty();
    case Source::Books:
        return TQKEY_CC::isValid(job.book);
    case Source::Output:
        return job.texts[JobModel::Output] == m_source.name;
    case Source::Publication:
        return job.publication == m_source.name;
    case Source::Book:
        return job.book == m_source.key;
    }
    return false;
}

bool JobFilter::filterAcceptsRow(int row, const QModelIndex &) const
{
    const JobModel::Job &job = m_jobs.job(row);
    return isOfSource(job) && (!m_state || job.numbers[JobModel::State] == *m_state) &&
        (m_text.isEmpty() || job.texts[JobModel::Name].contains(m_text, Qt::CaseInsensitive));
}

bool JobFilter::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    if (left.column() == JobModel::Name) {
        return m_jobs.job(left.row()).order.compare(m_jobs.job(right.row()).order) < 0;
    }
    return QSortFilterProxyModel::lessThan(left, right);
}
