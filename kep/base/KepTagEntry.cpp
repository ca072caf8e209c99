#include "kep/base/KepTagEntry.h"

#include "kep/base/KepRTagEntry.h"

KEP_METHODS_TagEntry(KEP_DEFINE_BRIDGE);
KEP_METHODS_TagEntry(KEP_DEFINE_HANDLE_METHOD);
