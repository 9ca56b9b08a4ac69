#include "board.h"

#include "reader.h"

#include <QMetaObject>

namespace {

constexpr int SECOND = 1000;
bool leftThreads = false;

}  // namespace

Board::Board(const QByteArray &url)
    : m_thread(new QThread), m_reader(new Reader(url)), m_jobs(std::make_shared<JobStore>())
{
    qRegisterMetaType<Sources>("Sources");  // what crosses threads
    qRegisterMetaType<JobRows>("JobRows");
    qRegisterMetaType<Item>("Item");
    qRegisterMetaType<PacketRecord>("PacketRecord");
    m_reader->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_reader, &QObject::deleteLater);
    connect(m_reader, &Reader::sourcesRead, this, [this](int run, const Sources &sources) {
        if (run == m_run) {
            target().add(sources);
        }
    });
    connect(m_reader, &Reader::jobsRead, this, [this](int run, const JobRows &rows) {
        if (run == m_run) {
            target().add(rows);
        }
    });
    connect(m_reader, &Reader::progressed, this, &Board::takeProgress);
    connect(m_reader, &Reader::loaded, this, &Board::finish);
    connect(m_reader, &Reader::itemRead, this, &Board::takeItem);
    connect(m_reader, &Reader::packetPassed, this, &Board::packetPassed);
    connect(&m_tick, &QTimer::timeout, this, &Board::tick);
    m_tick.start(SECOND);
    m_retry.setSingleShot(true);
    m_retry.setInterval(RETRY_AFTER);
    connect(&m_retry, &QTimer::timeout, this, &Board::load);
    m_thread->start();
}

Board::~Board()
{
    m_reader->disconnect(this);
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

void Board::load()
{
    m_retry.stop();
    m_hasChanged = false;
    m_isStopped = false;
    const int run = ++m_run;
    tell([run](Reader &reader) { reader.load(run); });
    m_isLoading = true;
    m_progress = 0;
    const bool isFirst = m_jobs->size() == 0 && !m_readAt.isValid();
    m_next = isFirst ? nullptr : std::make_shared<JobStore>();
    Q_EMIT statusChanged();
}

void Board::stop()
{
    if (!m_isLoading) {
        m_retry.stop();
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

void Board::storeChanged()
{
    if (m_isLoading) {
        m_hasChanged = true;
    } else {
        load();
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
    if (!m_next) {
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
    const bool isReplaced = m_next && error.isEmpty();
    if (isReplaced) {
        m_jobs = m_next;
    }
    m_next.reset();
    if (error.isEmpty()) {
        m_isPart = false;
        m_readAt = QDateTime::currentDateTime();
    } else {
        m_retry.start();
    }
    Q_EMIT jobsChanged();
    if (isReplaced) {
        readChosen();
    }
    Q_EMIT statusChanged();
    if (m_hasChanged) {
        load();
    }
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
