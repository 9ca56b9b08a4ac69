#include "reading.h"

Reading::Reading(TQCommServer &server)
    : m_server(server), m_failures(server.failures()), m_moment(server)
{
}

QString Reading::error() const
{
    return m_server.failures() == m_failures ? QString() : QString::fromUtf8(m_server.errorText());
}
