#include "watchdog_p.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace {

// The thread looks several times within the limit.
constexpr int LOOKS = 8;

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
    : m_limit(limit), m_bite(std::move(bite))
{
    if (m_limit.count() > 0) {
        const SignalsBlocked blocked;  // a new thread has them as its maker
        m_thread = std::thread(&Watchdog::watch, this);
    }
}

Watchdog::~Watchdog()
{
    if (m_thread.joinable()) {
        {
            const std::lock_guard lock(m_mutex);
            m_isStopped = true;
        }
        m_stopped.notify_one();
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
    const auto step = std::max(m_limit / LOOKS, std::chrono::milliseconds(1));
    std::unique_lock lock(m_mutex);
    while (!m_stopped.wait_for(lock, step, [this] { return m_isStopped; })) {
        const auto since = m_waitingSince.load();
        if (since != 0 && now() - since > m_limit.count()) {
            m_hasBitten = true;
            m_bite();
        }
    }
}
