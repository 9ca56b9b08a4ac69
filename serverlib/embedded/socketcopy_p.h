#ifndef SOCKETCOPY_P_H
#define SOCKETCOPY_P_H

#include "descriptor_p.h"

namespace TQServerInternal {

// A connection's socket, by a descriptor of its own: that number cannot come to mean another
// connection when the database client closes its own.
class SocketCopy
{
public:
    // Throws std::system_error where no descriptor is left.
    explicit SocketCopy(int socket);

    void shutDown() const;

private:
    const Descriptor m_socket;
};

}  // namespace TQServerInternal

#endif
