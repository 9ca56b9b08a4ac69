#ifndef SOCKETCOPY_P_H
#define SOCKETCOPY_P_H

#include "descriptor_p.h"

namespace TQServerInternal {

// A connection's socket under a second descriptor. When the database client closes its own one,
// that number may be given to another connection; the second descriptor still means this socket.
class SocketCopy
{
public:
    // Throws std::system_error when no descriptor is left.
    explicit SocketCopy(int socket);

    void shutDown() const;

private:
    const Descriptor m_socket;
};

}  // namespace TQServerInternal

#endif
