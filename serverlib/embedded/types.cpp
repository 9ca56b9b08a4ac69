// Keys, and the memory that the library hands out.

#include "tqtypes.h"

#include <cstdlib>

TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }

bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key != 0 && key.hkey != 0; }

void TQ_free(void *buffer) { std::free(buffer); }
