#ifndef READING_H
#define READING_H

#include "tqcommserver.h"
#include "tqstore.h"

#include <QString>

/// The reading of what one reply is made of: while it lives, all queries see the same moment of the
/// store.
class Reading
{
public:
    /// The connection is not owned and must outlive the reading.
    explicit Reading(TQCommServer &server);

    /// Why what was read since may be short; empty when no query failed.
    QString error() const;

private:
    const TQCommServer &m_server;
    const unsigned int m_failures;  // of the connection, before
    const TQReadTransaction m_moment;
};

#endif
