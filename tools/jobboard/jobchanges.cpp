#include "jobchanges.h"

#include <algorithm>

JobChanges::JobChanges(JobStore &store) : m_store(store), m_isSeen(store.places())
{
    m_places.reserve(store.size());
    for (size_t place = 0; place < store.places(); ++place) {
        if (store.isUsed(place)) {
            m_places.push_back(quint32(place));
        }
    }
    std::sort(m_places.begin(), m_places.end(), [&store](quint32 a, quint32 b) {
        return number(store.job(a).key) < number(store.job(b).key);
    });
}

// Jobs mostly come in the order in which they came before.
size_t JobChanges::find(const TQKEY_ELEMENT &key)
{
    if (m_next < m_store.places() && m_store.job(m_next).key == key) {
        return m_next;
    }
    const auto found = std::lower_bound(m_places.begin(), m_places.end(), number(key),
        [this](quint32 place, quint64 wanted) { return number(m_store.job(place).key) < wanted; });
    const bool isKnown = found != m_places.end() && m_store.job(*found).key == key;
    return isKnown ? *found : ADDED;
}

void JobChanges::add(const JobRows &rows)
{
    for (const JobRow &row : rows) {
        const size_t place = find(row.key);
        const JobStore::Job job = m_store.pack(row);
        if (place == ADDED || !(job == m_store.job(place))) {
            m_changes.push_back({ place, job });
        }
        if (place != ADDED) {
            m_isSeen[place] = true;
            m_next = place + 1;
        }
    }
}

void JobChanges::add(const Sources &sources) { m_store.pack(sources, m_sources); }

bool JobChanges::apply()
{
    bool isChanged = m_store.setSources(std::move(m_sources)) || !m_changes.empty();
    while (!m_changes.empty()) {
        const Change &change = m_changes.front();
        if (change.place == ADDED) {
            m_store.add(change.job);
        } else {
            m_store.replace(change.place, change.job);
        }
        m_changes.pop_front();
    }
    isChanged = removeUnseen() || isChanged;
    m_store.forgetTexts();
    return isChanged;
}

// After the others were added: their places are not to be used again before they are shown nowhere.
bool JobChanges::removeUnseen()
{
    bool isChanged = false;
    for (const quint32 place : m_places) {
        if (!m_isSeen[place]) {
            m_store.remove(place);
            isChanged = true;
        }
    }
    return isChanged;
}
