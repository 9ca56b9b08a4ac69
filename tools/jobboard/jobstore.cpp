#include "jobstore.h"

#include <algorithm>

namespace {

Label labelOf(quint64 identity) { return { quint32(identity >> 32), quint32(identity) }; }

}  // namespace

void JobStore::add(const JobRows &rows)
{
    for (const JobRow &row : rows) {
        const Job job { row.key, row.book, m_texts.add(row.name), m_texts.add(row.output),
            m_texts.add(row.publication), m_texts.add(row.colours), m_texts.add(row.created),
            row.state, row.copies, row.priority };
        m_jobs.push_back(job);
        ++m_ofOutput[job.output.identity()];
        if (!job.publication.isEmpty()) {
            ++m_ofPublication[job.publication.identity()];
        }
        if (TQKEY_CC::isValid(job.book)) {
            ++m_ofBook[number(job.book)];
        }
    }
}

void JobStore::add(const Sources &sources)
{
    for (const Source &source : sources) {
        const Label name = m_texts.add(source.name);
        if (source.kind == Source::Book) {
            m_titles.insert(number(source.key), name);
        } else {
            m_outputs.emplace_back(name, source.key);
        }
    }
}

std::vector<JobStore::Entry> JobStore::outputs() const
{
    std::vector<Entry> entries;
    for (const auto &[name, key] : m_outputs) {
        entries.push_back(
            { { Source::Output, m_texts.text(name), key }, m_ofOutput.value(name.identity()) });
    }
    return entries;
}

std::vector<JobStore::Entry> JobStore::publications() const
{
    std::vector<Entry> entries;
    for (auto i = m_ofPublication.cbegin(); i != m_ofPublication.cend(); ++i) {
        const Label name = labelOf(i.key());
        entries.push_back({ { Source::Publication, m_texts.text(name), {} }, i.value() });
    }
    return entries;
}

std::vector<JobStore::Entry> JobStore::books() const
{
    std::vector<Entry> entries;
    for (auto i = m_titles.cbegin(); i != m_titles.cend(); ++i) {
        const TQKEY_ELEMENT key { quint32(i.key()), quint32(i.key() >> 32) };
        entries.push_back(
            { { Source::Book, m_texts.text(i.value()), key }, m_ofBook.value(i.key()) });
    }
    return entries;
}

std::vector<JobStore::Entry> JobStore::entries(Source::Kind kind) const
{
    std::vector<Entry> entries = kind == Source::Output ? outputs()
        : kind == Source::Book                          ? books()
                                                        : publications();
    const auto order = [this](const Entry &entry) {
        return std::pair(m_texts.order(m_texts.find(entry.source.name)), number(entry.source.key));
    };
    std::sort(entries.begin(), entries.end(),
        [&order](const Entry &a, const Entry &b) { return order(a) < order(b); });
    return entries;
}
