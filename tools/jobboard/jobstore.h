#ifndef JOBSTORE_H
#define JOBSTORE_H

#include "rows.h"
#include "texts.h"

#include <QHash>

#include <vector>

/// What was read of the store: jobs, in about 70 bytes each, and what they are listed for.
class JobStore
{
public:
    struct Job
    {
        TQKEY_ELEMENT key;
        TQKEY_ELEMENT book;
        Label name;
        Label output;
        Label publication;
        Label colours;
        Label created;
        int state;
        int copies;
        int priority;
    };
    /// A source, and the number of its jobs.
    struct Entry
    {
        Source source;
        int count;
    };

    void add(const JobRows &rows);
    void add(const Sources &sources);

    size_t size() const { return m_jobs.size(); }
    const Job &job(size_t index) const { return m_jobs[index]; }
    Texts &texts() { return m_texts; }
    const Texts &texts() const { return m_texts; }
    /// The title of a job's book; empty without one, and until the book was read.
    Label bookTitle(const Job &job) const { return m_titles.value(number(job.book)); }

    /// Outputs, publications or books, in the order of their names. The texts must be ranked.
    std::vector<Entry> entries(Source::Kind kind) const;

private:
    std::vector<Entry> outputs() const;
    std::vector<Entry> publications() const;
    std::vector<Entry> books() const;

    Texts m_texts;
    std::vector<Job> m_jobs;
    std::vector<std::pair<Label, TQKEY_ELEMENT>> m_outputs;
    QHash<quint64, Label> m_titles;  // of books, by key
    QHash<quint64, int> m_ofOutput;  // number of jobs, by the label's identity
    QHash<quint64, int> m_ofPublication;
    QHash<quint64, int> m_ofBook;  // by key
};

#endif
