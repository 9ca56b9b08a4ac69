// Listens to the notifications that the triggers of a store send, on a connection outside
// transactions: CONNECTING, then LISTENING, and LOST until the next attempt. Only the constructor
// waits for the server; later the event loop does.

#include "postgresqlwatcher_p.h"

#include "postgresqlurl_p.h"

#include <QDeadlineTimer>
#include <QSocketNotifier>

#include <libpq-fe.h>
#include <poll.h>

namespace TQServerInternal {

namespace {

constexpr int PATIENCE = 5000;  // ms until the server has to listen
// Notices after about two minutes that a server is gone without having closed the connection.
constexpr const char *KEEPALIVE = "keepalives_idle=60 keepalives_interval=15 keepalives_count=4 ";

class PostgresqlWatcher : public Watcher
{
public:
    PostgresqlWatcher(const StoreAddress &address, Notice notice)
        : Watcher(std::move(notice)), m_conninfo(KEEPALIVE + conninfo(address))
    {
        begin();
        while (m_state == Connecting && awaitSocket()) {
            advance();
        }
        m_hasMissed = m_state != Listening;
        watchSocket();
    }
    ~PostgresqlWatcher() override { delete m_notifier.release(); }

    void look() override
    {
        if (m_state == Connecting && m_deadline.hasExpired()) {
            lose();
        }
        if (m_state == Lost) {
            begin();
            watchSocket();
        }
    }

private:
    enum State { Connecting, Listening, Lost };
    struct Finish
    {
        void operator()(PGconn *connection) const { PQfinish(connection); }
    };
    struct Discard  // an object that may be calling us
    {
        void operator()(QSocketNotifier *notifier) const
        {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    };

    void begin()
    {
        m_connection.reset(PQconnectStart(m_conninfo.constData()));
        PQsetNoticeReceiver(
            m_connection.get(), [](void *, const PGresult *) {}, nullptr);
        m_deadline.setRemainingTime(PATIENCE);
        m_polling = PGRES_POLLING_WRITING;
        m_state = PQstatus(m_connection.get()) == CONNECTION_BAD ? Lost : Connecting;
    }

    void lose()
    {
        m_notifier.reset();
        m_connection.reset();
        m_state = Lost;
        m_hasMissed = true;
    }

    // Waits until the socket is ready; false when the time is over.
    bool awaitSocket() const
    {
        const short events = m_polling == PGRES_POLLING_WRITING ? POLLOUT : POLLIN;
        pollfd socket = { PQsocket(m_connection.get()), events, 0 };
        return ::poll(&socket, 1, int(m_deadline.remainingTime())) > 0;
    }

    // Lets the event loop wait for the socket, which may be another one after each step.
    void watchSocket()
    {
        m_notifier.reset();
        if (m_state == Lost) {
            return;
        }
        const auto type =
            m_polling == PGRES_POLLING_WRITING ? QSocketNotifier::Write : QSocketNotifier::Read;
        m_notifier.reset(new QSocketNotifier(PQsocket(m_connection.get()), type));
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] {
            const bool wasListening = m_state == Listening;
            advance();
            if (!wasListening || m_state == Lost) {
                watchSocket();
            }
        });
    }

    // Does what can be done without waiting.
    void advance()
    {
        if (m_polling == PGRES_POLLING_OK) {
            read();
            return;
        }
        m_polling = PQconnectPoll(m_connection.get());
        const bool isRefused = m_polling == PGRES_POLLING_FAILED ||
            (m_polling == PGRES_POLLING_OK &&
                PQsendQuery(m_connection.get(), POSTGRESQL_LISTEN) == 0);
        if (isRefused) {
            lose();
        }
    }

    void read()
    {
        if (PQconsumeInput(m_connection.get()) == 0) {
            lose();
            return;
        }
        while (m_state == Connecting && PQisBusy(m_connection.get()) == 0) {
            takeAnswer();
        }
        bool isNotified = false;
        while (PGnotify *notification = PQnotifies(m_connection.get())) {
            PQfreemem(notification);
            isNotified = true;
        }
        if (isNotified) {
            notice();
        }
    }

    // The server's answer to LISTEN.
    void takeAnswer()
    {
        PGresult *result = PQgetResult(m_connection.get());
        const bool isListening = PQresultStatus(result) == PGRES_COMMAND_OK;
        PQclear(result);
        if (!isListening) {
            lose();
            return;
        }
        m_state = Listening;
        if (m_hasMissed) {
            notice();
        }
        m_hasMissed = false;
    }

    const QByteArray m_conninfo;
    std::unique_ptr<PGconn, Finish> m_connection;
    std::unique_ptr<QSocketNotifier, Discard> m_notifier;  // ends before the connection
    QDeadlineTimer m_deadline;
    PostgresPollingStatusType m_polling = PGRES_POLLING_WRITING;  // what the socket is to be for
    State m_state = Lost;
    bool m_hasMissed = false;  // changes, perhaps, while it did not listen
};

}  // namespace

std::unique_ptr<Watcher> makePostgresqlWatcher(const StoreAddress &address, Watcher::Notice notice)
{
    return std::make_unique<PostgresqlWatcher>(address, std::move(notice));
}

}  // namespace TQServerInternal
