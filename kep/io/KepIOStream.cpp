#include "kep/io/KepIOStream.h"

#include "kep/io/KepRIOStream.h"

KEP_METHODS_IOStream(KEP_DEFINE_BRIDGE) KEP_METHODS_IOStream(KEP_DEFINE_HANDLE_METHOD)
