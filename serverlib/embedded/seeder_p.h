#ifndef SEEDER_P_H
#define SEEDER_P_H

#include "database_p.h"
#include "iccprofile_p.h"
#include "tqstore.h"

namespace TQServerInternal {

// The error of work that its progress function stopped.
constexpr const char *INTERRUPTED = "interrupted";

// Each creates the tables in an empty store and fills them, all in one transaction; false with the
// database's error when that fails.
bool seedSample(Database &database, const TQPROGRESS &progress);
bool seedGenerated(Database &database, size_t jobs, const TQPROGRESS &progress);

// Replaces the profile of that name, or adds it; its id, 0 on failure.
int storeProfile(Database &database, const IccProfile &profile);

}  // namespace TQServerInternal

#endif
