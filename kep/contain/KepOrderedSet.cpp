#include "kep/contain/KepOrderedSet.h"

#include "kep/contain/KepROrderedSet.h"

KEP_METHODS_OrderedSet(KEP_DEFINE_BRIDGE) KEP_METHODS_OrderedSet(KEP_DEFINE_HANDLE_METHOD)
