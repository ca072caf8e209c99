#include "kep/base/KepTagManager.h"

#include "kep/base/KepRTagManager.h"

KEP_METHODS_TagManager(KEP_DEFINE_BRIDGE);
KEP_METHODS_TagManager(KEP_DEFINE_HANDLE_METHOD);
