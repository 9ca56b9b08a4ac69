#ifndef SOURCETREE_H
#define SOURCETREE_H

#include "jobmodel.h"

#include <QHash>
#include <QTreeWidget>

/// Outputs, publications and books, each with the number of its jobs.
class SourceTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit SourceTree(QWidget *parent);

    /// The sources in a reply to a request of that type.
    static std::vector<Source> read(int requestType, const std::list<QDomNode> &items);
    /// Adds a row for each. A publication that several outputs print gets one row.
    void add(const std::vector<Source> &sources);
    /// Counts the jobs of the model from that row on.
    void count(const JobModel &jobs, int firstRow);
    void clearSources();

    /// The selected source. Selecting one that is not listed selects all jobs.
    Source source() const;
    void choose(const Source &source);

Q_SIGNALS:
    void chosen(const Source &source);

private:
    struct Group
    {
        QTreeWidgetItem *top;  // child of the tree
        QHash<QString, QTreeWidgetItem *> byName;  // or by the text of the key
    };

    Group addGroup(const QString &name, Source::Kind kind);
    Group &groupOf(const Source &source);

    Group m_all;
    Group m_outputs;
    Group m_publications;
    Group m_books;
};

#endif
