#include "fuzz.h"

// Executions are short and many. Keep little freed memory, or each one touches fresh pages.
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=4:thread_local_quarantine_size_kb=256:malloc_context_size=2:"
           "max_malloc_fill_size=64";
}
