// The widget. The router's events go into a PacketLog, PacketModel lists that, and PacketFilter
// leaves out what the user does not want to see. The log does not wait for the widget: a timer
// brings the model up to date, so that a burst of packets costs one refresh.

#include "xmlmonitor.h"

#include "packetfile.h"
#include "packetlog.h"
#include "packetmodel.h"
#include "xmlrouter.h"
#include "xmlview.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QSaveFile>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTextBlock>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <cmath>

using namespace TQXmlInternal;

namespace {

constexpr int REFRESH_DELAY = 50;  // ms, after the first change
constexpr int TYPING_DELAY = 150;  // ms, after the last letter

// A long text of each column; columns are made as wide as that.
constexpr const char *SAMPLES[] = { "00:00:00.000", "server bridge", "server bridge",
    "message plate 12 is ready", "1000.00 KiB", "dropped: equals the one queued last" };
static_assert(std::size(SAMPLES) == PacketModel::ColumnCount, "one sample a column");

// The kinds in the order of PacketFilter::Show.
const char *const KINDS[] = { QT_TRANSLATE_NOOP("XMLMonitor", "everything"),
    QT_TRANSLATE_NOOP("XMLMonitor", "actions"), QT_TRANSLATE_NOOP("XMLMonitor", "items"),
    QT_TRANSLATE_NOOP("XMLMonitor", "pages"), QT_TRANSLATE_NOOP("XMLMonitor", "messages"),
    QT_TRANSLATE_NOOP("XMLMonitor", "images"), QT_TRANSLATE_NOOP("XMLMonitor", "not delivered"),
    QT_TRANSLATE_NOOP("XMLMonitor", "agents") };
static_assert(std::size(KINDS) == PacketFilter::Agents + 1, "one text a kind");

// A text is easy to read from this contrast on. Both formulas are those of the Web Content
// Accessibility Guidelines (WCAG 2).
constexpr double READABLE = 4.5;

double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
        0.0722 * linear(colour.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({ luminance(a), luminance(b) });
    return (lighter + 0.05) / (darker + 0.05);
}

// Draws rows. Many palettes have a highlight on which the text of a selected row is hard to read.
// Then the highlight is made darker or lighter, in steps, until the contrast suffices.
class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        constexpr int STEP = 105;  // per cent
        constexpr int MAX_STEPS = 40;
        QStyledItemDelegate::initStyleOption(option, index);
        const QColor text = option->palette.color(QPalette::HighlightedText);
        const bool isTextLight =
            luminance(text) > 0.18;  // 0.18 has the same contrast with black and white
        QColor ground = option->palette.color(QPalette::Highlight);
        for (int i = 0; i < MAX_STEPS && contrast(text, ground) < READABLE; ++i) {
            ground = isTextLight ? ground.darker(STEP) : ground.lighter(STEP);
        }
        option->palette.setColor(QPalette::Highlight, ground);
    }
};

QString numberText(qint64 number) { return QLocale().toString(number); }

}  // namespace

XMLMonitor::XMLMonitor(XMLRouter *router, QWidget *parent)
    : QWidget(parent), m_log(std::make_unique<PacketLog>()), m_model(new PacketModel(*m_log, this)),
      m_shown(new PacketFilter(*m_log, *m_model, this))
{
    setWindowTitle(tr("Packets"));
    resize(1280, 800);
    makeActions();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(makeBar());
    auto *panes = new QSplitter(Qt::Horizontal);
    panes->addWidget(makeList());
    panes->addWidget(makePane());
    panes->setSizes({ 830, 440 });
    panes->setStretchFactor(0, 2);
    panes->setStretchFactor(1, 1);
    panes->setChildrenCollapsible(false);
    column->addWidget(panes, 1);
    m_status = new QLabel;
    m_status->setObjectName(QStringLiteral("status"));
    m_status->setTextFormat(Qt::PlainText);
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);  // errors may be long
    column->addWidget(m_status);
    connectFields();
    m_log->setListener([this] { m_refresh.start(REFRESH_DELAY); });
    m_log->queue()->setReceiver([this] {
        QMetaObject::invokeMethod(
            this, [this] { m_refresh.start(REFRESH_DELAY); }, Qt::QueuedConnection);
    });
    setRouter(router);
    refresh();
}

XMLMonitor::~XMLMonitor()
{
    m_log->queue()->close();
    setRouter(nullptr);
    m_list->setModel(nullptr);  // the list is destroyed after the log and must not read it
}

void XMLMonitor::makeActions()
{
    m_pause = makeAction(tr("Pause"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
    m_pause->setCheckable(true);
    connect(m_pause, &QAction::toggled, this, &XMLMonitor::setPaused);
    m_follow = makeAction(tr("Follow"), QKeySequence(Qt::CTRL | Qt::Key_E));
    m_follow->setCheckable(true);
    m_follow->setChecked(true);
    connect(m_follow, &QAction::toggled, this, &XMLMonitor::setFollowing);
    const auto add = [this](const QString &text, const QKeySequence &shortcut, auto function) {
        connect(makeAction(text, shortcut), &QAction::triggered, this, function);
    };
    add(tr("Clear"), QKeySequence(Qt::CTRL | Qt::Key_L), [this] { clear(); });
    add(tr("Open…"), QKeySequence(QKeySequence::Open), [this] { open(); });
    add(tr("Save…"), QKeySequence(QKeySequence::Save), [this] { save(); });
    add(tr("Copy as XML"), QKeySequence(QKeySequence::Copy), [this] { copy(); });
    add(tr("Request ↔ reply"), QKeySequence(Qt::CTRL | Qt::Key_G), [this] { goToPartner(); });
}

// Adds an action, with its shortcut. makeBar() makes buttons for those that are there by then.
QAction *XMLMonitor::makeAction(const QString &text, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, this);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    const QString keys = shortcut.toString(QKeySequence::NativeText);
    action->setToolTip(QStringLiteral("%1 (%2)").arg(text, keys));
    addAction(action);
    return action;
}

QLineEdit *XMLMonitor::addField(QBoxLayout *row, const QString &label, const QString &name)
{
    auto *field = new QLineEdit;
    field->setObjectName(name);
    field->setClearButtonEnabled(true);
    field->setMinimumWidth(fontMetrics().averageCharWidth() * 12);
    auto *buddy = new QLabel(label);
    buddy->setBuddy(field);
    row->addWidget(buddy);
    row->addWidget(field, 1);
    return field;
}

QWidget *XMLMonitor::makeBar()
{
    auto *bar = new QWidget;
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    auto *tools = new QToolBar;  // may be narrower than its buttons, unlike a row of buttons
    tools->addActions(actions());
    for (QToolButton *button : tools->findChildren<QToolButton *>()) {
        button->setFocusPolicy(Qt::TabFocus);
        if (!button->defaultAction()) {  // the menu of the buttons that have no room
            button->setAccessibleName(tr("More tools"));
        }
    }
    row->addWidget(tools, 4);
    m_agent = addField(row, tr("&Agent"), QStringLiteral("agent"));
    auto *label = new QLabel(tr("&Kind"));
    m_kind = new QComboBox;
    m_kind->setObjectName(QStringLiteral("kind"));
    for (const char *kind : KINDS) {
        m_kind->addItem(tr(kind));
    }
    label->setBuddy(m_kind);
    row->addWidget(label);
    row->addWidget(m_kind);
    m_words = addField(row, tr("Te&xt"), QStringLiteral("words"));
    return bar;
}

QWidget *XMLMonitor::makeList()
{
    m_list = new QTableView;
    m_list->setObjectName(QStringLiteral("packets"));
    m_list->setAccessibleName(tr("Packets"));
    m_list->setModel(m_shown);
    m_list->setItemDelegate(new RowDelegate(m_list));
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setTabKeyNavigation(false);
    m_list->setAlternatingRowColors(true);
    m_list->setShowGrid(false);
    m_list->setWordWrap(false);
    m_list->verticalHeader()->hide();
    m_list->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_list->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    QHeaderView *header = m_list->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setStretchLastSection(true);
    for (int i = 0; i < PacketModel::ColumnCount; ++i) {
        const int width = fontMetrics().horizontalAdvance(QString::fromUtf8(SAMPLES[i]));
        header->resizeSection(i, width + fontMetrics().averageCharWidth() * 2);
    }
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &XMLMonitor::showChosen);
    return m_list;
}

QWidget *XMLMonitor::makePane()
{
    auto *pane = new QWidget;
    auto *column = new QVBoxLayout(pane);
    column->setContentsMargins(0, 0, 0, 0);
    auto *row = new QHBoxLayout;
    column->addLayout(row);
    m_find = addField(row, tr("&Find"), QStringLiteral("find"));
    m_text = new XmlView(pane);
    m_text->setObjectName(QStringLiteral("text"));
    m_text->setAccessibleName(tr("Text of the chosen packet"));
    m_text->setPlaceholderText(tr("Choose a packet to read it."));
    column->addWidget(m_text, 1);
    const auto add = [this, row](const QString &text, const QKeySequence &shortcut, auto function) {
        auto *button = new QToolButton;
        QAction *action = makeAction(text, shortcut);
        connect(action, &QAction::triggered, this, function);
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        row->addWidget(button);
    };
    add(tr("Next"), QKeySequence(Qt::Key_F3), [this] { findInText(false); });
    add(tr("Previous"), QKeySequence(Qt::SHIFT | Qt::Key_F3), [this] { findInText(true); });
    add(tr("Fold items"), QKeySequence(Qt::CTRL | Qt::Key_Minus), [this] { m_text->foldItems(); });
    add(tr("Unfold"), QKeySequence(Qt::CTRL | Qt::Key_Plus), [this] { m_text->unfoldAll(); });
    return pane;
}

void XMLMonitor::connectFields()
{
    m_refresh.setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, &XMLMonitor::refresh);
    m_filterDelay.setSingleShot(true);
    connect(&m_filterDelay, &QTimer::timeout, this, &XMLMonitor::filter);
    for (QLineEdit *field : { m_agent, m_words }) {
        connect(
            field, &QLineEdit::textChanged, this, [this] { m_filterDelay.start(TYPING_DELAY); });
    }
    connect(m_kind, qOverload<int>(&QComboBox::currentIndexChanged), this, &XMLMonitor::filter);
    connect(m_find, &QLineEdit::returnPressed, this, [this] { findInText(false); });
    const auto focus = [this](const QKeySequence &shortcut, QLineEdit *field) {
        auto *action = new QAction(this);
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
        connect(action, &QAction::triggered, field, [field] {
            field->setFocus(Qt::ShortcutFocusReason);
            field->selectAll();
        });
    };
    focus(QKeySequence(QKeySequence::Find), m_find);
    focus(QKeySequence(Qt::CTRL | Qt::Key_K), m_words);
}

void XMLMonitor::setRouter(XMLRouter *router)
{
    if (m_router && m_router->observer() == m_log.get()) {
        m_router->setObserver(nullptr);
    }
    m_router = router;
    if (router) {
        router->setObserver(m_log.get());
    }
}

std::unique_ptr<XMLRouterObserver> XMLMonitor::makeObserver()
{
    return std::make_unique<PacketRelay>(m_log->queue());
}

void XMLMonitor::setAgentName(int agentID, const QString &name)
{
    m_log->setAgentName(agentID, name);
}

void XMLMonitor::setPaused(bool isPaused)
{
    m_log->setPaused(isPaused);
    m_pause->setChecked(isPaused);
    refresh();
}

void XMLMonitor::clear()
{
    m_log->clear();
    m_problem.clear();
    m_text->setXml(QString());
    refresh();
}

void XMLMonitor::setFollowing(bool isFollowing)
{
    m_follow->setChecked(isFollowing);
    refresh();
}

void XMLMonitor::refresh()
{
    const int before = m_shown->rowCount();
    m_log->takeQueued();
    m_model->sync();
    m_refresh.stop();  // all is shown
    if (m_follow->isChecked() && (before != m_shown->rowCount() || !m_list->isVisible())) {
        m_list->scrollToBottom();
    }
    showStatus();
}

void XMLMonitor::filter()
{
    const auto show = PacketFilter::Show(m_kind->currentIndex());
    m_shown->setFilter(m_agent->text(), show, m_words->text());
    refresh();
    m_list->scrollTo(m_list->currentIndex());
}

void XMLMonitor::showChosen()
{
    const QModelIndex row = m_shown->mapToSource(m_list->currentIndex());
    const PacketRecord *record = row.isValid() ? m_model->record(row.row()) : nullptr;
    if (!record) {
        return;  // the text stays although the packet is dropped
    }
    QString text = QString::fromUtf8(record->text);
    if (record->isCut()) {
        const QString more = QLocale().formattedDataSize(record->size - record->text.size());
        text += tr("\n… and %1 more").arg(more);
    }
    m_text->setXml(text);
}

void XMLMonitor::goToPartner()
{
    const QModelIndex row = m_shown->mapToSource(m_list->currentIndex());
    const PacketRecord *record = row.isValid() ? m_model->record(row.row()) : nullptr;
    const QModelIndex partner = record ? m_model->indexOf(record->partner) : QModelIndex();
    const QModelIndex shown = m_shown->mapFromSource(partner);
    if (shown.isValid()) {
        m_list->selectionModel()->setCurrentIndex(
            shown, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_list->scrollTo(shown);
    }
}

void XMLMonitor::findInText(bool isBackward)
{
    const auto flags = isBackward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    const bool isFound = m_text->findNext(m_find->text(), flags);
    m_problem = isFound || m_find->text().isEmpty()
        ? QString()
        : tr("“%1” is not in this packet").arg(m_find->text());
    showStatus();
}

void XMLMonitor::copy()
{
    QModelIndexList rows = m_list->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QByteArray all;
    for (const QModelIndex &row : std::as_const(rows)) {
        const PacketRecord *record = m_model->record(m_shown->mapToSource(row).row());
        all += record ? record->text : QByteArray();
    }
    if (!all.isEmpty()) {
        QApplication::clipboard()->setText(QString::fromUtf8(all));
    }
}

bool XMLMonitor::save(const QString &fileName)
{
    const QString name = fileName.isEmpty()
        ? QFileDialog::getSaveFileName(this, tr("Save packets"),
              QStringLiteral("packets.tqpackets"), tr("Packets (*.tqpackets)"))
        : fileName;
    if (name.isEmpty()) {
        return false;
    }
    QSaveFile file(name);
    const bool isSaved =
        file.open(QIODevice::WriteOnly) && writePackets(*m_log, file) && file.commit();
    m_problem = isSaved ? QString() : tr("%1: %2").arg(name, file.errorString());
    showStatus();
    return isSaved;
}

bool XMLMonitor::open(const QString &fileName)
{
    const QString name = fileName.isEmpty() ? QFileDialog::getOpenFileName(this, tr("Open packets"),
                                                  QString(), tr("Packets (*.tqpackets)"))
                                            : fileName;
    if (name.isEmpty()) {
        return false;
    }
    QFile file(name);
    const QString problem =
        file.open(QIODevice::ReadOnly) ? readPackets(file, *m_log) : file.errorString();
    m_problem = problem.isEmpty() ? QString() : tr("%1: %2").arg(name, problem);
    if (problem.isEmpty()) {
        setPaused(true);
    }
    refresh();
    return problem.isEmpty();
}

void XMLMonitor::showStatus()
{
    m_status->setText(status());
    m_status->setToolTip(status());
}

QString XMLMonitor::status() const
{
    const int all = m_model->rowCount();
    QStringList parts;
    if (!m_problem.isEmpty()) {
        parts += m_problem;
    }
    parts += m_shown->isActive()
        ? tr("%1 of %2 lines").arg(numberText(m_shown->rowCount()), numberText(all))
        : tr("%1 lines").arg(numberText(all));
    if (m_log->isPaused()) {
        parts += tr("paused, %1 not recorded").arg(numberText(m_log->missed()));
    }
    if (m_log->dropped() > 0) {
        parts += tr("%1 older ones dropped").arg(numberText(m_log->dropped()));
    }
    if (m_log->textless() > 0) {
        parts += tr("%1 without text: too many at once").arg(numberText(m_log->textless()));
    }
    return parts.join(QStringLiteral(" – "));
}
