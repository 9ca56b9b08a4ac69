#ifndef SERVERPROBE_P_H
#define SERVERPROBE_P_H

#include <QByteArray>
#include <QString>

#include <chrono>

namespace TQServerInternal {

// Connects to a PostgreSQL server and asks it one question; empty when it answers within the limit
// (0 for any time), else why not. QtSql asks several as it connects, and would wait for ever.
QString probeServer(const QByteArray &conninfo, std::chrono::milliseconds limit);

}  // namespace TQServerInternal

#endif
