// Asks a server one question before anything else does, so that one that is there but silent is
// noticed within a limit of time.

#include "serverprobe_p.h"

#include "watchdog_p.h"

#include <QDeadlineTimer>

#include <memory>

#include <libpq-fe.h>
#include <poll.h>

namespace TQServerInternal {

namespace {

struct Finish
{
    void operator()(PGconn *connection) const { PQfinish(connection); }
};
using Connection = std::unique_ptr<PGconn, Finish>;

// Waits for the answer to a query; false when the time is over before it is there.
bool hasAnswer(PGconn *connection, const QDeadlineTimer &deadline)
{
    while (PQconsumeInput(connection) == 1 && PQisBusy(connection) == 1) {
        pollfd socket = { PQsocket(connection), POLLIN, 0 };
        if (::poll(&socket, 1, int(deadline.remainingTime())) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

QString probeServer(const QByteArray &conninfo, std::chrono::milliseconds limit)
{
    // This part has a limit of its own: connect_timeout.
    const Connection connection(PQconnectdb(conninfo.constData()));
    if (PQstatus(connection.get()) != CONNECTION_OK) {
        return QString::fromUtf8(PQerrorMessage(connection.get()));
    }
    PQsetNoticeReceiver(
        connection.get(), [](void *, const PGresult *) {}, nullptr);
    const QDeadlineTimer deadline =
        limit.count() > 0 ? QDeadlineTimer(limit) : QDeadlineTimer(QDeadlineTimer::Forever);
    PQsendQuery(connection.get(), "SELECT 1");
    return hasAnswer(connection.get(), deadline) ? QString() : noAnswer(limit);
}

}  // namespace TQServerInternal
