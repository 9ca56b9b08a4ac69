// The thread of a watchdog sleeps on a descriptor, so that it can be stopped at once, and looks at
// the time several times within its limit.

#include "watchdog_p.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>

namespace TQServerInternal {

namespace {

constexpr int LOOKS = 8;  // within the limit
constexpr int MAX_STEP = 10000;  // ms between two looks

// While it lives, signals of the process are handled by other threads; threads that are started
// meanwhile handle none either.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t m_before;
};

}  // namespace

Watchdog::Watchdog(std::function<void()> bite, std::chrono::milliseconds limit)
    : m_limit(limit), m_bite(std::move(bite)), m_stop(::eventfd(0, EFD_CLOEXEC))
{
    if (m_stop.number() < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    if (m_limit.count() > 0) {
        const SignalsBlocked blocked;
        m_thread = std::thread(&Watchdog::watch, this);
    }
}

Watchdog::~Watchdog()
{
    if (m_thread.joinable()) {
        ::eventfd_write(m_stop.number(), 1);
        m_thread.join();
    }
}

std::chrono::milliseconds::rep Watchdog::now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

void Watchdog::watch()
{
    const auto step = std::max<std::chrono::milliseconds::rep>(m_limit.count() / LOOKS, 1);
    const int timeout = int(std::min<std::chrono::milliseconds::rep>(step, MAX_STEP));
    pollfd stop = { m_stop.number(), POLLIN, 0 };
    int ready = 0;
    while (ready == 0 || (ready < 0 && errno == EINTR)) {
        const auto since = m_waitingSince.load();
        if (since != 0 && now() - since > m_limit.count()) {
            m_hasBitten = true;
            m_bite();
        }
        ready = ::poll(&stop, 1, timeout);
    }
}

QString noAnswer(std::chrono::milliseconds limit)
{
    return QStringLiteral("no answer from the server for %1 s").arg(double(limit.count()) / 1000);
}

}  // namespace TQServerInternal
