#ifndef OPENSTORE_P_H
#define OPENSTORE_P_H

#include "database_p.h"

#include <cstdint>

namespace TQServerInternal {

// A store that a connection has open: its transaction, and what failed in it.
//
// Each has a number that is never used again in the process. Records and items carry the number of
// their store, so that they can load more from it later. A thread finds only the stores that it has
// opened itself.
class OpenStore
{
public:
    using Number = std::uint64_t;  // 0 for no store

    // The owner is the connection of the interface, by which find() finds the store.
    explicit OpenStore(const void *owner);
    ~OpenStore();
    OpenStore(const OpenStore &) = delete;
    OpenStore &operator=(const OpenStore &) = delete;

    // False, with one failure, when the URL or the store does not open.
    bool open(const char *url);
    bool isOpen() const { return m_isOpen; }

    // Opens a lost connection again; true when queries can be asked.
    bool reach();
    // Counts a failed query, and ends the transaction that it failed in.
    void fail();

    void beginReading();
    void endReading();

    Number number() const { return m_number; }
    // Both for a store that is open only.
    Database &database() { return *m_database; }
    const std::string &host() const { return m_database->server().host; }
    int port() const;  // 0 for a store that is not open
    unsigned failures() const { return m_failures; }
    const QByteArray &error() const { return m_error; }

    // Finds a store of this thread, or null. Two stores on one server have the same host and port:
    // then neither is found by these.
    static OpenStore *find(Number number);
    static OpenStore *find(const void *owner);
    static OpenStore *find(const std::string &host, int port);

private:
    void countFailure();
    void endOuter();
    template<typename Matches>
    static OpenStore *findIf(Matches matches);

    const void *const m_owner;
    const Number m_number;
    std::unique_ptr<Database> m_database;  // null until a URL was understood
    bool m_isOpen = false;
    unsigned m_transactions = 0;  // one within the other
    bool m_isChecked = false;  // its content as a whole
    bool m_isBroken = false;  // the transaction failed; its remaining queries fail, too
    unsigned m_failures = 0;
    QByteArray m_error;  // of the last failure
    OpenStore *m_next;  // in the thread's list
};

}  // namespace TQServerInternal

#endif
