#ifndef SERVERPROBE_P_H
#define SERVERPROBE_P_H

#include "storeaddress_p.h"

namespace TQServerInternal {

// Connects to a server and asks it one question; empty when it answers within the address's
// response time, else why not. QtSql asks several as it connects, and would wait for ever.
QString probeServer(const StoreAddress &address);

// What a server's silence is called.
QString noAnswer(std::chrono::milliseconds limit);

}  // namespace TQServerInternal

#endif
