#include "watchdog_p.h"

#include <algorithm>
#include <csignal>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// The thread looks several times within the limit.
constexpr int LOOKS = 8;
constexpr int MAX_STEP = 10000;  // ms

// Leaves the signals of the process to its other threads.
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
    if (m_limit.count() > 0) {
        const SignalsBlocked blocked;  // a new thread has them as its maker
        m_thread = std::thread(&Watchdog::watch, this);
    }
}

Watchdog::~Watchdog()
{
    if (m_thread.joinable()) {
        ::eventfd_write(m_stop, 1);
        m_thread.join();
    }
    ::close(m_stop);
}

std::chrono::milliseconds::rep Watchdog::now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

void Watchdog::watch()
{
    const auto step = std::max<std::chrono::milliseconds::rep>(m_limit.count() / LOOKS, 1);
    pollfd stop = { m_stop, POLLIN, 0 };
    while (::poll(&stop, 1, int(std::min<std::chrono::milliseconds::rep>(step, MAX_STEP))) == 0) {
        const auto since = m_waitingSince.load();
        if (since != 0 && now() - since > m_limit.count()) {
            m_hasBitten = true;
            m_bite();
        }
    }
}
