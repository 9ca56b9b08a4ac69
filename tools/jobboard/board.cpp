#include "board.h"

#include "reader.h"

#include <QMetaObject>

#include <limits>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr int SECOND = 1000;
constexpr int MANY = std::numeric_limits<int>::max() / 2;  // more batches than the thread can have
bool leftThreads = false;

// Gives the system what loading has used and freed. With a million jobs that is over 100 MiB in
// pieces, which the next load would not use again.
void releaseFreeMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace

Board::Board(const QByteArray &url)
    : m_thread(new QThread), m_reader(new Reader(url)), m_jobs(std::make_shared<JobStore>())
{
    qRegisterMetaType<Sources>("Sources");  // what crosses threads
    qRegisterMetaType<JobRows>("JobRows");
    qRegisterMetaType<Item>("Item");
    m_reader->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_reader, &QObject::deleteLater);
    connect(m_reader, &Reader::sourcesRead, this, &Board::take<Sources>);
    connect(m_reader, &Reader::jobsRead, this, [this](int run, const JobRows &rows) {
        take(run, rows);
        m_reader->taken();
    });
    connect(m_reader, &Reader::storeChanged, this, &Board::storeChanged);
    connect(m_reader, &Reader::progressed, this, &Board::takeProgress);
    connect(m_reader, &Reader::loaded, this, &Board::finish);
    connect(m_reader, &Reader::itemRead, this, &Board::takeItem);
    connect(m_reader, &Reader::agentNamed, this, &Board::agentNamed);
    connect(&m_tick, &QTimer::timeout, this, &Board::tick);
    m_tick.start(SECOND);
    m_retry.setSingleShot(true);
    m_retry.setInterval(RETRY_AFTER);
    connect(&m_retry, &QTimer::timeout, this, &Board::load);
    m_reload.setSingleShot(true);
    connect(&m_reload, &QTimer::timeout, this, &Board::load);
    m_thread->start();
}

Board::~Board()
{
    m_reader->disconnect(this);
    m_reader->taken(MANY);
    tell([](Reader &reader) { reader.stop(); });
    m_thread->quit();
    if (m_thread->wait(SECOND)) {
        delete m_thread;
    } else {
        leftThreads = true;
    }
}

bool Board::hasLeftThreads() { return leftThreads; }

// Calls work with the reader, in its thread.
template<typename Work>
void Board::tell(Work work)
{
    Reader *reader = m_reader;
    QMetaObject::invokeMethod(reader, [reader, work] { work(*reader); });
    if (!isWaiting()) {
        m_lastHeard.start();
    }
}

void Board::setObserver(const std::shared_ptr<XMLRouterObserver> &observer)
{
    tell([observer](Reader &reader) { reader.setObserver(observer); });
}

void Board::load()
{
    m_retry.stop();
    m_reload.stop();
    m_began.start();
    m_hasChanged = false;
    m_isStopped = false;
    const int run = ++m_run;
    tell([run](Reader &reader) { reader.load(run); });
    m_isLoading = true;
    m_progress = 0;
    const bool isFirst = m_jobs->size() == 0 && !m_readAt.isValid();
    m_changes.reset();
    if (!isFirst) {
        m_changes.emplace(*m_jobs);
    }
    Q_EMIT statusChanged();
}

void Board::stop()
{
    if (!m_isLoading) {
        m_retry.stop();
        m_reload.stop();
        return;
    }
    tell([](Reader &reader) { reader.stop(); });
    m_isStopped = true;
    m_hasChanged = false;
    finish(m_run, tr("Loading was stopped."));
    m_retry.stop();
    ++m_run;  // what still comes is not taken
}

void Board::prefer(const Source &source)
{
    tell([source](Reader &reader) { reader.prefer(source); });
}

template<typename Rows>
void Board::take(int run, const Rows &rows)
{
    if (run != m_run) {
        return;
    }
    if (m_changes) {
        m_changes->add(rows);
    } else {
        m_jobs->add(rows);
    }
}

void Board::storeChanged()
{
    m_hasChanged = true;
    reloadSoon();
}

// Waits after a load for as long as that took.
void Board::reloadSoon()
{
    if (m_hasChanged && !m_isLoading && !m_isStopped && !m_reload.isActive()) {
        const qint64 pause = m_ended.isValid() ? m_took - m_ended.elapsed() : 0;
        m_reload.start(int(std::max(qint64(0), pause)));
    }
}

void Board::heard()
{
    m_lastHeard.start();
    m_shownSilence = 0;
}

void Board::takeProgress(int run, int answered, int requests)
{
    heard();
    if (run != m_run) {
        return;
    }
    m_progress = answered * 100 / requests;
    if (!m_changes) {
        Q_EMIT jobsChanged();
    }
    Q_EMIT statusChanged();
}

void Board::finish(int run, const QString &error)
{
    heard();
    if (run != m_run) {
        return;
    }
    m_isLoading = false;
    m_problem = error;
    m_took = m_began.elapsed();
    m_ended.start();
    const bool isReload = m_changes && error.isEmpty();
    const bool isSame = isReload && !m_changes->apply();
    m_changes.reset();
    if (error.isEmpty()) {
        m_isPart = false;
        m_readAt = QDateTime::currentDateTime();
    } else {
        m_retry.start();
    }
    if (!isSame) {
        Q_EMIT jobsChanged();
    }
    if (isReload) {
        readChosen();
    }
    Q_EMIT statusChanged();
    releaseFreeMemory();
    reloadSoon();
}

void Board::choose(const TQKEY_ELEMENT &key, const QString &name)
{
    if (key == m_chosen) {
        return;
    }
    m_chosen = key;
    m_chosenName = name;
    readChosen();
}

void Board::readChosen()
{
    m_isItemWanted = TQKEY_CC::isValid(m_chosen);
    if (!m_isItemWanted) {
        m_itemProblem.clear();
        Q_EMIT statusChanged();
    } else if (m_itemsAsked == 0) {
        const TQKEY_ELEMENT key = m_chosen;
        const QString name = m_chosenName;
        tell([key, name](Reader &reader) { reader.readItem(key, name); });
        m_isItemWanted = false;
        ++m_itemsAsked;
    }
}

void Board::takeItem(const Item &item)
{
    heard();
    --m_itemsAsked;
    if (m_isItemWanted) {
        readChosen();  // this answers an earlier choice
        return;
    }
    if (item.key == m_chosen) {
        m_itemProblem = item.error;
    }
    if (!item.error.isEmpty()) {
        m_retry.start();
    }
    Q_EMIT itemRead(item);
    Q_EMIT statusChanged();
}

int Board::silence() const
{
    const bool isLong = isWaiting() && m_lastHeard.isValid() && m_lastHeard.elapsed() >= PATIENCE;
    return isLong ? int(m_lastHeard.elapsed() / SECOND) : 0;
}

void Board::tick()
{
    if (silence() != m_shownSilence) {
        m_shownSilence = silence();
        Q_EMIT statusChanged();
    }
}

QString Board::problem() const
{
    QStringList problems;
    if (silence() > 0) {
        problems << tr("The server has not answered for %1 s.").arg(silence());
    }
    if (m_isStopped) {
        problems << m_problem;
    } else if (!m_problem.isEmpty()) {
        problems << tr("Loading failed: %1").arg(m_problem);
    }
    if (!m_itemProblem.isEmpty()) {
        problems << tr("The chosen job is not shown: %1").arg(m_itemProblem);
    }
    return problems.join(QLatin1Char('\n'));
}
