// Calls the watcher of a store each second, and its owner once for several changes.

#include "tqstorewatch.h"

#include "storeaddress_p.h"
#include "watcher_p.h"

#include <QTimer>

namespace TQServerInternal {

namespace {

constexpr int LOOK_EVERY = 1000;  // ms
constexpr int BURST = 200;  // ms from the first change to the call

}  // namespace

class StoreWatch
{
public:
    StoreWatch(const StoreAddress &address, std::function<void()> changed)
        : m_changed(std::move(changed))
    {
        m_burst.setSingleShot(true);
        m_burst.setInterval(BURST);
        QObject::connect(&m_burst, &QTimer::timeout, [this] {
            const auto call = m_changed;  // it may delete this
            call();
        });
        m_watcher = address.dialect->makeWatcher(address, [this] {
            if (!m_burst.isActive()) {
                m_burst.start();
            }
        });
        QObject::connect(&m_look, &QTimer::timeout, [this] { m_watcher->look(); });
        m_look.start(LOOK_EVERY);
    }

private:
    const std::function<void()> m_changed;
    QTimer m_burst;
    QTimer m_look;
    std::unique_ptr<Watcher> m_watcher;
};

}  // namespace TQServerInternal

using namespace TQServerInternal;

TQStoreWatch::TQStoreWatch(const char *url, std::function<void()> changed)
{
    QString reason;
    const auto address = StoreAddress::parse(url ? url : "", reason);
    if (address && !address->isMemory() && changed) {
        m_watch = std::make_unique<StoreWatch>(*address, std::move(changed));
    }
}

TQStoreWatch::~TQStoreWatch() = default;
