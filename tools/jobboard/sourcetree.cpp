#include "sourcetree.h"

#include <QHeaderView>

SourceTree::SourceTree(QWidget *parent) : QTreeView(parent), m_model(nullptr)
{
    setObjectName(QStringLiteral("sources"));
    setAccessibleName(tr("Outputs, publications and books"));
    setModel(&m_model);
    setUniformRowHeights(true);
    setIndentation(fontMetrics().averageCharWidth() * 2);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(SourceModel::Name, QHeaderView::Stretch);
    header()->setSectionResizeMode(SourceModel::Count, QHeaderView::Fixed);
    header()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 4);
    header()->resizeSection(
        SourceModel::Count, fontMetrics().horizontalAdvance(QStringLiteral("1,000,0000")));
    expandAll();
    setCurrentIndex(m_model.find({}));
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        if (!m_isShowing) {
            Q_EMIT chosen(source());
        }
    });
}

void SourceTree::show(const JobStore &store)
{
    const Source before = source();
    QList<int> closed;
    for (int group = 0; group < m_model.rowCount(); ++group) {
        const QModelIndex top = m_model.index(group, SourceModel::Name);
        if (m_model.rowCount(top) > 0 && !isExpanded(top)) {
            closed << group;
        }
    }
    m_isShowing = true;
    m_model.show(store);
    if (!currentIndex().isValid()) {  // a reset
        expandAll();
        for (const int group : closed) {
            collapse(m_model.index(group, SourceModel::Name));
        }
        setCurrentIndex(m_model.find(before));
    }
    m_isShowing = false;
    const Source after = source();
    if (after.kind != before.kind || after.name != before.name || !(after.key == before.key)) {
        Q_EMIT chosen(after);
    }
}
