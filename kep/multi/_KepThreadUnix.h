// Private inline helpers of the POSIX thread layer, for the library's own hot
// paths. Not part of the public interface.
#ifndef KEP_MULTI_KEPTHREADUNIX_H
#define KEP_MULTI_KEPTHREADUNIX_H

#include <sys/single_threaded.h>

// True while the process has never started a second thread. The C library
// clears it before the first pthread_create() returns, so counts updated without
// atomic instructions up to then are visible to every later thread.
inline bool _KepThrdSingleThreaded() noexcept { return __libc_single_threaded != 0; }

#endif  // KEP_MULTI_KEPTHREADUNIX_H
