#ifndef SQLITEWATCHER_P_H
#define SQLITEWATCHER_P_H

#include "storeaddress_p.h"
#include "watcher_p.h"

#include <memory>

namespace TQServerInternal {

std::unique_ptr<Watcher> makeSqliteWatcher(const StoreAddress &address, Watcher::Notice notice);

}  // namespace TQServerInternal

#endif
