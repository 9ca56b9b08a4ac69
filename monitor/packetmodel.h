#ifndef TQXML_MONITOR_PACKETMODEL_H
#define TQXML_MONITOR_PACKETMODEL_H

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>

namespace TQXmlInternal {

class PacketLog;
struct PacketRecord;

// The records of a log as rows, oldest first. It follows the log only when it is told to, so that a
// burst of packets costs one change of the model.
class PacketModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Time, From, To, Content, Size, Outcome, ColumnCount };

    // The log is not owned and must outlive the model.
    PacketModel(PacketLog &log, QObject *parent);

    // Takes over what happened in the log.
    void sync();
    qint64 numberOf(const QModelIndex &index) const { return m_first + index.row(); }
    QModelIndex indexOf(qint64 number) const;
    // Null when the log has dropped it already.
    const PacketRecord *record(int row) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString text(const PacketRecord &record, int column) const;
    void removeDropped();
    void emitChanges();

    PacketLog &m_log;
    qint64 m_first;  // numbers of the first row, and after the last one
    qint64 m_end;
};

// Shows the rows that have all of: an agent, a kind and a text.
class PacketFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    enum Show { All, Actions, Items, Pages, Messages, Images, Undelivered, Agents };

    // The model is not owned and must outlive the filter.
    PacketFilter(const PacketLog &log, PacketModel &model, QObject *parent);

    // Case does not count. An agent is looked for in the names of both.
    void setFilter(const QString &agent, Show show, const QString &text);
    bool isActive() const { return !m_agent.isEmpty() || m_show != All || !m_text.isEmpty(); }

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    bool showsKind(const PacketRecord &record) const;
    bool showsAgent(const PacketRecord &record) const;
    bool showsText(const PacketRecord &record) const;

    const PacketLog &m_log;
    PacketModel &m_model;
    QString m_agent;
    Show m_show = All;
    QString m_text;
};

}  // namespace TQXmlInternal

#endif
