#include "fuzz.h"

// Many short executions: little is kept of what was freed, or memory would be touched anew by each.
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=4:thread_local_quarantine_size_kb=256:malloc_context_size=2:"
           "max_malloc_fill_size=64";
}
