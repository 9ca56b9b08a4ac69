#ifndef BOARD_H
#define BOARD_H

#include "jobchanges.h"
#include "jobstore.h"
#include "rows.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <memory>
#include <optional>

class Reader;
class XMLRouterObserver;

/// What the program knows of the store, and how it comes to know it: starts the reading thread,
/// collects what that reads, and says what is wrong.
///
/// The first load fills the jobs row by row. A later one changes them at its end, if it succeeds;
/// until then, and if it fails, they stay. A load that failed is tried again from time to time.
/// When the store changes, it is loaded again, unless the user has stopped loading; this takes at
/// most half of the time.
class Board : public QObject
{
    Q_OBJECT

public:
    /// How long a server may be silent before that is a problem, in ms.
    static constexpr int PATIENCE = 3000;
    /// How long after a failure loading is tried again, in ms.
    static constexpr int RETRY_AFTER = 20000;

    /// Reads nothing yet.
    explicit Board(const QByteArray &url);
    /// Waits a second for the reading thread. A thread that is stuck in a query then is left alone.
    ~Board() override;

    /// Whether a thread was left alone. The process must not wait for it: end it with _Exit().
    static bool hasLeftThreads();

    const std::shared_ptr<JobStore> &jobs() const { return m_jobs; }
    bool isLoading() const { return m_isLoading; }
    /// Per cent of the requests of this load that are answered.
    int progress() const { return m_progress; }
    /// Whether the jobs are only a part of what is stored.
    bool isPart() const { return m_isPart; }
    /// When the jobs were read; invalid while nothing is complete.
    const QDateTime &readAt() const { return m_readAt; }
    /// Why the last load ended early, why the chosen job is not shown, or that the server does not
    /// answer. Empty without a problem.
    QString problem() const;
    /// How long the server has not answered what it was asked, in seconds; 0 if nothing is asked or
    /// that is not long.
    int silence() const;

    /// Is told what passes through the router, in the reading thread. Comes before load().
    void setObserver(const std::shared_ptr<XMLRouterObserver> &observer);
    /// Starts loading; what is being loaded already is given up.
    void load();
    void stop();
    /// Reads what that source shows before the rest.
    void prefer(const Source &source);
    /// Reads the job, and says so with itemRead(). Reads no other meanwhile, and of several that
    /// were chosen then only the last. The null key is no job.
    void choose(const TQKEY_ELEMENT &key, const QString &name);
    /// The job that was chosen last.
    const TQKEY_ELEMENT &chosen() const { return m_chosen; }
    /// Reads the chosen job again.
    void readChosen();
    void setRetryAfter(int milliseconds) { m_retry.setInterval(milliseconds); }

Q_SIGNALS:
    /// There are more jobs, or others.
    void jobsChanged();
    /// One of the values above has another value.
    void statusChanged();
    void itemRead(const Item &item);
    /// What people call an agent.
    void agentNamed(int agentID, const QString &name);

private:
    void takeProgress(int run, int answered, int requests);
    void storeChanged();
    void reloadSoon();
    void finish(int run, const QString &error);
    void takeItem(const Item &item);
    void heard();
    void tick();
    bool isWaiting() const { return m_isLoading || m_itemsAsked > 0; }
    template<typename Rows>
    void take(int run, const Rows &rows);
    template<typename Work>
    void tell(Work work);

    QThread *m_thread;  // deleted at the end, unless it is stuck
    Reader *m_reader;  // lives in that thread, and is deleted with it
    std::shared_ptr<JobStore> m_jobs;
    std::optional<JobChanges> m_changes;  // of a load that is not the first
    int m_run = 0;
    bool m_isLoading = false;
    bool m_isStopped = false;
    bool m_hasChanged = false;  // the store, during a load
    bool m_isPart = true;
    int m_progress = 0;
    QDateTime m_readAt;
    QString m_problem;  // of the last load
    TQKEY_ELEMENT m_chosen = {};
    QString m_chosenName;
    QString m_itemProblem;  // of the chosen job
    bool m_isItemWanted = false;  // the chosen job is to be read when the reader is free
    int m_itemsAsked = 0;
    QElapsedTimer m_lastHeard;
    int m_shownSilence = 0;
    QTimer m_tick;
    QTimer m_retry;
    QElapsedTimer m_began;  // the last load
    QElapsedTimer m_ended;
    qint64 m_took = 0;  // the last load, in ms
    QTimer m_reload;  // for a store that changed
};

#endif
