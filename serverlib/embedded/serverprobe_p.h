#ifndef SERVERPROBE_P_H
#define SERVERPROBE_P_H

#include <QByteArray>
#include <QString>

#include <chrono>

namespace TQServerInternal {

// Connects to a PostgreSQL server and asks it one question. Empty when it answers within the limit
// (0 for any time), else the reason. QtSql asks questions while it connects, without any limit.
QString probeServer(const QByteArray &conninfo, std::chrono::milliseconds limit);

}  // namespace TQServerInternal

#endif
