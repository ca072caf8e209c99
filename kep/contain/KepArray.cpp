#include "kep/contain/KepArray.h"

#include "kep/contain/KepRArray.h"

KEP_METHODS_Array(KEP_DEFINE_BRIDGE) KEP_METHODS_Array(KEP_DEFINE_HANDLE_METHOD)
