#ifndef READER_H
#define READER_H

#include "rows.h"

#include <QObject>
#include <QSemaphore>

#include <deque>
#include <memory>

class TQStoreWatch;
class XMLPacket;
class XMLRouterObserver;

/// Reads the store, in a thread of its own: has the connection, the router and the agents, and
/// turns replies into plain rows. What it emits crosses to the window's thread.
///
/// A server that does not answer stops this thread, and nothing else.
class Reader : public QObject
{
    Q_OBJECT

public:
    /// Opens nothing yet.
    explicit Reader(const QByteArray &url);
    ~Reader() override;

    /// Is told what passes through the router. Comes before anything is read.
    void setObserver(const std::shared_ptr<XMLRouterObserver> &observer) { m_observer = observer; }

    /// Reads the outputs, their jobs and then the books. The signals carry the number of the run.
    /// What an earlier run has not read yet is dropped.
    void load(int run);
    /// Reads what that source shows before the rest.
    void prefer(const Source &source);
    /// Reads nothing more for the run, except the reply that is under way.
    void stop();
    void readItem(const TQKEY_ELEMENT &key, const QString &name);

    /// Says from any thread that rows of jobsRead() were taken. Without that the reader waits, so
    /// that rows do not pile up.
    void taken(int batches = 1) { m_room.release(batches); }

Q_SIGNALS:
    void sourcesRead(int run, const Sources &sources);
    void jobsRead(int run, const JobRows &rows);
    /// So many of the requests that are known of are answered.
    void progressed(int run, int answered, int requests);
    /// The run has ended. The error is empty unless reading failed.
    void loaded(int run, const QString &error);
    void itemRead(const Item &item);
    /// What people call an agent.
    void agentNamed(int agentID, const QString &name);
    /// Somebody else changed the store, or may have.
    void storeChanged();

private:
    struct Session;

    QString open();
    void nameAgents();
    void ask(int type, const TQKEY_ELEMENT &owner, const QString &name);
    void askBooks();
    void takeReply(int type, const XMLPacket &reply);
    QString takeSources(Source::Kind kind, const XMLPacket &reply);
    QString takeJobs(const XMLPacket &reply);
    void hand(const JobRows &rows);
    void checkServed(const QString &error);
    void takeItem(const XMLPacket &reply);
    void end(const QString &error);

    const QByteArray m_url;
    std::shared_ptr<XMLRouterObserver> m_observer;
    std::unique_ptr<TQStoreWatch> m_watch;  // null until opened
    std::unique_ptr<Session> m_session;  // likewise
    QSemaphore m_room;  // for batches that are not taken yet
    int m_run = 0;
    bool m_isLoading = false;
    int m_requests = 0;  // of this run
    QString m_unreadable;  // what is wrong with a reply of this run
    std::deque<TQKEY_ELEMENT> m_items;  // asked for, not answered yet
};

#endif
