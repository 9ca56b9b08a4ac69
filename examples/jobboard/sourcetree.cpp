#include "sourcetree.h"

#include "itemfields.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"

#include <QHeaderView>
#include <QLocale>

namespace {

constexpr int SOURCE_ROLE = Qt::UserRole;
constexpr int COUNT_ROLE = SOURCE_ROLE + 1;
enum Column { NameColumn, CountColumn };

// A row, which sorts its names for people.
class Row : public QTreeWidgetItem
{
public:
    Row(const QString &name, const Source &source)
        : QTreeWidgetItem({ name }), m_order(orderOf(name))
    {
        setData(NameColumn, SOURCE_ROLE, QVariant::fromValue(source));
        setToolTip(NameColumn, name);
        setTextAlignment(CountColumn, Qt::AlignRight | Qt::AlignVCenter);
    }

    bool operator<(const QTreeWidgetItem &other) const override
    {
        return m_order.compare(static_cast<const Row &>(other).m_order) < 0;
    }

private:
    static QCollatorSortKey orderOf(const QString &name)
    {
        static const QCollator collator = textOrder();
        return collator.sortKey(name);
    }

    QCollatorSortKey m_order;
};

QString keyText(const TQKEY_ELEMENT &key)
{
    return QStringLiteral("%1:%2").arg(key.key).arg(key.hkey);
}

}  // namespace

SourceTree::SourceTree(QWidget *parent)
    : QTreeWidget(parent), m_all(addGroup(QStringLiteral("All jobs"), Source::All)),
      m_outputs(addGroup(QStringLiteral("Outputs"), Source::All)),
      m_publications(addGroup(QStringLiteral("Publications"), Source::Publications)),
      m_books(addGroup(QStringLiteral("Books"), Source::Books))
{
    setObjectName(QStringLiteral("sources"));
    setHeaderLabels({ QStringLiteral("Jobs of"), QStringLiteral("Jobs") });
    headerItem()->setTextAlignment(CountColumn, Qt::AlignRight | Qt::AlignVCenter);
    setUniformRowHeights(true);
    setIndentation(fontMetrics().averageCharWidth() * 2);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    header()->setSectionResizeMode(CountColumn, QHeaderView::Fixed);
    header()->resizeSection(
        CountColumn, fontMetrics().horizontalAdvance(QStringLiteral("00,0000")));
    m_outputs.top->setExpanded(true);
    m_publications.top->setExpanded(true);
    m_books.top->setExpanded(true);
    setCurrentItem(m_all.top);
    connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (item) {
            Q_EMIT chosen(item->data(NameColumn, SOURCE_ROLE).value<Source>());
        }
    });
}

SourceTree::Group SourceTree::addGroup(const QString &name, Source::Kind kind)
{
    Source source;
    source.kind = kind;
    auto *top = new Row(name, source);
    addTopLevelItem(top);
    return { top, {} };
}

void SourceTree::add(int requestType, const std::list<QDomNode> &items)
{
    const bool isBooks = requestType == XMLCommServer::REQUEST_BOOKS;
    const bool isOutputs = requestType == XMLCommServer::REQUEST_OUTPUTS;
    Group &group = isBooks ? m_books : isOutputs ? m_outputs : m_publications;
    QList<QTreeWidgetItem *> rows;
    for (const QDomNode &item : items) {
        const QDomElement e = item.toElement();
        Source source { isBooks ? Source::Book
                : isOutputs     ? Source::Output
                                : Source::Publication,
            XMLPacketable::getName(e), XMLPacketable::getDBkey(e) };
        QTreeWidgetItem *&known = group.byName[isBooks ? keyText(source.key) : source.name];
        if (!known) {
            known = new Row(source.name, source);
            rows << known;
        }
    }
    if (!rows.isEmpty()) {
        group.top->addChildren(rows);
        group.top->sortChildren(NameColumn, Qt::AscendingOrder);
    }
}

void SourceTree::count(const JobModel &jobs, int firstRow)
{
    QHash<QTreeWidgetItem *, int> raised;
    for (int row = firstRow; row < jobs.rowCount(); ++row) {
        const JobModel::Job &job = jobs.job(row);
        for (QTreeWidgetItem *item :
            { m_all.top, m_outputs.byName.value(job.texts[JobModel::Output]),
                m_publications.byName.value(job.publication),
                m_books.byName.value(keyText(job.book)) }) {
            ++raised[item];
        }
    }
    raised.remove(nullptr);
    for (auto i = raised.cbegin(); i != raised.cend(); ++i) {
        const int count = i.key()->data(CountColumn, COUNT_ROLE).toInt() + i.value();
        i.key()->setData(CountColumn, COUNT_ROLE, count);
        i.key()->setText(CountColumn, QLocale().toString(count));
    }
}

void SourceTree::clearSources()
{
    setCurrentItem(m_all.top);
    m_all.top->setData(CountColumn, COUNT_ROLE, 0);
    m_all.top->setText(CountColumn, {});
    for (Group *group : { &m_outputs, &m_publications, &m_books }) {
        group->byName.clear();
        qDeleteAll(group->top->takeChildren());
    }
}
