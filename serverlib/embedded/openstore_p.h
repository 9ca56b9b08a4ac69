#ifndef OPENSTORE_P_H
#define OPENSTORE_P_H

#include "database_p.h"

#include <cstdint>

namespace TQServerInternal {

// A store that a connection has open, its transaction, and what failed in it.
//
// Each has a number that no other in the process ever has. Records and items carry the number of
// the store that they came from, so that what they load later comes from there, too. A thread finds
// the stores that it has open itself.
class OpenStore
{
public:
    using Number = std::uint64_t;  // 0 is no store's

    // The owner is what find() knows it by: the connection of the interface.
    explicit OpenStore(const void *owner);
    ~OpenStore();
    OpenStore(const OpenStore &) = delete;
    OpenStore &operator=(const OpenStore &) = delete;

    // False, with one failure, when the URL or the store does not open.
    bool open(const char *url);
    bool isOpen() const { return m_isOpen; }

    // True when queries can be asked, after opening a lost connection anew.
    bool reach();
    // Counts a failure of what was asked, and ends a transaction that it happened in.
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

    // Open stores of this thread; null when there is none. Stores on one server cannot be told by
    // host and port, so there must be exactly one.
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
    bool m_isChecked = false;  // the content as a whole
    bool m_isBroken = false;  // the transaction has ended, but those who asked for it do not know
    unsigned m_failures = 0;
    QByteArray m_error;  // of the last failure
    OpenStore *m_next;  // in the thread's list
};

}  // namespace TQServerInternal

#endif
