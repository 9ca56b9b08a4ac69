#include "serverprobe_p.h"

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

// Waits until the answer to a question is there; false when the time is over before.
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

QString probeServer(const StoreAddress &address)
{
    // This part has a limit of its own: connect_timeout.
    const Connection connection(PQconnectdb(address.conninfo().constData()));
    if (PQstatus(connection.get()) != CONNECTION_OK) {
        return QString::fromUtf8(PQerrorMessage(connection.get()));
    }
    PQsetNoticeReceiver(
        connection.get(), [](void *, const PGresult *) {}, nullptr);
    const QDeadlineTimer deadline = address.responseTimeout.count() > 0
        ? QDeadlineTimer(address.responseTimeout)
        : QDeadlineTimer(QDeadlineTimer::Forever);
    PQsendQuery(connection.get(), "SELECT 1");
    return hasAnswer(connection.get(), deadline) ? QString() : noAnswer(address.responseTimeout);
}

QString noAnswer(std::chrono::milliseconds limit)
{
    return QStringLiteral("no answer from the server for %1 s").arg(double(limit.count()) / 1000);
}

}  // namespace TQServerInternal
