#ifndef WATCHDOG_P_H
#define WATCHDOG_P_H

#include "descriptor_p.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace TQServerInternal {

// Ends the wait for a server that stays silent. The database client blocks the caller's thread and
// has no limit of its own, so the watchdog has a thread that looks at the time.
class Watchdog
{
public:
    // When a wait gets longer than the limit, bite is called to make it end, in the watchdog's
    // thread, and again until it has ended. With a limit of zero nothing is watched and no thread
    // is started. Throws std::system_error when no thread or descriptor is left.
    Watchdog(std::function<void()> bite, std::chrono::milliseconds limit);
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    // While one lives, the thread that made it waits for the server.
    class Wait
    {
    public:
        explicit Wait(Watchdog *watchdog) : m_watchdog(watchdog)
        {
            if (m_watchdog) {
                m_watchdog->m_waitingSince = now();
            }
        }
        ~Wait()
        {
            if (m_watchdog) {
                m_watchdog->m_waitingSince = 0;
            }
        }
        Wait(const Wait &) = delete;
        Wait &operator=(const Wait &) = delete;

    private:
        Watchdog *m_watchdog;
    };

    // True when a wait was too long.
    bool hasBitten() const { return m_hasBitten; }
    std::chrono::milliseconds limit() const { return m_limit; }

private:
    static std::chrono::milliseconds::rep now();
    void watch();

    const std::chrono::milliseconds m_limit;
    const std::function<void()> m_bite;
    std::atomic<std::chrono::milliseconds::rep> m_waitingSince { 0 };  // 0 for not waiting
    std::atomic<bool> m_hasBitten { false };
    const Descriptor m_stop;  // an eventfd: readable when the thread is to end
    std::thread m_thread;
};

// The error when a server has been silent for that long.
QString noAnswer(std::chrono::milliseconds limit);

}  // namespace TQServerInternal

#endif
