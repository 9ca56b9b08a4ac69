#ifndef WATCHDOG_P_H
#define WATCHDOG_P_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// Ends a network connection whose server stays silent, so that a database client that waits for
// an answer without a limit of its own gets an error instead. It has a thread, since the client
// blocks the caller's.
class Watchdog
{
public:
    // Watches a socket, of which it keeps a descriptor of its own: that number cannot come to mean
    // another connection meanwhile. A limit of zero watches nothing and starts no thread.
    Watchdog(int socket, std::chrono::milliseconds limit);
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    // While one of these lives, the server has to answer within the limit.
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

    // True when the connection was ended.
    bool hasBitten() const { return m_hasBitten; }
    std::chrono::milliseconds limit() const { return m_limit; }

private:
    static std::chrono::milliseconds::rep now();
    void watch();

    const std::chrono::milliseconds m_limit;
    int m_socket;  // owned
    std::atomic<std::chrono::milliseconds::rep> m_waitingSince { 0 };  // 0 for not waiting
    std::atomic<bool> m_hasBitten { false };
    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_isStopped = false;
    std::thread m_thread;
};

#endif
