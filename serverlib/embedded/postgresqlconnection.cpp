// Waits for a server with a limit of time, which libpq does not have: it sends and reads without
// waiting, and poll() waits.
//
// Statements are sent in pipeline mode. A round trip is what was sent up to a sync() and the
// results of it. libpq gives the results of each statement, then null, and as the last result of
// the trip one with the status PGRES_PIPELINE_SYNC.

#include "postgresqlconnection_p.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <sys/socket.h>

namespace TQServerInternal {

PostgresqlConnection::PostgresqlConnection(
    const QByteArray &conninfo, std::chrono::milliseconds limit)
    : m_connection(PQconnectdb(conninfo.constData())), m_limit(limit)
{
    // Otherwise notices would go to stderr.
    PQsetNoticeReceiver(
        get(), [](void *, const PGresult *) {}, nullptr);
    PQsetErrorVerbosity(get(), PQERRORS_TERSE);
    PQsetnonblocking(get(), 1);
    PQenterPipelineMode(get());
}

void PostgresqlConnection::sync() { m_isOnTrip = PQpipelineSync(get()) == 1; }

PostgresqlConnection::Result PostgresqlConnection::takeResult()
{
    if (!m_isOnTrip || !isOpen()) {
        return nullptr;
    }
    if (!awaitResult()) {
        giveUp();
        return nullptr;
    }
    Result result(PQgetResult(get()));
    m_isOnTrip = PQresultStatus(result.get()) != PGRES_PIPELINE_SYNC;
    return result;
}

void PostgresqlConnection::drain()
{
    while (m_isOnTrip && isOpen()) {
        takeResult();
    }
    m_isOnTrip = false;
}

QString PostgresqlConnection::errorOf(const Result &result) const
{
    if (m_isGivenUp) {
        return QStringLiteral("no answer from the server for %1 s")
            .arg(double(m_limit.count()) / 1000);
    }
    const char *text = result ? PQresultErrorMessage(result.get()) : PQerrorMessage(get());
    return QString::fromUtf8(text);
}

// Sends what is not sent yet, and waits until PQgetResult() does not block. That is so, too, when
// the connection is lost: PQgetResult() then gives libpq's own error. Only when the time is over
// there is nothing to take, and false is returned.
bool PostgresqlConnection::awaitResult() const
{
    const QDeadlineTimer deadline =
        m_limit.count() > 0 ? QDeadlineTimer(m_limit) : QDeadlineTimer(QDeadlineTimer::Forever);
    int unsent = PQflush(get());
    while (unsent >= 0 && PQisBusy(get()) == 1) {
        const short events = unsent > 0 ? POLLIN | POLLOUT : POLLIN;
        pollfd socket = { PQsocket(get()), events, 0 };
        if (::poll(&socket, 1, int(deadline.remainingTime())) == 0) {
            return false;
        }
        if ((socket.revents & ~POLLOUT) != 0 && PQconsumeInput(get()) == 0) {
            return true;  // the connection is lost
        }
        unsent = PQflush(get());
    }
    return true;
}

void PostgresqlConnection::giveUp()
{
    m_isGivenUp = true;
    ::shutdown(PQsocket(get()), SHUT_RDWR);
}

}  // namespace TQServerInternal
