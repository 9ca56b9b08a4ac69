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

// A row, sorted by name as people expect.
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

// What identifies a source in its group.
QString identity(const Source &source)
{
    return source.kind == Source::Book ? keyText(source.key) : source.name;
}

// The kind of the items in replies to requests of that type.
Source::Kind kindOf(int requestType)
{
    switch (requestType) {
    case XMLCommServer::REQUEST_OUTPUTS:
        return Source::Output;
    case XMLCommServer::REQUEST_BOOKS:
        return Source::Book;
    default:
        return Source::Publication;
    }
}

Source sourceOf(const QTreeWidgetItem &row)
{
    return row.data(NameColumn, SOURCE_ROLE).value<Source>();
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
            Q_EMIT chosen(sourceOf(*item));
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

std::vector<Source> SourceTree::read(int requestType, const std::list<QDomNode> &items)
{
    std::vector<Source> sources;
    for (const QDomNode &item : items) {
        const QDomElement e = item.toElement();
        sources.push_back(
            { kindOf(requestType), XMLPacketable::getName(e), XMLPacketable::getDBkey(e) });
    }
    return sources;
}

SourceTree::Group &SourceTree::groupOf(const Source &source)
{
    switch (source.kind) {
    case Source::Output:
        return m_outputs;
    case Source::Publications:
    case Source::Publication:
        return m_publications;
    case Source::Books:
    case Source::Book:
        return m_books;
    case Source::All:
        break;
    }
    return m_all;
}

void SourceTree::add(const std::vector<Source> &sources)
{
    QHash<QTreeWidgetItem *, QList<QTreeWidgetItem *>> rows;  // by the top of their group
    for (const Source &source : sources) {
        Group &group = groupOf(source);
        QTreeWidgetItem *&known = group.byName[identity(source)];
        if (!known) {
            known = new Row(source.name, source);
            rows[group.top] << known;
        }
    }
    for (auto i = rows.cbegin(); i != rows.cend(); ++i) {
        i.key()->addChildren(i.value());
        i.key()->sortChildren(NameColumn, Qt::AscendingOrder);
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

Source SourceTree::source() const { return sourceOf(*currentItem()); }

void SourceTree::choose(const Source &source)
{
    const Group &group = groupOf(source);
    const bool isGroup = sourceOf(*group.top).kind == source.kind;
    QTreeWidgetItem *row = isGroup ? group.top : group.byName.value(identity(source));
    setCurrentItem(row ? row : m_all.top);
}
