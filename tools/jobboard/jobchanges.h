#ifndef JOBCHANGES_H
#define JOBCHANGES_H

#include "jobstore.h"

#include <deque>

/// What a later load finds different from what a JobStore has. Only that is kept, so that old and
/// new jobs are never in memory at once; and the store changes at the end, or not at all.
class JobChanges
{
public:
    /// The store must outlive this, and may get no other jobs meanwhile.
    explicit JobChanges(JobStore &store);

    void add(const JobRows &rows);
    void add(const Sources &sources);

    /// Makes the store what was added; false if that is what it was.
    bool apply();

private:
    struct Change
    {
        size_t place;  // of the job; ADDED for a new one
        JobStore::Job job;
    };
    static constexpr size_t ADDED = size_t(-1);

    size_t find(const TQKEY_ELEMENT &key);
    bool removeUnseen();

    JobStore &m_store;
    std::vector<quint32> m_places;  // of all jobs, by key
    size_t m_next = 0;  // place of the job that probably comes next
    std::vector<bool> m_isSeen;  // by place
    std::deque<Change> m_changes;
    JobStore::SourceNames m_sources;
};

#endif
