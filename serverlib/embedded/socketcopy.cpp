// A second descriptor for the socket of a connection, by which another thread can shut it down.

#include "socketcopy_p.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>

namespace TQServerInternal {

SocketCopy::SocketCopy(int socket) : m_socket(::fcntl(socket, F_DUPFD_CLOEXEC, 0))
{
    if (m_socket.number() < 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

void SocketCopy::shutDown() const { ::shutdown(m_socket.number(), SHUT_RDWR); }

}  // namespace TQServerInternal
