// The portable thread layer: thread identity, thread control blocks, mutex
// semaphores and System V counting semaphores. The POSIX implementation lives in
// _KepThreadUnix.cpp; this header includes no system header.
//
// Every function answers a 32-bit code, 0 for success (0x81xx memory handles,
// 0x86xx semaphores, 0x87xx threads).
#ifndef KEP_MULTI_KEPTHREAD_H
#define KEP_MULTI_KEPTHREAD_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepDefs.h"

// Codes of the semaphore layer.
constexpr uint32_t KEP_SEM_ALLOC_FAILED = 0x8601;  // could not allocate or initialise
constexpr uint32_t KEP_SEM_COUNT_EXISTS = 0x8602;  // counting set with that key exists
constexpr uint32_t KEP_SEM_BAD_HANDLE = 0x8604;    // null handle or missing signature
constexpr uint32_t KEP_SEM_LOCK_FAILED = 0x8605;   // the mutex could not be locked
constexpr uint32_t KEP_SEM_COUNT_CREATE = 0x8606;  // counting set not created
constexpr uint32_t KEP_SEM_COUNT_OPEN = 0x8607;    // counting set not opened

// Codes of the thread layer. A null argument, or a control-block handle that
// does not lock (never allocated, or already destroyed), answers 0x8101, the
// memory handles' KEP_MM_BAD_HANDLE.
constexpr uint32_t KEP_THRD_CREATE_FAILED = 0x8700;  // pthread_create failed
constexpr uint32_t KEP_THRD_BAD_SIGNATURE = 0x8701;  // the block is not a control block

// Create flags of _KepThrdCreate.
constexpr unsigned long KEP_THRD_FLAG_OR_STATUS = 4;     // status updates are OR-ed in
constexpr unsigned long KEP_THRD_FLAG_SELF_RELEASE = 8;  // the thread frees its own block
constexpr unsigned long KEP_THRD_FLAG_NO_MUTEX = 16;     // command word without a mutex

// Status bits.
constexpr unsigned long KEP_THRD_STATUS_RUNNING = 1;
constexpr unsigned long KEP_THRD_STATUS_ENDED = 8;
constexpr unsigned long KEP_THRD_STATUS_CREATED = 16;

// Command bits.
constexpr unsigned long KEP_THRD_COMMAND_INITIAL = 1;
constexpr unsigned long KEP_THRD_COMMAND_STOP = 4;          // sent by another thread
constexpr unsigned long KEP_THRD_COMMAND_DESTROY_SELF = 8;  // sent by the thread to itself

// Longest thread name kept in a control block, without its terminating zero.
constexpr int KEP_THRD_NAME_MAX = 23;

struct _KEP_TCB;

// The thread body: (control-block handle, argument1, argument2, argument3).
using _KepThrdProcedure = void (*)(void*, void*, void*, unsigned long);
// Called first by a new thread with its control block; its result is not used.
using _KepThrdStartHook = int (*)(_KEP_TCB*);

// A thread control block. Callers hold its memory handle (a `void*` from the
// memory manager's locked-handle allocation) and pass that handle to every
// _KepThrd function; the functions lock the handle for each access, so a handle
// whose block was destroyed is refused (0x8101) instead of reaching freed memory.
//
// The words that other threads read are atomic. `command` and `createFlags` are
// also guarded by the block's mutex (unless create flag 16); `status`, `name` and
// `threadType` are single words written without it.
struct _KEP_TCB {
  char signature[8];  // "bctn" and four zero bytes
  char name[KEP_THRD_NAME_MAX + 1];
  void* handle;  // the block's own memory handle
  void* mutex;   // mutex semaphore; null under create flag 16
  std::atomic<uint64_t> command;
  std::atomic<uint64_t> status;
  std::atomic<uint64_t> createFlags;
  _KepThrdStartHook startHook;
  _KepThrdProcedure procedure;
  std::atomic<uint64_t> userWord;  // written after the thread was started
  void* argument1;
  void* argument2;
  uint64_t argument3;
  std::atomic<uint64_t> threadType;
  std::atomic<unsigned long> pthread;  // the POSIX thread id
};

// The calling thread's POSIX id (pthread_self()), as a full machine word.
KEP_API unsigned long _KepThrdId();

// The calling process's id.
KEP_API int _KepProcessId();

// Sleeps the calling thread for `ms` milliseconds.
KEP_API void _KepThrdDelay(unsigned long ms);

// --- Thread control blocks -----------------------------------------------------

// Allocates a control block (command 1, status 16, the given flags), makes its
// mutex unless flag 16 is set, keeps the first 23 bytes of `name` (null for no
// name) and starts a detached thread on _MavThrdCreate. The block's handle is
// stored in `*handle` before the thread starts; `userWord` is stored after it
// started, so the thread must not rely on it.
//
// Flag 4: status updates are OR-ed in. Flag 8: the thread destroys its own block
// when `procedure` returns (the handle is dead from then on). Without flag 8 the
// block lives until _KepThrdDestroy.
//
// Answers 0x8101 for a null `handle` or `procedure`, or when the block cannot be
// allocated; 0x8601 when the mutex cannot be made; 0x8700 when the thread cannot
// be started. On failure nothing is left allocated and `*handle` is null.
KEP_API uint32_t _KepThrdCreate(void** handle, unsigned long flags, unsigned char* name,
                                _KepThrdProcedure procedure, _KepThrdStartHook startHook,
                                unsigned long userWord, void* argument1, void* argument2,
                                unsigned long argument3);
// The POSIX start routine of every thread of the layer; its argument is the
// block's handle. Calls the start hook (with the block, which must not be
// destroyed or restarted from inside the hook), then the procedure, then marks
// the end: flag 8 destroys the block, flag 4 ORs status 8 in, otherwise the
// status becomes 8.
KEP_API void* _MavThrdCreate(void* handle);

// The block's POSIX thread id; 0 when the handle does not lock.
KEP_API unsigned long _KepThrdGetId(void* handle);
// Reads `status`.
KEP_API uint32_t _KepThrdGetStatus(void* handle, unsigned long* status);
// Sets `status`, or ORs `status` in under create flag 4.
KEP_API uint32_t _KepThrdSetStatus(void* handle, unsigned long status);
// Under the mutex: answers the accumulated command bits and resets them to 0.
KEP_API uint32_t _KepThrdGetCommand(void* handle, unsigned long* command);
// Under the mutex: ORs `command` into the command bits.
KEP_API uint32_t _KepThrdSetCommand(void* handle, unsigned long command);
// Under the mutex: reads the create flags.
KEP_API uint32_t _KepThrdGetCreateFlags(void* handle, unsigned long* flags);
// Copies the name (at most 23 bytes and a zero) into `name`, which must hold 24
// bytes; `name` is set to the empty string first.
KEP_API uint32_t _KepThrdGetName(void* handle, unsigned char* name);
// Writes / reads the caller-defined thread type word.
KEP_API uint32_t _KepThrdSetThreadType(void* handle, unsigned long type);
KEP_API uint32_t _KepThrdGetThreadType(void* handle, unsigned long* type);
// Clears `*handle` first, then destroys the block's mutex, zeroes the block and
// frees it. The thread itself is not stopped: its later calls on the handle are
// refused. Waits for calls in progress on any block to finish; must not be called
// from a start hook.
KEP_API uint32_t _KepThrdDestroy(void** handle);
// Copies the block, destroys it and starts a new thread with the copied flags,
// name, procedure, start hook, user word and arguments; the new handle replaces
// `*handle`. The old thread is not stopped. The arguments are passed again as
// they were, so a procedure that frees its arguments must not be restarted.
KEP_API uint32_t _KepThrdRestart(void** handle);

// --- Mutex semaphores ------------------------------------------------------------
// A handle is a heap block holding the signature "mesw" and a default
// (non-recursive) POSIX mutex.

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

// --- Counting semaphores -----------------------------------------------------------
// A System V semaphore set of one semaphore, shared between processes and named
// by a numeric key. Waits and signals use SEM_UNDO, so a process that ends holding
// one gives it back. A set lives until _KepDestroyCount, beyond the process.

// Creates a new set for `key` with the value `initial`. KEP_SEM_COUNT_EXISTS when
// a set with that key is already there; KEP_SEM_COUNT_CREATE when it cannot be
// created or given its value (it is then removed again); KEP_SEM_BAD_HANDLE for
// a null `id`.
KEP_API uint32_t _KepCreateCount(unsigned long key, unsigned long initial, int* id);
// Opens the existing set for `key`. KEP_SEM_COUNT_OPEN when there is none.
KEP_API uint32_t _KepOpenCount(unsigned long key, int* id);
// Takes one from the count, waiting while it is 0; the timeout is accepted and
// ignored. KEP_SEM_BAD_HANDLE when the operation fails (for example a removed set).
KEP_API uint32_t _KepWaitCount(int* id, unsigned long timeout);
// Adds one to the count. KEP_SEM_BAD_HANDLE when the operation fails.
KEP_API uint32_t _KepSignalCount(int* id);
// Removes the set. KEP_SEM_BAD_HANDLE when it cannot be removed.
KEP_API uint32_t _KepDestroyCount(int* id);

// The process-wide mutex semaphore that serialises lazy creations of process-wide
// state: the shared-data record and the lock of each object. Created when the
// library is loaded (kep_init) and destroyed when it is unloaded; null outside
// that time.
extern "C" KEP_API void* KepProcessSemaphore;

#endif  // KEP_MULTI_KEPTHREAD_H
