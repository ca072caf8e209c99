#include "kep/base/KepRunnable.h"

#include "kep/base/KepRRunnable.h"

KEP_METHODS_Runnable(KEP_DEFINE_BRIDGE) KEP_METHODS_Runnable(KEP_DEFINE_HANDLE_METHOD)
