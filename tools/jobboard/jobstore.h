#ifndef JOBSTORE_H
#define JOBSTORE_H

#include "rows.h"
#include "texts.h"

#include <QHash>

#include <deque>
#include <vector>

/// What was read of the store: jobs, in about 70 bytes each, and what they are listed for. A job
/// keeps its place until it is removed.
class JobStore
{
public:
    struct Job
    {
        TQKEY_ELEMENT key;  ///< the null key in a place that no job has
        TQKEY_ELEMENT book;
        Label name;
        Label output;
        Label publication;
        Label colours;
        Label created;
        int state;
        int copies;
        int priority;

        bool operator==(const Job &other) const;
    };
    /// A source, and the number of its jobs.
    struct Entry
    {
        Source source;
        int count;
    };
    /// The sources that jobs are listed for, apart from publications.
    struct SourceNames
    {
        std::vector<std::pair<Label, TQKEY_ELEMENT>> outputs = {};
        QHash<quint64, Label> titles = {};  ///< of books, by key
    };

    void add(const JobRows &rows);
    void add(const Sources &sources) { pack(sources, m_sources); }

    void add(const Job &job);
    void replace(size_t place, const Job &job);
    void remove(size_t place);
    /// False if the sources are those that it has.
    bool setSources(SourceNames sources);

    /// Forgets texts that are not needed any more, if they are many.
    void forgetTexts();

    /// Adds the texts of a row or of sources, and no more.
    Job pack(const JobRow &row);
    void pack(const Sources &sources, SourceNames &names);

    size_t size() const { return m_jobs.size() - m_free.size(); }
    /// How many places there are; some may have no job.
    size_t places() const { return m_jobs.size(); }
    bool isUsed(size_t place) const { return TQKEY_CC::isValid(m_jobs[place].key); }
    const Job &job(size_t place) const { return m_jobs[place]; }
    Texts &texts() { return m_texts; }
    const Texts &texts() const { return m_texts; }
    /// The title of a job's book; empty without one, and until the book was read.
    Label bookTitle(const Job &job) const { return m_sources.titles.value(number(job.book)); }

    /// Outputs, publications or books, in the order of their names. The texts must be ranked.
    std::vector<Entry> entries(Source::Kind kind) const;

private:
    std::vector<Entry> outputs() const;
    std::vector<Entry> publications() const;
    std::vector<Entry> books() const;
    void count(const Job &job, int change);
    template<typename Change>
    void changeLabels(Change change);

    Texts m_texts;
    size_t m_beginnings = 0;  // of the texts, when some were last forgotten
    std::deque<Job> m_jobs;  // which is never copied to grow
    std::vector<size_t> m_free;  // places without a job
    SourceNames m_sources;
    QHash<quint64, int> m_ofOutput;  // number of jobs, by the label's identity
    QHash<quint64, int> m_ofPublication;
    QHash<quint64, int> m_ofBook;  // by key
};

#endif
