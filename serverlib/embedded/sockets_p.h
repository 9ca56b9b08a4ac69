#ifndef SOCKETS_P_H
#define SOCKETS_P_H

#include <set>

// A connection's socket, by a descriptor of its own: that number cannot come to mean another
// connection when the database client closes its own.
class SocketCopy
{
public:
    explicit SocketCopy(int socket);
    ~SocketCopy();
    SocketCopy(const SocketCopy &) = delete;
    SocketCopy &operator=(const SocketCopy &) = delete;

    void shutDown() const;

private:
    int m_socket;
};

// The connections to a PostgreSQL port that the process has made since this object was: how the
// connection is found that a database client is just opening, and has not told anybody of.
class ConnectionsSince
{
public:
    explicit ConnectionsSince(int port);

    void shutDown() const;

private:
    std::set<int> m_before;
    int m_port;
};

#endif
