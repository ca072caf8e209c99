#include "kep/base/KepRRunnable.h"

#include "kep/base/KepFactory.h"

int KepRRunnable::run() { return 0; }

KEP_REGISTER_LIBRARY_CLASS(Runnable);
