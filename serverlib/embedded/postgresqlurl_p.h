#ifndef POSTGRESQLURL_P_H
#define POSTGRESQLURL_P_H

#include "storeaddress_p.h"

#include <QByteArray>

namespace TQServerInternal {

bool isPostgresqlUrl(const QString &url);
std::optional<StoreAddress> parsePostgresqlUrl(const QString &url, QString &error);

// All of an address as libpq takes it.
QByteArray conninfo(const StoreAddress &address);

}  // namespace TQServerInternal

#endif
