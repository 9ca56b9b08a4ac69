#include "jobstore.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr size_t SPARE_BEGINNINGS = 1000;

Label labelOf(quint64 identity) { return { quint32(identity >> 32), quint32(identity) }; }

}  // namespace

bool JobStore::Job::operator==(const Job &other) const
{
    const auto values = [](const Job &job) {
        return std::tuple(number(job.key), number(job.book), job.name.identity(),
            job.output.identity(), job.publication.identity(), job.colours.identity(),
            job.created.identity(), job.state, job.copies, job.priority);
    };
    return values(*this) == values(other);
}

JobStore::Job JobStore::pack(const JobRow &row)
{
    return { row.key, row.book, m_texts.add(row.name), m_texts.add(row.output),
        m_texts.add(row.publication), m_texts.add(row.colours), m_texts.add(row.created), row.state,
        row.copies, row.priority };
}

void JobStore::pack(const Sources &sources, SourceNames &names)
{
    for (const Source &source : sources) {
        const Label name = m_texts.add(source.name);
        if (source.kind == Source::Book) {
            names.titles.insert(number(source.key), name);
        } else {
            names.outputs.emplace_back(name, source.key);
        }
    }
}

void JobStore::add(const JobRows &rows)
{
    for (const JobRow &row : rows) {
        add(pack(row));
    }
}

void JobStore::add(const Job &job)
{
    if (m_free.empty()) {
        m_jobs.push_back(job);
    } else {
        m_jobs[m_free.back()] = job;
        m_free.pop_back();
    }
    count(job, 1);
}

void JobStore::replace(size_t place, const Job &job)
{
    count(m_jobs[place], -1);
    m_jobs[place] = job;
    count(job, 1);
}

void JobStore::remove(size_t place)
{
    count(m_jobs[place], -1);
    m_jobs[place] = {};
    m_free.push_back(place);
}

void JobStore::count(const Job &job, int change)
{
    const auto add = [change](QHash<quint64, int> &counts, quint64 key) {
        if ((counts[key] += change) == 0) {
            counts.remove(key);
        }
    };
    add(m_ofOutput, job.output.identity());
    if (!job.publication.isEmpty()) {
        add(m_ofPublication, job.publication.identity());
    }
    if (TQKEY_CC::isValid(job.book)) {
        add(m_ofBook, number(job.book));
    }
}

bool JobStore::setSources(SourceNames sources)
{
    const bool isSame = sources.outputs == m_sources.outputs && sources.titles == m_sources.titles;
    m_sources = std::move(sources);
    return !isSame;
}

template<typename Change>
void JobStore::changeLabels(Change change)
{
    for (Job &job : m_jobs) {
        for (Label Job::*label :
            { &Job::name, &Job::output, &Job::publication, &Job::colours, &Job::created }) {
            change(job.*label);
        }
    }
    for (auto &output : m_sources.outputs) {
        change(output.first);
    }
    for (Label &title : m_sources.titles) {
        change(title);
    }
}

void JobStore::forgetTexts()
{
    if (m_texts.beginnings() < m_beginnings * 2 + SPARE_BEGINNINGS) {
        return;
    }
    std::vector<bool> isKept(m_texts.beginnings());
    changeLabels([&isKept](const Label &label) { isKept[label.beginning] = true; });
    const std::vector<quint32> numbers = m_texts.keep(isKept);
    changeLabels([&numbers](Label &label) { label.beginning = numbers[label.beginning]; });
    m_beginnings = m_texts.beginnings();
    for (QHash<quint64, int> *counts : { &m_ofOutput, &m_ofPublication, &m_ofBook }) {
        counts->clear();
    }
    for (size_t place = 0; place < places(); ++place) {
        if (isUsed(place)) {
            count(m_jobs[place], 1);
        }
    }
}

std::vector<JobStore::Entry> JobStore::outputs() const
{
    std::vector<Entry> entries;
    for (const auto &[name, key] : m_sources.outputs) {
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
    for (auto i = m_sources.titles.cbegin(); i != m_sources.titles.cend(); ++i) {
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
