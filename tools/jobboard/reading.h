#ifndef READING_H
#define READING_H

#include "tqcommserver.h"
#include "tqstore.h"

#include <QString>

/// Guards the queries for one reply. While it lives, all queries see the same state of the store.
class Reading
{
public:
    /// The connection is not owned and must outlive the reading.
    explicit Reading(TQCommServer &server);

    /// Why the result may be short; empty if no query failed.
    QString error() const;

private:
    const TQCommServer &m_server;
    const unsigned int m_failures;  // of the connection, at the start
    const TQReadTransaction m_moment;
};

#endif
