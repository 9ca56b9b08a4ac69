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

    // Makes the server return these lists.
    void use()
    {
        current = this;
        readyLists.jobsOf = [](int owner) { return current->link(owner); };
    }

    qint64 walk() const
    {
        qint64 count = 0;
        for (const TQJOB &job : m_records) {
            count += job.publicationId;
        }
        return count;
    }

private:
    // Links the records of one owner again, after a listing took them apart.
    TQJOB *link(int owner)
    {
        TQJOB *const first = &m_records[size_t(owner) * size_t(m_each)];
        for (int i = 0; i < m_each; ++i) {
            first[i].list.next =
                i + 1 < m_each ? reinterpret_cast<TQLISTRECORD *>(&first[i + 1]) : nullptr;
        }
        return first;
    }

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

Figure::Make gather(int owners, int each)
{
    return [owners, each] {
        auto bridge = std::make_shared<Bridge>(owners, each);
        return [bridge] {
            bridge->jobs.use();
            keep(bridge->server.getTQJOBs(bridge->jobs.keys()));
        };
    };
}

// The floor: linking the lists, and one walk over all records.
std::function<void()> walkOnce()
{
    auto bridge = std::make_shared<Bridge>(1000, 100);
    return [bridge] {
        bridge->jobs.use();
        for (const TQKEY_ELEMENT *key : bridge->jobs.keys()) {
            keep(readyLists.jobsOf(int(key->key)));
        }
        keep(bridge->jobs.walk());
    };
}

// The items have no content, so this measures the handling of lists, and one empty item in the
// reply for each publication.
Figure::Make publications(int jobs)
{
    return [jobs] {
        auto bridge = std::make_shared<Bridge>(1, jobs);
        return [bridge] {
            bridge->jobs.use();
            XMLAction request;
            request.setTQKEYList(bridge->jobs.keys());
            bridge->server.sendPublications(1, &request);
        };
    };
}

const Register FIGURES = {
    { "gather", 3, 0, gather(1000, 100), walkOnce },
    { "publications", 5, 0, publications(40000), publications(10000) },
    { "growth_gather", 1.15, 0, gather(1000, 100), gather(100, 100), 10 },
};

}  // namespace
