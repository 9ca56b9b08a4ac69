#ifndef STOREADDRESS_P_H
#define STOREADDRESS_P_H

#include "dialect_p.h"

#include <QString>

#include <chrono>
#include <optional>

namespace TQServerInternal {

// Where a store is, and how long it may take to answer. What a URL leaves out has its default here.
struct StoreAddress
{
    enum class Place { Memory, File, Server };

    // None when the URL is not of a known form; error says why, without any password.
    static std::optional<StoreAddress> parse(const char *url, QString &error);

    bool isMemory() const { return place == Place::Memory; }
    bool isFile() const { return place == Place::File; }

    const Dialect *dialect = nullptr;
    Place place = Place::Memory;
    QString label;  // what messages call it
    QString options;  // as QtSql takes connection options

    QString path;  // of a file; absolute

    // Of a database on a server. An empty text leaves the choice to the database client.
    QString host;
    QString user;
    QString database;
    std::chrono::milliseconds responseTimeout { 0 };  // silence of the server; 0 for any time
};

}  // namespace TQServerInternal

#endif
