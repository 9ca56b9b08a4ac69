#include "mainwindow.h"

#include "detailpane.h"
#include "itemfields.h"
#include "look.h"
#include "packetpane.h"
#include "sourcetree.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include "tqcommserver.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QProgressBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr QSize WINDOW_SIZE(1500, 940);

// The actions of the page, by type; those with the same originator stand together, and those of
// the state exclude each other.
enum ActionType {
    Reload = 1,
    Stop,
    AnyState,
    OnlyWaiting,
    OnlyInProgress,
    OnlyDone,
    ShowDetails,
    ShowPackets,
    CopyXml,
    DarkLook
};

struct PageAction
{
    ActionType type;
    int originator;
    const char *name;
    bool isCheckable;
    bool isChecked;
};
constexpr PageAction PAGE[] = {
    { Reload, 0, "Reload", false, false },
    { Stop, 0, "Stop loading", false, false },
    { AnyState, 1, "All", true, true },
    { OnlyWaiting, 1, "Waiting", true, false },
    { OnlyInProgress, 1, "In progress", true, false },
    { OnlyDone, 1, "Done", true, false },
    { CopyXml, 0, "Copy job as XML", false, false },
    { ShowDetails, 0, "Details", true, true },
    { ShowPackets, 0, "Packets", true, true },
    { DarkLook, 0, "Dark", true, false },
};

QString count(int number) { return QLocale().toString(number); }

// The table's columns but the first are as wide as these.
constexpr const char *WIDTHS[] = { "", "Digital Press Colour 1", "In progress",
    "CMYK + Bleu Étain 12", "2024-03-06 06:00", "Page ▾", "Copies ▾", "Priority ▾" };
static_assert(std::size(WIDTHS) == JobModel::ColumnCount, "one sample per column");

}  // namespace

MainWindow::MainWindow(TQCommServer &server)
    : m_server(server), m_router(&server, nullptr, "jobboard"), m_agent(m_router, m_log),
      m_jobs(nullptr), m_filter(m_jobs, nullptr),
      m_bar(std::make_unique<ActionBar>(m_router, m_log))
{
    m_log.setAgentName(m_router.getXMLCommServerID(), QStringLiteral("Server bridge"));
    build();
    connect(&m_agent, &RequestAgent::replied, this, &MainWindow::takeReply);
    connect(&m_agent, &RequestAgent::served, this, &MainWindow::showProgress);
    connect(m_bar.get(), &ActionBar::chosen, this, &MainWindow::choose);
    connect(m_sources, &SourceTree::chosen, this, &MainWindow::showSource);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_filter.setText(text);
        showCounts();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &MainWindow::showJob);
    load();
}

MainWindow::~MainWindow()
{
    m_agent.stop();
    m_router.remove(&m_agent);
    m_router.send();  // what is queued has no receiver any more and goes
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
    m_sources = new SourceTree(upper);
    auto *middle = new QWidget(upper);
    auto *column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    m_search = new QLineEdit(middle);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(QStringLiteral("Find jobs by name"));
    m_search->setClearButtonEnabled(true);
    column->addWidget(m_search);
    m_table = buildTable();
    column->addWidget(m_table);
    m_detail = new DetailPane(upper);
    upper->setSizes({ 260, 890, 350 });
    upper->setStretchFactor(1, 1);

    auto *all = new QSplitter(Qt::Vertical, this);
    all->addWidget(upper);
    m_packets = new PacketPane(m_log, all);
    all->setSizes({ 600, 240 });
    all->setStretchFactor(0, 1);
    setCentralWidget(all);

    m_counts = new QLabel(this);
    m_counts->setObjectName(QStringLiteral("counts"));
    statusBar()->addWidget(m_counts, 1);
    m_progress = new QProgressBar(this);
    m_progress->setFormat(QStringLiteral("loading %p%"));
    statusBar()->addPermanentWidget(m_progress);
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
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    QHeaderView *header = table->horizontalHeader();
    header->setHighlightSections(false);
    for (int i = JobModel::Name + 1; i < JobModel::ColumnCount; ++i) {
        const int width = fontMetrics().horizontalAdvance(QString::fromUtf8(WIDTHS[i]));
        header->resizeSection(i, width + fontMetrics().averageCharWidth() * 2);
    }
    header->setSectionResizeMode(JobModel::Name, QHeaderView::Stretch);
    return table;
}

// The page says what can be done now; the tool bar's agent gets it like any other packet.
void MainWindow::sendPage()
{
    XMLUI page(QStringLiteral("tools"));
    for (const PageAction &entry : PAGE) {
        XMLAction action(QLatin1String(entry.name), entry.type, entry.originator);
        if (entry.isCheckable) {
            action.setCheckable(true);
            action.setChecked(entry.type == DarkLook ? isDarkLook() : entry.isChecked);
        }
        action.setEnabled(entry.type != CopyXml || m_job);
        page.append(action);
    }
    page.setActionVisible(m_isLoading ? Reload : Stop, 0, false);
    m_agent.sendPage(page, m_bar->getAgentID());
}

void MainWindow::load()
{
    m_jobs.clear();
    showJob({});
    m_sources->clearSources();
    m_isLoading = true;
    m_requests = 2;
    m_agent.ask({ XMLCommServer::REQUEST_OUTPUTS, {}, QStringLiteral("outputs") });
    m_agent.ask({ XMLCommServer::REQUEST_BOOKS, {}, QStringLiteral("books") });
    sendPage();
    showProgress();
}

void MainWindow::takeReply(int type, const std::list<QDomNode> &items)
{
    if (type == XMLCommServer::REQUEST_JOBS) {
        const int known = m_jobs.rowCount();
        m_jobs.append(items);
        m_sources->count(m_jobs, known);
        return;
    }
    m_sources->add(type, items);
    if (type != XMLCommServer::REQUEST_OUTPUTS) {
        return;
    }
    for (const QDomNode &item : items) {
        const TQKEY_ELEMENT key = XMLPacketable::getDBkey(item.toElement());
        const QString name = XMLPacketable::getName(item.toElement());
        m_agent.ask({ XMLCommServer::REQUEST_PUBLICATIONS, key,
            QStringLiteral("publications on ") + name });
        m_agent.ask({ XMLCommServer::REQUEST_JOBS, key, QStringLiteral("jobs on ") + name });
        m_requests += 2;
    }
}

void MainWindow::showProgress()
{
    const QString error = QString::fromUtf8(m_server.errorText());
    if (!error.isEmpty()) {
        m_agent.stop();
    }
    const int pending = m_agent.pending();
    m_progress->setRange(0, m_requests);
    m_progress->setValue(m_requests - pending);
    m_progress->setVisible(pending > 0);
    showCounts();
    if (pending == 0 && m_isLoading) {
        m_isLoading = false;
        sendPage();
        Q_EMIT loaded();
    }
    if (!error.isEmpty()) {
        fail(error);
    }
}

void MainWindow::fail(const QString &error)
{
    auto *box = new QMessageBox(QMessageBox::Critical, windowTitle(), error, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();  // packets are delivered while it is open
}

void MainWindow::choose(int action, bool checked)
{
    switch (action) {
    case Reload:
        return load();
    case Stop:
        return m_agent.stop();
    case AnyState:
    case OnlyWaiting:
    case OnlyInProgress:
    case OnlyDone:
        if (checked) {
            m_filter.setState(
                action == AnyState ? std::nullopt : std::make_optional(action - OnlyWaiting));
            showCounts();
        }
        return;
    case ShowDetails:
        return m_detail->setVisible(checked);
    case ShowPackets:
        return m_packets->setVisible(checked);
    case CopyXml:
        return QApplication::clipboard()->setText(m_job ? m_job->toString() : QString());
    case DarkLook:
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
    showCounts();
}

void MainWindow::showJob(const QModelIndex &row)
{
    const bool hadJob = m_job != nullptr;
    m_job.reset();
    if (row.isValid()) {
        const TQKEY_ELEMENT key = m_jobs.job(m_filter.mapToSource(row).row()).key;
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        const std::unique_ptr<ArchiveNode> node(
            m_server.getArchiveNode(command, message, PACKETDATATYPE_JOB, key));
        m_job.reset(XMLPacketable::fromArchiveNode(m_server, node.get()));
        if (m_server.iserror(command)) {
            statusBar()->showMessage(QString::fromUtf8(m_server.errorText()));
        }
    }
    m_detail->setItem(m_job ? m_job->getNodeConst() : QDomElement());
    if (hadJob != (m_job != nullptr)) {
        sendPage();
    }
}

void MainWindow::showCounts()
{
    m_counts->setText(
        QStringLiteral("%1 of %2 jobs").arg(count(m_filter.rowCount()), count(m_jobs.rowCount())));
}
