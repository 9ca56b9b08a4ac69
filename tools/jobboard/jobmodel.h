#ifndef JOBMODEL_H
#define JOBMODEL_H

#include "tqtypes.h"

#include <QAbstractTableModel>
#include <QCollator>
#include <QDomNode>
#include <QSortFilterProxyModel>

#include <list>
#include <optional>
#include <vector>

/// What jobs are listed for: an output, a publication or a book, or all.
struct Source
{
    enum Kind { All, Publications, Books, Output, Publication, Book };

    Kind kind = All;
    QString name;  ///< of the output or publication
    TQKEY_ELEMENT key = {};  ///< of the output or book
};
Q_DECLARE_METATYPE(Source)

/// All received jobs, as rows. It keeps values, not XML.
class JobModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Output, State, Colours, Created, Copies, Priority, ColumnCount };
    /// Role of the value that a column is sorted by.
    static constexpr int SORT_ROLE = Qt::UserRole;

    struct Job
    {
        TQKEY_ELEMENT key;
        TQKEY_ELEMENT book;  ///< the null key outside any book
        QString publication;  ///< empty outside any publication
        QString texts[ColumnCount];
        int numbers[ColumnCount];  ///< of the numeric columns
        QCollatorSortKey order;  ///< of names, with "p. 4" before "p. 12"
    };

    explicit JobModel(QObject *parent);

    /// The jobs of packetable elements.
    std::vector<Job> read(const std::list<QDomNode> &items) const;
    /// Appends a row for each job.
    void append(std::vector<Job> jobs);
    void clear();
    const Job &job(int row) const { return m_jobs[size_t(row)]; }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    Job read(const QDomElement &packetable) const;

    std::vector<Job> m_jobs;
    QCollator m_collator;
};

/// Filters the jobs by source, by state, and by a text in their names.
class JobFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    JobFilter(JobModel &jobs, QObject *parent);

    void setSource(const Source &source);
    void setState(std::optional<int> state);
    void setText(const QString &text);

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    bool isOfSource(const JobModel::Job &job) const;

    const JobModel &m_jobs;
    Source m_source;
    std::optional<int> m_state;
    QString m_text;
};

bool operator==(const TQKEY_ELEMENT &a, const TQKEY_ELEMENT &b);
/// Orders texts for people: numbers by value, case ignored.
QCollator textOrder();

#endif
