#include "kep/base/KepTagNameSpace.h"

#include "kep/base/KepRTagNameSpace.h"

KEP_METHODS_TagNameSpace(KEP_DEFINE_BRIDGE);
KEP_METHODS_TagNameSpace(KEP_DEFINE_HANDLE_METHOD);
