#include "kep/base/KepThread.h"

#include "kep/base/KepRThread.h"

KEP_METHODS_Thread(KEP_DEFINE_BRIDGE) KEP_METHODS_Thread(KEP_DEFINE_HANDLE_METHOD)
