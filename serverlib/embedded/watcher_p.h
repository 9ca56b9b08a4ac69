#ifndef WATCHER_P_H
#define WATCHER_P_H

#include <functional>

namespace TQServerInternal {

// Watches one store for changes that others make. Each database system has a class derived from it.
class Watcher
{
public:
    // Called for each change, and when changes may have been missed.
    using Notice = std::function<void()>;

    virtual ~Watcher() = default;
    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    // Called each second: looks for changes, or opens the connection again.
    virtual void look() = 0;

protected:
    explicit Watcher(Notice notice) : m_notice(std::move(notice)) {}

    void notice() const { m_notice(); }

private:
    const Notice m_notice;
};

}  // namespace TQServerInternal

#endif
