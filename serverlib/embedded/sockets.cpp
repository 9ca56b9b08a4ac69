#include "sockets_p.h"

#include <QDir>

#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

std::set<int> openDescriptors()
{
    const QDir folder(QStringLiteral("/proc/self/fd"));
    std::set<int> descriptors;
    for (const QString &name : folder.entryList(QDir::AllEntries | QDir::System)) {
        bool isNumber = false;
        const int descriptor = name.toInt(&isNumber);
        if (isNumber && ::fcntl(descriptor, F_GETFD) >= 0) {  // not the one of this look itself
            descriptors.insert(descriptor);
        }
    }
    return descriptors;
}

bool isConnectedTo(int descriptor, int port)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof(address);
    if (::getpeername(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        return false;
    }
    switch (address.ss_family) {
    case AF_INET:
        return ntohs(reinterpret_cast<const sockaddr_in &>(address).sin_port) == port;
    case AF_INET6:
        return ntohs(reinterpret_cast<const sockaddr_in6 &>(address).sin6_port) == port;
    case AF_UNIX: {
        const std::string path = reinterpret_cast<const sockaddr_un &>(address).sun_path;
        const std::string name = "/.s.PGSQL." + std::to_string(port);
        return path.size() >= name.size() && path.substr(path.size() - name.size()) == name;
    }
    default:
        return false;
    }
}

}  // namespace

SocketCopy::SocketCopy(int socket) : m_socket(::fcntl(socket, F_DUPFD_CLOEXEC, 0)) {}

SocketCopy::~SocketCopy() { ::close(m_socket); }

void SocketCopy::shutDown() const { ::shutdown(m_socket, SHUT_RDWR); }

ConnectionsSince::ConnectionsSince(int port) : m_before(openDescriptors()), m_port(port) {}

void ConnectionsSince::shutDown() const
{
    for (const int descriptor : openDescriptors()) {
        if (m_before.count(descriptor) == 0 && isConnectedTo(descriptor, m_port)) {
            ::shutdown(descriptor, SHUT_RDWR);
        }
    }
}
