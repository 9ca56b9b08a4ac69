#include "bench.h"
#include "server.h"
#include "xmlaction.h"
#include "xmlcommserver.h"

#include <QList>

#include <memory>
#include <vector>

namespace {

// Jobs of several owners, in lists that can be linked again for each run.
class Jobs
{
public:
    Jobs(int owners, int each)
        : m_each(each), m_records(size_t(owners) * size_t(each)), m_name("job")
    {
        for (size_t i = 0; i < m_records.size(); ++i) {
            TQJOB &job = m_records[i];
            job.name = m_name.data();
            job.publicationName = m_name.data();
            job.publicationId = unsigned(i % (m_records.size() / 2));
            job.reserved1[0] = static_cast<unsigned char>(i % 200);
        }
        for (int i = 0; i < owners; ++i) {
            m_keys.push_back({ unsigned(i), 1 });
        }
        for (TQKEY_ELEMENT &key : m_keys) {
            m_keyList.append(&key);
        }
    }

    const QList<TQKEY_ELEMENT *> &keys() const { return m_keyList; }

    // From here on, the server hands out these lists. Earlier listings have joined the records or
    // taken them apart.
    void use()
    {
        for (size_t i = 0; i < m_records.size(); ++i) {
            const bool isLast = (i + 1) % size_t(m_each) == 0;
            m_records[i].list.next =
                isLast ? nullptr : reinterpret_cast<TQLISTRECORD *>(&m_records[i + 1]);
        }
        current = this;
        readyLists.jobsOf = [](int owner) {
            return &current->m_records[size_t(owner) * size_t(current->m_each)];
        };
    }

private:
    static Jobs *current;
    int m_each;
    std::vector<TQJOB> m_records;
    std::string m_name;
    std::vector<TQKEY_ELEMENT> m_keys;
    QList<TQKEY_ELEMENT *> m_keyList;
};

Jobs *Jobs::current = nullptr;

struct Bridge
{
    Jobs jobs;
    TQCommServer connection { "" };
    XMLCommServer server { &connection };

    Bridge(int owners, int each) : jobs(owners, each) {}
};

// With the lists linked before each run.
template<typename Run>
Measured listing(int owners, int each, Run run)
{
    auto bridge = std::make_shared<Bridge>(owners, each);
    return { [bridge, run] { run(*bridge); }, [bridge] { bridge->jobs.use(); } };
}

Figure::Make gather(int owners, int each)
{
    return [owners, each] {
        return listing(owners, each,
            [](Bridge &bridge) { keep(bridge.server.getTQJOBs(bridge.jobs.keys())); });
    };
}

// Joins the same lists by a plain walk to the end of each.
Measured walkLists()
{
    return listing(1000, 100, [](Bridge &bridge) {
        TQLISTRECORD *last = nullptr;
        for (const TQKEY_ELEMENT *key : bridge.jobs.keys()) {
            auto *head = reinterpret_cast<TQLISTRECORD *>(readyLists.jobsOf(int(key->key)));
            if (last) {
                last->next = head;
            }
            for (last = head; last->next;) {
                last = last->next;
            }
        }
        keep(last);
    });
}

// The items have no content, so this measures the handling of lists, and one empty item in the
// reply for each publication.
Figure::Make publications(int jobs)
{
    return [jobs] {
        return listing(1, jobs, [](Bridge &bridge) {
            XMLAction request;
            request.setTQKEYList(bridge.jobs.keys());
            bridge.server.sendPublications(1, &request);
        });
    };
}

const Register FIGURES = {
    { "gather", gather(1000, 100), walkLists },
    { "publications", publications(40000), publications(10000) },
    { "growth_gather", gather(1000, 100), gather(100, 100), 10 },
};

}  // namespace
