#include "kep/contain/KepOrderedSetIterator.h"

#include "kep/contain/KepROrderedSetIterator.h"

KEP_METHODS_OrderedSetIterator(KEP_DEFINE_BRIDGE)
    KEP_METHODS_OrderedSetIterator(KEP_DEFINE_HANDLE_METHOD)
