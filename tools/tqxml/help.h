#ifndef HELP_H
#define HELP_H

#include "verbs.h"

#include <string>

/// What "tqxml help" prints.
std::string generalHelp();
/// What "tqxml help VERB" prints.
std::string helpOn(const Verb &verb);
/// The usage line of a verb, without a line feed.
std::string usageOf(const Verb &verb);

#endif
