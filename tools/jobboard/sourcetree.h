#ifndef SOURCETREE_H
#define SOURCETREE_H

#include "sourcemodel.h"

#include <QTreeView>

/// The pane of outputs, publications and books, of which one is chosen.
class SourceTree : public QTreeView
{
    Q_OBJECT

public:
    explicit SourceTree(QWidget *parent);

    /// Shows what the jobs are listed for. The same source stays chosen; if it is gone, all jobs
    /// are.
    void show(const JobStore &store);
    Source source() const { return m_model.source(currentIndex()); }
    using QTreeView::show;

Q_SIGNALS:
    void chosen(const Source &source);

private:
    SourceModel m_model;
    bool m_isShowing = false;
};

#endif
