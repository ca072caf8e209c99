// The portable thread layer: thread identity and mutex semaphores. The POSIX
// implementation lives in _KepThreadUnix.cpp; this header includes no system
// header.
//
// Every function answers a 32-bit code, 0 for success (0x86xx semaphores).
#ifndef KEP_MULTI_KEPTHREAD_H
#define KEP_MULTI_KEPTHREAD_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// Codes of the semaphore layer.
constexpr uint32_t KEP_SEM_ALLOC_FAILED = 0x8601;  // could not allocate or initialise
constexpr uint32_t KEP_SEM_COUNT_EXISTS = 0x8602;  // counting set with that key exists
constexpr uint32_t KEP_SEM_BAD_HANDLE = 0x8604;    // null handle or missing signature
constexpr uint32_t KEP_SEM_LOCK_FAILED = 0x8605;   // the mutex could not be locked
constexpr uint32_t KEP_SEM_COUNT_CREATE = 0x8606;  // counting set not created
constexpr uint32_t KEP_SEM_COUNT_OPEN = 0x8607;    // counting set not opened

// The calling thread's POSIX id (pthread_self()), as a full machine word.
KEP_API unsigned long _KepThrdId();

// The calling process's id.
KEP_API int _KepProcessId();

// Mutex semaphores. A handle is a heap block holding the signature "mesw" and a
// default (non-recursive) POSIX mutex.

// Makes a mutex semaphore in `*sem`; KEP_SEM_ALLOC_FAILED when it cannot.
KEP_API uint32_t _KepMSemCreate(void** sem);
// Makes a mutex semaphore and, when `state` is 0, locks it at once.
KEP_API uint32_t _KepMSemCreateState(void** sem, unsigned short state);
// Locks the semaphore, waiting without limit: the timeout is accepted and
// ignored. KEP_SEM_BAD_HANDLE for a null handle or one without the signature.
KEP_API uint32_t _KepMSemWait(void** sem, unsigned long timeout);
// Unlocks the semaphore. KEP_SEM_BAD_HANDLE for a bad handle.
KEP_API uint32_t _KepMSemSignal(void** sem);
// Destroys the semaphore and nulls `*sem`. KEP_SEM_BAD_HANDLE for a bad handle.
KEP_API uint32_t _KepMSemDestroy(void** sem);

// The process-wide mutex semaphore that serialises the lazy creation of every
// recursive lock's mutex. Created when the library is loaded (kep_init) and
// destroyed when it is unloaded; null outside that time.
extern "C" KEP_API void* KepProcessSemaphore;

#endif  // KEP_MULTI_KEPTHREAD_H
