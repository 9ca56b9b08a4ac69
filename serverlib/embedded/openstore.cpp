#include "openstore_p.h"

#include "schemacheck_p.h"
#include "seeder_p.h"

#include <atomic>

namespace TQServerInternal {

namespace {

// The first of the thread's list. A plain pointer, which needs no destructor: connections may
// outlive what a thread destroys at its end.
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
        m_database.fail(reason);
    } else {
        m_isOpen = m_database.open(*address, address->isMemory()) &&
            (!address->isMemory() || seedSample(m_database, {})) && checkSchema(m_database);
    }
    if (!m_isOpen) {
        fail();
    }
    return m_isOpen;
}

bool OpenStore::reach() { return m_isOpen && !m_isBroken && m_database.recover(); }

void OpenStore::fail()
{
    ++m_failures;
    if (m_isBroken) {
        return;  // the failure that broke it is the cause of this one
    }
    m_error = m_database.error().toUtf8();
    if (m_transactions > 0) {
        m_isBroken = true;
        m_database.rollback();
    }
}

void OpenStore::beginReading()
{
    if (m_transactions++ == 0 && (!reach() || !m_database.beginReading())) {
        m_isBroken = m_isOpen;
        ++m_failures;
        m_error = m_database.error().toUtf8();
    }
}

void OpenStore::endReading()
{
    if (m_transactions == 1 && m_isOpen && !m_isBroken) {
        // At the end of the first: what was read is as it was found, and the first rows are not
        // held up. It takes about a thirtieth of the time of listing everything.
        const bool isWhole = m_isChecked || m_database.isWhole();
        m_isChecked = isWhole;
        if (!isWhole) {
            fail();
        } else {
            m_database.rollback();
        }
    }
    if (m_transactions > 0 && --m_transactions == 0) {
        m_isBroken = false;
    }
}

// A file has no port. Its number tells it from other files that are open.
int OpenStore::port() const
{
    constexpr Number PORTS = 0xffff;
    const int port = m_database.server().port;
    return !m_isOpen ? 0 : port != 0 ? port : int(1 + (m_number - 1) % PORTS);
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
