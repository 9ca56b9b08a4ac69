#include "mainwindow.h"

#include "columnroom.h"
#include "detailpane.h"
#include "itemfields.h"
#include "look.h"
#include "packetpane.h"
#include "sourcetree.h"
#include "statedelegate.h"
#include "wholerows.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlui.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

#include <iterator>
#include <utility>

namespace {

constexpr QSize WINDOW_SIZE(1500, 940);

// One action of the page. Actions with the same originator stand together; those for the state
// exclude each other.
struct PageAction
{
    Tool::Type type;
    int originator;
    const char *name;
    bool isCheckable;
    bool isChecked;
};
constexpr PageAction PAGE[] = {
    { Tool::Reload, 0, "Reload", false, false },
    { Tool::Stop, 0, "Stop loading", false, false },
    { Tool::AnyState, 1, "All", true, true },
    { Tool::OnlyWaiting, 1, "Waiting", true, false },
    { Tool::OnlyInProgress, 1, "In progress", true, false },
    { Tool::OnlyDone, 1, "Done", true, false },
    { Tool::CopyXml, 0, "Copy job as XML", false, false },
    { Tool::ShowDetails, 0, "Details", true, true },
    { Tool::ShowPackets, 0, "Packets", true, true },
    { Tool::DarkLook, 0, "Dark", true, false },
};

QString count(int number) { return QLocale().toString(number); }

// The widths of the table's columns; the first one may be wider.
constexpr const char *WIDTHS[] = { "The Harbour Gazette 12 p. 12", "Digital Press Colour 1",
    "In progress 12", "CMYK + Bleu Étain 12", "2024-03-06 06:00", "Copies ▾", "Priority ▾" };
static_assert(std::size(WIDTHS) == JobModel::ColumnCount, "one sample per column");

}  // namespace

MainWindow::MainWindow(TQCommServer &server)
    : m_router(nullptr, nullptr, "jobboard"), m_bridge(server, m_router),
      m_agent(m_bridge, m_router, m_log), m_items(server, m_router, m_log), m_jobs(nullptr),
      m_filter(m_jobs, nullptr), m_bar(std::make_unique<ActionBar>(m_router, m_log))
{
    m_log.setAgentName(m_bridge.getAgentID(), QStringLiteral("Server bridge"));
    build();
    connect(&m_agent, &RequestAgent::replied, this, &MainWindow::takeReply);
    connect(&m_agent, &RequestAgent::served, this, &MainWindow::checkServed);
    connect(&m_agent, &RequestAgent::itemReceived, this, &MainWindow::takeJob);
    connect(m_bar.get(), &ActionBar::chosen, this, &MainWindow::choose);
    connect(m_sources, &SourceTree::chosen, this, &MainWindow::showSource);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_filter.setText(text);
        showRows();
    });
    m_job.setNode({});
    m_choice.setSingleShot(true);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, &m_choice,
        [this] { m_choice.start(0); });
    connect(&m_choice, &QTimer::timeout, this, &MainWindow::askJob);
    load();
}

MainWindow::~MainWindow()
{
    m_agent.stop();
    disconnect(&m_agent, nullptr, this, nullptr);
    m_router.remove(&m_bridge);
    m_router.remove(&m_agent);
    m_router.send();  // deletes queued packets, whose receivers are gone
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_table->setModel(nullptr);
}

void MainWindow::build()
{
    setWindowTitle(QStringLiteral("Job board"));
    resize(WINDOW_SIZE);
    m_bar->setMovable(false);
    addToolBar(m_bar.get());

    auto *upper = new QSplitter(Qt::Horizontal);
    m_sources = new SourceTree(nullptr);
    upper->addWidget(new WholeRows(m_sources));
    auto *middle = new QWidget(upper);
    auto *column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    m_search = new QLineEdit(middle);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(QStringLiteral("Find jobs by name"));
    m_search->setClearButtonEnabled(true);
    column->addWidget(m_search);
    m_table = buildTable();
    column->addWidget(new WholeRows(m_table));
    m_detail = new DetailPane(nullptr);
    upper->addWidget(new WholeRows(m_detail));
    const int letter = fontMetrics().averageCharWidth();
    m_sources->setMinimumWidth(letter * 34);
    middle->setMinimumSize(letter * 45, fontMetrics().height() * 12);
    m_detail->setMinimumWidth(letter * 32);
    upper->setSizes({ 280, 900, 320 });
    upper->setStretchFactor(1, 1);

    auto *all = new QSplitter(Qt::Vertical, this);
    all->addWidget(upper);
    m_packets = new PacketPane(m_log, all);
    all->setSizes({ 630, 220 });
    all->setStretchFactor(0, 1);
    setCentralWidget(all);
    buildStatus();
}

void MainWindow::buildStatus()
{
    m_counts = new QLabel(this);
    m_counts->setObjectName(QStringLiteral("counts"));
    m_counts->setTextFormat(Qt::PlainText);
    m_counts->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);  // errors may be long
    statusBar()->addWidget(m_counts, 1);
}

QTableView *MainWindow::buildTable()
{
    auto *table = new QTableView;
    table->setObjectName(QStringLiteral("jobs"));
    table->setModel(&m_filter);
    table->setSortingEnabled(true);
    table->sortByColumn(JobModel::Name, Qt::AscendingOrder);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setAlternatingRowColors(true);
    table->setShowGrid(false);
    table->setIconSize({ 9, 9 });  // of the states
    table->setWordWrap(false);
    table->setTextElideMode(Qt::ElideMiddle);  // pages are numbered at the end
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    QHeaderView *header = table->horizontalHeader();
    header->setHighlightSections(false);
    for (int i = JobModel::Name; i < JobModel::ColumnCount; ++i) {
        const int width = fontMetrics().horizontalAdvance(QString::fromUtf8(WIDTHS[i]));
        header->resizeSection(i, width + fontMetrics().averageCharWidth() * 2);
    }
    takeRoom(header, JobModel::Name, header->sectionSize(JobModel::Name));
    table->setItemDelegateForColumn(JobModel::State, new StateDelegate(table));
    return table;
}

// The page says which actions are possible now, and repeats what is checked in the bar. The packet
// is delivered at once, because a later one would undo a click that came in between.
void MainWindow::sendPage()
{
    XMLUI page(QStringLiteral("tools"));
    for (const PageAction &entry : PAGE) {
        XMLAction action(QLatin1String(entry.name), entry.type, entry.originator);
        if (entry.isCheckable) {
            const XMLAction *known = m_bar->action(entry.type);
            const bool first = entry.type == Tool::DarkLook ? isDarkLook() : entry.isChecked;
            action.setCheckable(true);
            action.setChecked(known ? known->isChecked() : first);
        }
        action.setEnabled(entry.type != Tool::CopyXml || !m_job.getNodeConst().isNull());
        page.append(action);
    }
    page.setActionVisible(m_isLoading ? Tool::Reload : Tool::Stop, 0, false);
    m_agent.sendPage(page, m_bar->getAgentID());
    m_router.send();
}

void MainWindow::load()
{
    m_isReload = m_requests > 0;
    m_isLoading = true;
    m_problem.clear();
    m_requests = 2;
    sendPage();
    m_agent.ask({ XMLCommServer::REQUEST_OUTPUTS, {}, QStringLiteral("outputs") });
    m_agent.ask({ XMLCommServer::REQUEST_BOOKS, {}, QStringLiteral("books") });
    showRows();
}

void MainWindow::takeReply(int type, const std::list<QDomNode> &items)
{
    if (type == XMLCommServer::REQUEST_JOBS) {
        std::vector<JobModel::Job> jobs = m_jobs.read(items);
        std::move(jobs.begin(), jobs.end(), std::back_inserter(m_receivedJobs));
    } else {
        const std::vector<Source> sources = SourceTree::read(type, items);
        m_receivedSources.insert(m_receivedSources.end(), sources.begin(), sources.end());
    }
    if (!m_isReload) {
        addReceived();
    }
    if (type == XMLCommServer::REQUEST_OUTPUTS && m_problem.isEmpty()) {
        askOutputs(items);
    }
}

void MainWindow::askOutputs(const std::list<QDomNode> &outputs)
{
    for (const QDomNode &item : outputs) {
        const TQKEY_ELEMENT key = XMLPacketable::getDBkey(item.toElement());
        const QString name = XMLPacketable::getName(item.toElement());
        m_agent.ask({ XMLCommServer::REQUEST_PUBLICATIONS, key,
            QStringLiteral("publications on ") + name });
        m_agent.ask({ XMLCommServer::REQUEST_JOBS, key, QStringLiteral("jobs on ") + name });
        m_requests += 2;
    }
}

void MainWindow::addReceived()
{
    const int known = m_jobs.rowCount();
    m_sources->add(std::exchange(m_receivedSources, {}));
    m_jobs.append(std::exchange(m_receivedJobs, {}));
    m_sources->count(m_jobs, known);
}

// Afterwards the same source and job are selected again, if they still exist. The job is read
// again.
void MainWindow::replaceShown()
{
    const Source source = m_sources->source();
    const TQKEY_ELEMENT job = std::exchange(m_wanted, TQKEY_CC::getNullKey());
    showJob({});
    m_jobs.clear();
    m_sources->clearSources();
    addReceived();
    m_sources->choose(source);
    chooseJob(job);
}

void MainWindow::checkServed(const QString &error)
{
    if (!error.isEmpty()) {
        m_agent.stop();
        m_problem = QStringLiteral("loading failed: ") + error;
    }
    if (m_agent.pending() == 0 && m_isLoading) {
        finishLoading();
    }
    showCounts();
    if (!error.isEmpty()) {
        fail(error);
    }
}

void MainWindow::finishLoading()
{
    m_isLoading = false;
    if (!m_isReload) {
        m_isPart = !m_problem.isEmpty();
    } else if (m_problem.isEmpty()) {
        replaceShown();
        m_isPart = false;
    }
    m_receivedSources.clear();
    m_receivedJobs.clear();
    sendPage();
}

// A request under way is still served. If it is the last, the listing is complete all the same.
void MainWindow::stop()
{
    if (m_agent.pending() > 1) {
        m_problem = QStringLiteral("loading was stopped");
    }
    m_agent.stop();
}

void MainWindow::fail(const QString &error)
{
    auto *box = new QMessageBox(QMessageBox::Critical, windowTitle(), error, QMessageBox::Ok, this);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();  // packets are delivered while it is open
}

void MainWindow::choose(int action, bool checked)
{
    switch (action) {
    case Tool::Reload:
        return load();
    case Tool::Stop:
        return stop();
    case Tool::AnyState:
    case Tool::OnlyWaiting:
    case Tool::OnlyInProgress:
    case Tool::OnlyDone:
        if (checked) {
            m_filter.setState(action == Tool::AnyState
                    ? std::nullopt
                    : std::make_optional(action - Tool::OnlyWaiting));
            showRows();
        }
        return;
    case Tool::ShowDetails:
        return m_detail->parentWidget()->setVisible(checked);
    case Tool::ShowPackets:
        return m_packets->setVisible(checked);
    case Tool::CopyXml:
        return QApplication::clipboard()->setText(m_job.toString());
    case Tool::DarkLook:
        return setDarkLook(checked);
    }
}

void MainWindow::showSource(const Source &source)
{
    if (source.kind == Source::Output) {
        m_agent.prefer(source.key);
    }
    m_filter.setSource(source);
    m_table->setColumnHidden(JobModel::Output, source.kind == Source::Output);
    m_table->scrollToTop();
    showRows();
}

// The table's rows have changed. The selected job may be gone.
void MainWindow::showRows()
{
    showCounts();
    m_choice.start(0);
}

void MainWindow::chooseJob(const TQKEY_ELEMENT &key)
{
    for (int row = 0; row < m_filter.rowCount(); ++row) {
        const QModelIndex index = m_filter.index(row, JobModel::Name);
        if (m_jobs.job(m_filter.mapToSource(index).row()).key == key) {
            return m_table->setCurrentIndex(index);
        }
    }
}

void MainWindow::askJob()
{
    const QModelIndex row = m_filter.mapToSource(m_table->currentIndex());
    const TQKEY_ELEMENT key = row.isValid() ? m_jobs.job(row.row()).key : TQKEY_CC::getNullKey();
    if (key == m_wanted) {
        return;
    }
    m_wanted = key;
    if (row.isValid()) {
        m_agent.askItem(key, m_jobs.job(row.row()).texts[JobModel::Name], m_items.getAgentID());
    } else {
        takeJob({}, {});
    }
}

// This answers an earlier request, for another item.
void MainWindow::takeJob(const QDomElement &job, const QString &error)
{
    const TQKEY_ELEMENT key = XMLPacketable::getDBkey(job);
    if (!job.isNull() && !(key == m_wanted)) {
        return;
    }
    m_jobProblem = TQKEY_CC::isValid(m_wanted) ? error : QString();
    showJob(job);
    showCounts();
}

void MainWindow::showJob(const QDomElement &job)
{
    const bool isOther = m_job.getNodeConst().isNull() != job.isNull();
    m_job.setNode(job);
    m_detail->setItem(job);
    if (isOther) {
        sendPage();
    }
}

void MainWindow::showCounts()
{
    m_counts->setText(counts());
    m_counts->setToolTip(m_counts->text());
}

// The status line: how much is shown, and any problem.
QString MainWindow::counts() const
{
    QStringList parts(
        QStringLiteral("%1 of %2 jobs").arg(count(m_filter.rowCount()), count(m_jobs.rowCount())));
    if (m_isPart) {
        parts << QStringLiteral("not all");
    } else if (!m_isLoading && !m_problem.isEmpty()) {
        parts << QStringLiteral("as loaded before");
    }
    if (m_isLoading) {
        const int served = m_requests - m_agent.pending();
        parts << QStringLiteral("loading, %1%").arg(served * 100 / m_requests);
    } else if (!m_problem.isEmpty()) {
        parts << m_problem;
    }
    if (!m_jobProblem.isEmpty()) {
        parts << QStringLiteral("the chosen job is not shown: ") + m_jobProblem;
    }
    return parts.join(QStringLiteral(" – "));
}
