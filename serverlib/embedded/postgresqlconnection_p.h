#ifndef POSTGRESQLCONNECTION_P_H
#define POSTGRESQLCONNECTION_P_H

#include <QString>

#include <chrono>
#include <memory>

#include <libpq-fe.h>

namespace TQServerInternal {

// A connection to a PostgreSQL server in pipeline mode: what is sent before a sync() takes one
// round trip. When the server is silent for longer than a limit, the connection is given up.
class PostgresqlConnection
{
public:
    struct Clear
    {
        void operator()(PGresult *result) const { PQclear(result); }
    };
    using Result = std::unique_ptr<PGresult, Clear>;

    // Connects; the limit of that is connect_timeout in conninfo. Without a limit of its own (0)
    // the connection waits for ever.
    PostgresqlConnection(const QByteArray &conninfo, std::chrono::milliseconds limit);

    bool isOpen() const { return !m_isGivenUp && PQstatus(m_connection.get()) == CONNECTION_OK; }
    PGconn *get() const { return m_connection.get(); }

    // Ends a round trip: what was sent since the last call. Its results can be taken now.
    void sync();
    // The next result of the trip; null after the results of each statement, and at its end.
    Result takeResult();
    // Skips what is left of the trip.
    void drain();

    // What failed: a result, or what was sent last.
    QString errorOf(const Result &result) const;

private:
    struct Finish
    {
        void operator()(PGconn *connection) const { PQfinish(connection); }
    };

    bool awaitResult() const;
    void giveUp();

    const std::unique_ptr<PGconn, Finish> m_connection;
    const std::chrono::milliseconds m_limit;
    bool m_isOnTrip = false;  // from sync() until the last result of the trip is taken
    bool m_isGivenUp = false;  // because the server was silent for too long
};

}  // namespace TQServerInternal

#endif
