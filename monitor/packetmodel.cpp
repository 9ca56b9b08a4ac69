// Shows a packet log in a table. Row r is the record with number m_first + r; when the log drops
// its oldest records, the first rows go, and the numbers stay.

#include "packetmodel.h"

#include "packetlog.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace TQXmlInternal {

namespace {

const char *const HEADINGS[] = { QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "Time"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "From"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "To"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "Content"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "Size"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "What became of it") };
static_assert(std::size(HEADINGS) == PacketModel::ColumnCount, "one heading a column");

const char *const OUTCOMES[] = { QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "waiting"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "delivered after %1"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "lost: there is no such agent"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "dropped: its source is not registered"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "dropped: equals the one queued last"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "dropped: is queued already"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "agent of type %1 added"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "agent of type %1 removed"),
    QT_TRANSLATE_NOOP("TQXmlInternal::PacketModel", "agent of type %1 supplied") };
static_assert(std::size(OUTCOMES) == PacketRecord::StateCount, "one text a state");

QString durationText(qint64 microseconds)
{
    return QStringLiteral("%1 ms").arg(QLocale().toString(double(microseconds) / 1000, 'f', 2));
}

QString timeText(qint64 microseconds)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(microseconds / 1000);
    return time.toString(QStringLiteral("HH:mm:ss.zzz"));
}

}  // namespace

PacketModel::PacketModel(PacketLog &log, QObject *parent)
    : QAbstractTableModel(parent), m_log(log), m_first(log.first()), m_end(log.first())
{
    sync();
}

void PacketModel::sync()
{
    removeDropped();
    emitChanges();
    if (m_log.end() > m_end) {
        beginInsertRows({}, int(m_end - m_first), int(m_log.end() - m_first) - 1);
        m_end = m_log.end();
        endInsertRows();
    }
}

void PacketModel::removeDropped()
{
    const qint64 first = m_log.first();
    if (first >= m_end) {
        beginResetModel();
        m_first = m_end = first;
        endResetModel();
    } else if (first > m_first) {
        beginRemoveRows({}, 0, int(first - m_first) - 1);
        m_first = first;
        endRemoveRows();
    }
}

// Neighbouring rows that changed are reported as one range, since views do work for each signal.
void PacketModel::emitChanges()
{
    const auto isGap = [](qint64 number, qint64 next) { return next > number + 1; };
    std::vector<qint64> numbers = m_log.takeChanged();
    std::sort(numbers.begin(), numbers.end());
    auto begin = std::lower_bound(numbers.begin(), numbers.end(), m_first);
    const auto end = std::lower_bound(begin, numbers.end(), m_end);
    while (begin != end) {
        const auto beforeGap = std::adjacent_find(begin, end, isGap);
        const auto last = beforeGap == end ? end - 1 : beforeGap;
        Q_EMIT dataChanged(indexOf(*begin), indexOf(*last).siblingAtColumn(ColumnCount - 1));
        begin = last + 1;
    }
}

QModelIndex PacketModel::indexOf(qint64 number) const
{
    return number >= m_first && number < m_end ? index(int(number - m_first), 0) : QModelIndex();
}

const PacketRecord *PacketModel::record(int row) const { return m_log.find(m_first + row); }

int PacketModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_end - m_first);
}

int PacketModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant PacketModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::TextAlignmentRole && section == Size) {
        return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    const bool isHeading = role == Qt::DisplayRole && orientation == Qt::Horizontal;
    return isHeading ? tr(HEADINGS[section]) : QVariant();
}

QVariant PacketModel::data(const QModelIndex &index, int role) const
{
    const PacketRecord *found = record(index.row());
    if (!found) {
        return QVariant();
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        return text(*found, index.column());
    }
    if (role == Qt::TextAlignmentRole && index.column() == Size) {
        return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    return QVariant();
}

QString PacketModel::text(const PacketRecord &record, int column) const
{
    switch (column) {
    case Time:
        return timeText(record.time);
    case From:
        return m_log.agentName(record.source);
    case To:
        return record.isPacket() ? m_log.agentName(record.destination) : QString();
    case Content:
        return record.summary();
    case Size:
        return record.size > 0 ? QLocale().formattedDataSize(record.size) : QString();
    default:
        break;
    }
    if (record.answer >= 0 && !record.isUndelivered()) {
        const QString text = record.isReply ? tr("reply after %1") : tr("answered after %1");
        return text.arg(durationText(record.answer));
    }
    const QString text = tr(OUTCOMES[record.state]);
    if (record.state == PacketRecord::Delivered) {
        return text.arg(durationText(record.delivery));
    }
    // The record of an agent has its type in place of a destination.
    return record.isPacket() ? text : text.arg(record.destination);
}

PacketFilter::PacketFilter(const PacketLog &log, PacketModel &model, QObject *parent)
    : QSortFilterProxyModel(parent), m_log(log), m_model(model)
{
    setSourceModel(&model);
}

void PacketFilter::setFilter(const QString &agent, Show show, const QString &text)
{
    m_agent = agent;
    m_show = show;
    m_text = text;
    invalidateFilter();
}

bool PacketFilter::filterAcceptsRow(int row, const QModelIndex &) const
{
    const PacketRecord *record = m_model.record(row);
    return record && showsKind(*record) && showsAgent(*record) && showsText(*record);
}

bool PacketFilter::showsKind(const PacketRecord &record) const
{
    switch (m_show) {
    case All:
        return true;
    case Actions:
        return record.kind == PacketRecord::Action;
    case Items:
        return record.kind == PacketRecord::Items;
    case Pages:
        return record.kind == PacketRecord::Page;
    case Messages:
        return record.kind == PacketRecord::Message;
    case Images:
        return record.kind == PacketRecord::Image;
    case Undelivered:
        return record.isUndelivered();
    case Agents:
        return !record.isPacket();
    }
    return false;
}

bool PacketFilter::showsAgent(const PacketRecord &record) const
{
    const auto hasName = [this](int agentID) {
        return m_log.agentName(agentID).contains(m_agent, Qt::CaseInsensitive);
    };
    return m_agent.isEmpty() || hasName(record.source) ||
        (record.isPacket() && hasName(record.destination));
}

bool PacketFilter::showsText(const PacketRecord &record) const
{
    return m_text.isEmpty() || record.summary().contains(m_text, Qt::CaseInsensitive) ||
        QString::fromUtf8(record.text).contains(m_text, Qt::CaseInsensitive);
}

}  // namespace TQXmlInternal
