// The stores that connections have open, as a list for each thread, and what fails in them. A
// failure inside a transaction ends it, and everything up to its end fails as well: what would be
// found could be of another moment.

#include "openstore_p.h"

#include "seeder_p.h"

#include <atomic>

namespace TQServerInternal {

namespace {

// The first store in the thread's list. A plain pointer has no destructor, so it can still be used
// by connections that end after the thread's own objects were destroyed.
thread_local OpenStore *firstStore = nullptr;

std::atomic<OpenStore::Number> lastNumber { 0 };

}  // namespace

OpenStore::OpenStore(const void *owner) : m_owner(owner), m_number(++lastNumber), m_next(firstStore)
{
    firstStore = this;
}

OpenStore::~OpenStore()
{
    OpenStore **link = &firstStore;
    while (*link && *link != this) {
        link = &(*link)->m_next;
    }
    if (*link) {
        *link = m_next;
    }
}

bool OpenStore::open(const char *url)
{
    QString reason;
    const auto address = StoreAddress::parse(url, reason);
    if (!address) {
        m_error = reason.toUtf8();
        countFailure();
        return false;
    }
    m_database = address->dialect->makeDatabase(*address);
    m_isOpen = m_database->open(address->isMemory());
    if (m_isOpen && address->isMemory()) {
        m_isOpen = seedSample(*m_database, {});
    }
    m_isOpen = m_isOpen && m_database->checkSchema();
    if (!m_isOpen) {
        fail();
    }
    return m_isOpen;
}

bool OpenStore::reach() { return m_isOpen && !m_isBroken && m_database->recover(); }

void OpenStore::countFailure()
{
    ++m_failures;
    if (m_database) {
        m_error = m_database->error().toUtf8();
    }
}

void OpenStore::fail()
{
    if (m_isBroken) {
        ++m_failures;  // what broke the transaction is the cause of this failure, too
        return;
    }
    countFailure();
    if (m_isOpen && m_transactions > 0) {
        m_isBroken = true;
        m_database->rollback();
    }
}

void OpenStore::beginReading()
{
    ++m_transactions;
    const bool isOuter = m_transactions == 1;
    if (isOuter && !(reach() && m_database->beginReading())) {
        m_isBroken = m_isOpen;
        countFailure();
    }
}

void OpenStore::endReading()
{
    if (m_transactions == 1 && m_isOpen && !m_isBroken) {
        endOuter();
    }
    if (m_transactions > 0) {
        --m_transactions;
    }
    if (m_transactions == 0) {
        m_isBroken = false;
    }
}

// The first transaction checks the store as a whole, which takes about a thirtieth of the time of
// listing everything. It does so at its end: what was read is as it was found, and the first rows
// have not waited for it.
void OpenStore::endOuter()
{
    if (!m_isChecked && !m_database->isWhole()) {
        fail();
        return;
    }
    m_isChecked = true;
    m_database->rollback();
}

// A file has no port. Its number distinguishes it from other open files.
int OpenStore::port() const
{
    constexpr Number PORTS = 0xffff;
    if (!m_isOpen) {
        return 0;
    }
    const int port = m_database->server().port;
    return port != 0 ? port : int(1 + (m_number - 1) % PORTS);
}

template<typename Matches>
OpenStore *OpenStore::findIf(Matches matches)
{
    OpenStore *store = firstStore;
    while (store && !matches(*store)) {
        store = store->m_next;
    }
    return store;
}

OpenStore *OpenStore::find(Number number)
{
    return findIf([number](const OpenStore &store) { return store.m_number == number; });
}

OpenStore *OpenStore::find(const void *owner)
{
    return findIf([owner](const OpenStore &store) { return store.m_owner == owner; });
}

OpenStore *OpenStore::find(const std::string &host, int port)
{
    OpenStore *found = nullptr;
    for (OpenStore *store = firstStore; store; store = store->m_next) {
        if (store->isOpen() && store->host() == host && store->port() == port) {
            if (found) {
                return nullptr;
            }
            found = store;
        }
    }
    return found;
}

}  // namespace TQServerInternal
