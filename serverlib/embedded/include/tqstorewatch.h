#ifndef TQSTOREWATCH_H
#define TQSTOREWATCH_H

#include "tqtypes.h"

#include <functional>
#include <memory>

namespace TQServerInternal {
class StoreWatch;
}

/// Notices when other connections change a store, on a connection of its own that is never in a
/// transaction.
///
/// An SQLite file is looked at each second. A PostgreSQL server sends a notification after each
/// transaction that changed a table, whatever program made the change: the triggers for that are
/// part of a store. A database whose store was made before it had these triggers can be watched,
/// but sends nothing. A store in memory is never changed by others.
///
/// When the file or the server cannot be reached, the watch tries again until it can, and then
/// says that the store changed: it may have. A PostgreSQL server that is a hot standby accepts no
/// listeners, so nothing is noticed there.
///
/// Needs a QCoreApplication and, in the thread that made it, a running event loop. Use and delete
/// it in that thread. It does not depend on any TQCommServer and may outlive all of them.
class TQSERVER_EXPORT TQStoreWatch
{
public:
    /// Watches the store at a URL for TQCommServer. Changes after the constructor are noticed, if
    /// the store can be reached now; the constructor waits for a server at most 5 seconds.
    ///
    /// changed is called from the event loop. Several changes within a fifth of a second give one
    /// call. It may delete the watch. With a null or wrong URL it is never called.
    TQStoreWatch(const char *url, std::function<void()> changed);
    /// Ends the connection. changed is not called any more.
    ~TQStoreWatch();
    TQStoreWatch(const TQStoreWatch &) = delete;
    TQStoreWatch &operator=(const TQStoreWatch &) = delete;

private:
    std::unique_ptr<TQServerInternal::StoreWatch> m_watch;  // null if there is nothing to watch
};

#endif
