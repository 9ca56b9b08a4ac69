#ifndef SEEDER_P_H
#define SEEDER_P_H

#include "database_p.h"
#include "iccprofile_p.h"
#include "tqstore.h"

namespace TQServerInternal {

// The error when a progress function stopped the work.
constexpr const char *INTERRUPTED = "interrupted";

// Both create the tables in an empty store and fill them, in one transaction; false with the
// database's error when that fails.
bool seedSample(Database &database, const TQPROGRESS &progress);
bool seedGenerated(Database &database, size_t jobs, const TQPROGRESS &progress);

// Replaces the profile of that name, or adds it. Returns its id; 0 on failure.
int storeProfile(Database &database, const IccProfile &profile);

}  // namespace TQServerInternal

#endif
