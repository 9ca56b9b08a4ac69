// The window: brings together the Board, which reads the store in another thread, and the widgets.
// The jobs that the board has read are in m_jobs, a model that searches, filters and counts them.
// Size, columns and panes are kept in the settings.

#include "mainwindow.h"

#include "actions.h"
#include "dataout.h"
#include "detailpane.h"
#include "itemfields.h"
#include "jobtable.h"
#include "jobwindow.h"
#include "look.h"
#include "sourcetree.h"
#include "statusline.h"
#include "troublebar.h"
#include "xmlmonitor.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScreen>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

constexpr QSize WINDOW_SIZE(1280, 740);
constexpr int SEARCH_DELAY = 60;  // ms, after the last letter
// While jobs are read, they are shown again after so many ms, or after so many times as long as
// showing them took last, if that is longer.
constexpr int REFRESH_EVERY = 100;
constexpr int REFRESH_FACTOR = 10;

// Keys of the settings. UPPER is the splitter of sources, jobs and details, PANES the one of these
// and the packets.
const QString GEOMETRY = QStringLiteral("window/geometry");
const QString UPPER = QStringLiteral("window/upper");
const QString PANES = QStringLiteral("window/panes");
const QString COLUMNS = QStringLiteral("window/columns");
const QString DETAILS = QStringLiteral("window/details");
const QString PACKETS = QStringLiteral("window/packets");
const QString THEME = QStringLiteral("window/theme");

}  // namespace

MainWindow::MainWindow(const QByteArray &url, QSettings &settings)
    : m_settings(settings), m_board(url), m_jobs(nullptr)
{
    build();
    connectBoard();
    connectActions();
    connectTable();
    restore();
    m_board.load();
    showJobs();
}

MainWindow::~MainWindow()
{
    save();
    m_board.disconnect(this);
    m_table->setModel(nullptr);  // the table is destroyed after m_jobs and must not read it
}

void MainWindow::build()
{
    setWindowTitle(tr("Job board"));
    m_actions = new Actions(*this);
    m_upper = new QSplitter(Qt::Horizontal);
    m_sources = new SourceTree(m_upper);
    m_upper->addWidget(buildMiddle());
    m_detail = new DetailPane(m_upper);
    m_upper->setSizes({ 250, 740, 290 });
    m_upper->setStretchFactor(1, 1);
    m_panes = new QSplitter(Qt::Vertical, this);
    m_panes->addWidget(m_upper);
    m_packets = new XMLMonitor(nullptr, m_panes);
    m_panes->setSizes({ 500, 160 });
    m_panes->setStretchFactor(0, 1);
    setCentralWidget(m_panes);
    m_status = new StatusLine(m_board, m_jobs, this);
    setStatusBar(m_status);
    setTabOrder(m_text, m_table);
    m_table->setFocus();
}

QWidget *MainWindow::buildMiddle()
{
    auto *middle = new QWidget;
    auto *column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    m_text = new QLineEdit(middle);
    m_text->setObjectName(QStringLiteral("search"));
    m_text->setAccessibleName(tr("Find jobs"));
    m_text->setPlaceholderText(tr("Find jobs by any column"));
    m_text->setClearButtonEnabled(true);
    column->addWidget(m_text);
    m_trouble = new TroubleBar(middle);
    column->addWidget(m_trouble);
    m_table = new JobTable(m_jobs, middle);
    column->addWidget(m_table, 1);
    return middle;
}

void MainWindow::connectBoard()
{
    m_refresh.setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, &MainWindow::showJobs);
    connect(&m_board, &Board::jobsChanged, this, [this] {
        if (!m_board.isLoading()) {
            showJobs();
        } else if (!m_refresh.isActive()) {
            m_refresh.start(std::max(m_refresh.interval(), REFRESH_EVERY));
        }
    });
    connect(&m_board, &Board::statusChanged, this, &MainWindow::showStatus);
    connect(&m_board, &Board::itemRead, this, &MainWindow::takeItem);
    connect(&m_board, &Board::agentNamed, m_packets, &XMLMonitor::setAgentName);
    m_board.setObserver(m_packets->makeObserver());
    connect(m_trouble, &TroubleBar::retry, this, &MainWindow::retry);
}

void MainWindow::connectActions()
{
    connect(m_actions->reload, &QAction::triggered, &m_board, &Board::load);
    connect(m_actions->stop, &QAction::triggered, &m_board, &Board::stop);
    connect(m_actions->open, &QAction::triggered, this, &MainWindow::openJob);
    connect(m_actions->exportAll, &QAction::triggered, this,
        [this] { exportRows(m_table->allRows()); });
    connect(m_actions->exportChosen, &QAction::triggered, this,
        [this] { exportRows(m_table->selectedRows()); });
    connect(m_actions->print, &QAction::triggered, this, &MainWindow::print);
    m_upper->addActions({ m_actions->exportAll, m_actions->find });  // where their keys work
    connect(m_actions->quit, &QAction::triggered, this, &QWidget::close);
    connect(m_actions->copy, &QAction::triggered, m_table, &JobTable::copy);
    connect(m_actions->copyXml, &QAction::triggered, this,
        [this] { QApplication::clipboard()->setText(m_item.xml); });
    connect(m_actions->selectAll, &QAction::triggered, m_table, &QTableView::selectAll);
    connect(m_actions->find, &QAction::triggered, this, [this] {
        m_text->setFocus(Qt::ShortcutFocusReason);
        m_text->selectAll();
    });
    connect(m_actions->showDetails, &QAction::toggled, m_detail, &QWidget::setVisible);
    connect(m_actions->showPackets, &QAction::toggled, m_packets, &QWidget::setVisible);
    connect(m_actions, &Actions::stateChosen, this, &MainWindow::filterByState);
    connect(m_actions, &Actions::themeChosen, this, &MainWindow::applyTheme);
    connect(m_actions->columns, &QMenu::aboutToShow, this, [this] {
        m_actions->columns->clear();
        m_table->addColumnActions(*m_actions->columns);
    });
    connect(new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this,
        &MainWindow::escape);
}

void MainWindow::connectTable()
{
    m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_table->addActions({ m_actions->open, m_actions->copy, m_actions->copyXml });
    connect(m_table, &QAbstractItemView::activated, this, &MainWindow::openJob);
    m_choice.setSingleShot(true);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &MainWindow::showStatus);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, &m_choice,
        [this] { m_choice.start(0); });
    connect(&m_choice, &QTimer::timeout, this, &MainWindow::chooseCurrent);
    connect(m_sources, &SourceTree::chosen, this, [this](const Source &source) {
        m_board.prefer(source);
        JobModel::Filter wanted = m_jobs.filter();
        wanted.source = source;
        filter(wanted);
        m_table->scrollToTop();
    });
    m_search.setSingleShot(true);
    m_search.setInterval(SEARCH_DELAY);
    connect(m_text, &QLineEdit::textChanged, &m_search, [this] { m_search.start(); });
    connect(&m_search, &QTimer::timeout, this, [this] {
        JobModel::Filter wanted = m_jobs.filter();
        wanted.text = m_text->text();
        filter(wanted);
    });
}

void MainWindow::restore()
{
    resize(WINDOW_SIZE.boundedTo(screen()->availableSize()));
    restoreGeometry(m_settings.value(GEOMETRY).toByteArray());
    m_upper->restoreState(m_settings.value(UPPER).toByteArray());
    m_panes->restoreState(m_settings.value(PANES).toByteArray());
    m_table->horizontalHeader()->restoreState(m_settings.value(COLUMNS).toByteArray());
    m_actions->showDetails->setChecked(m_settings.value(DETAILS, true).toBool());
    m_actions->showPackets->setChecked(m_settings.value(PACKETS, true).toBool());
    const int theme = qBound(int(Theme::System), m_settings.value(THEME).toInt(), int(Theme::Dark));
    m_actions->setTheme(theme);
    applyTheme(theme);
}

void MainWindow::save()
{
    m_settings.setValue(GEOMETRY, saveGeometry());
    m_settings.setValue(UPPER, m_upper->saveState());
    m_settings.setValue(PANES, m_panes->saveState());
    m_settings.setValue(COLUMNS, m_table->horizontalHeader()->saveState());
    m_settings.setValue(DETAILS, m_actions->showDetails->isChecked());
    m_settings.setValue(PACKETS, m_actions->showPackets->isChecked());
    m_settings.setValue(THEME, m_theme);
}

bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::ThemeChange) {
        applyTheme(m_theme);
    }
    return QMainWindow::event(event);
}

void MainWindow::applyTheme(int theme)
{
    m_theme = theme;
    setTheme(Theme(theme));
}

void MainWindow::showJobs()
{
    QElapsedTimer time;
    time.start();
    m_jobs.show(m_board.jobs());
    m_sources->show(*m_board.jobs());
    showStatus();
    m_choice.start(0);
    m_refresh.setInterval(int(time.elapsed()) * REFRESH_FACTOR);
}

void MainWindow::showStatus()
{
    m_actions->stop->setEnabled(m_board.isLoading());
    m_trouble->setTrouble(m_board.problem());
    m_status->update();
    m_table->setPlaceholder(emptiness());
    const bool isChosen = TQKEY_CC::isValid(m_board.chosen());
    m_detail->setPlaceholder(isChosen ? tr("The job is being read.") : tr("No job is chosen."));
    m_actions->copyXml->setEnabled(!m_item.xml.isEmpty());
    m_actions->open->setEnabled(isChosen);
    m_actions->exportChosen->setEnabled(m_table->selectedRows().size() > 1);
    const QString text = tr("%1 (%2)");
    m_actions->states[0]->setText(text.arg(tr("Any state"), QLocale().toString(m_jobs.count())));
    for (int state = 0; state < stateNames().size(); ++state) {
        m_actions->states[size_t(state) + 1]->setText(
            text.arg(stateName(state), QLocale().toString(m_jobs.count(state))));
    }
}

// Why the table is empty, if it is.
QString MainWindow::emptiness() const
{
    if (m_jobs.total() == 0) {
        return m_board.isLoading() ? tr("Jobs are being loaded.")
            : m_board.isPart()     ? tr("No jobs are loaded.")
                                   : tr("The store has no jobs.");
    }
    if (!m_jobs.filter().text.isEmpty()) {
        return tr("No job contains “%1”.").arg(m_jobs.filter().text);
    }
    return m_jobs.filter().state ? tr("No job is in this state.") : tr("There are no jobs here.");
}

void MainWindow::filterByState(int state)
{
    JobModel::Filter wanted = m_jobs.filter();
    wanted.state = state < 0 ? std::nullopt : std::optional(state);
    filter(wanted);
}

void MainWindow::filter(const JobModel::Filter &filter)
{
    m_jobs.setFilter(filter);
    showStatus();
    m_choice.start(0);
}

void MainWindow::chooseCurrent()
{
    const int row = m_table->currentIndex().row();
    const TQKEY_ELEMENT key = m_jobs.key(row);
    m_board.choose(key, m_jobs.index(row, JobModel::Name).data().toString());
    if (!(m_item.key == key)) {
        takeItem({ key, {}, {}, {} });  // shows nothing until the board has read the item
    }
}

void MainWindow::takeItem(const Item &item)
{
    if (item.key == m_board.chosen()) {
        m_item = item;
        m_detail->setFields(item.fields);
        showStatus();
    }
}

void MainWindow::openJob()
{
    const int row = m_table->currentIndex().row();
    const TQKEY_ELEMENT key = m_jobs.key(row);
    if (TQKEY_CC::isValid(key)) {
        const QString name = m_jobs.index(row, JobModel::Name).data().toString();
        (new JobWindow(m_board, key, name, m_item, this))->show();
    }
}

void MainWindow::exportRows(const QList<int> &rows)
{
    const QString csv = tr("Comma-separated values (*.csv)");
    const QString xml = tr("XML (*.xml)");
    QString filter;
    QString name = QFileDialog::getSaveFileName(
        this, tr("Export jobs"), QString(), csv + QStringLiteral(";;") + xml, &filter);
    if (name.isEmpty()) {
        return;
    }
    if (filter == xml && !name.endsWith(QLatin1String(".xml"), Qt::CaseInsensitive)) {
        name += QStringLiteral(".xml");
    }
    const QString problem = exportJobs(*m_table, rows, name);
    if (!problem.isEmpty()) {
        QMessageBox::warning(
            this, tr("Export jobs"), tr("%1 could not be written: %2").arg(name, problem));
    }
}

void MainWindow::print()
{
    QPrintPreviewDialog preview(this);
    connect(&preview, &QPrintPreviewDialog::paintRequested, this,
        [this](QPrinter *printer) { printJobs(*m_table, m_table->allRows(), *printer); });
    preview.exec();
}

// First the search is cleared, then loading stops.
void MainWindow::escape()
{
    if (!m_text->text().isEmpty()) {
        m_text->clear();
        m_table->setFocus();
    } else if (m_text->hasFocus()) {
        m_table->setFocus();
    } else {
        m_board.stop();
    }
}

void MainWindow::retry()
{
    m_table->setFocus();  // the button vanishes
    m_board.load();
}
