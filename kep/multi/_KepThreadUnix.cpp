// POSIX implementation of the thread layer.
#include <errno.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "kep/memory/_KepMemoryTest.h"
#include "kep/multi/_KepThread.h"
#include "kep/multi/_KepThreadUnix.h"

static_assert(sizeof(pthread_t) == sizeof(unsigned long), "pthread_t is a machine word");

namespace {

using MutexSemaphore = _KepMutexSemaphore;

constexpr char kMutexSignature[8] = {'m', 'e', 's', 'w', 0, 0, 0, 0};

MutexSemaphore* checked(void** sem) {
  if (sem == nullptr || *sem == nullptr) return nullptr;
  auto* block = static_cast<MutexSemaphore*>(*sem);
  if (std::memcmp(block->signature, kMutexSignature, sizeof kMutexSignature) != 0) return nullptr;
  return block;
}

}  // namespace

void* KepProcessSemaphore = nullptr;

int _KepProcessId() { return static_cast<int>(getpid()); }

unsigned long _KepThrdId() { return static_cast<unsigned long>(pthread_self()); }

uint32_t _KepMSemCreate(void** sem) {
  if (sem == nullptr) return KEP_SEM_ALLOC_FAILED;
  *sem = nullptr;
  void* raw = std::malloc(sizeof(MutexSemaphore));
  if (raw == nullptr) return KEP_SEM_ALLOC_FAILED;
  auto* block = new (raw) MutexSemaphore;
  std::memcpy(block->signature, kMutexSignature, sizeof kMutexSignature);
  if (pthread_mutex_init(&block->mutex, nullptr) != 0) {
    std::free(raw);
    return KEP_SEM_ALLOC_FAILED;
  }
  *sem = block;
  return 0;
}

uint32_t _KepMSemCreateState(void** sem, unsigned short state) {
  uint32_t rc = _KepMSemCreate(sem);
  if (rc == 0 && state == 0) rc = _KepMSemWait(sem, static_cast<unsigned long>(-1));
  return rc;
}

uint32_t _KepMSemWait(void** sem, unsigned long /*timeout*/) {
  MutexSemaphore* block = checked(sem);
  if (block == nullptr) return KEP_SEM_BAD_HANDLE;
  return pthread_mutex_lock(&block->mutex) == 0 ? 0 : KEP_SEM_LOCK_FAILED;
}

uint32_t _KepMSemSignal(void** sem) {
  MutexSemaphore* block = checked(sem);
  if (block == nullptr) return KEP_SEM_BAD_HANDLE;
  pthread_mutex_unlock(&block->mutex);
  return 0;
}

uint32_t _KepMSemDestroy(void** sem) {
  MutexSemaphore* block = checked(sem);
  if (block == nullptr) return KEP_SEM_BAD_HANDLE;
  pthread_mutex_destroy(&block->mutex);
  std::memset(block->signature, 0, sizeof block->signature);
  std::free(block);
  *sem = nullptr;
  return 0;
}

static_assert(sizeof(std::atomic<uint32_t>) == sizeof(uint32_t), "a lock word is a futex word");

namespace {

long futex(std::atomic<uint32_t>* word, int op, uint32_t value) {
  return syscall(SYS_futex, reinterpret_cast<uint32_t*>(word), op | FUTEX_PRIVATE_FLAG, value,
                 nullptr, nullptr, 0);
}

}  // namespace

void _KepFutexWait(std::atomic<uint32_t>* word, uint32_t expected) noexcept {
  futex(word, FUTEX_WAIT, expected);
}

void _KepFutexWake(std::atomic<uint32_t>* word, int count) noexcept {
  futex(word, FUTEX_WAKE, static_cast<uint32_t>(count));
}

void _KepThrdDelay(unsigned long ms) {
  timespec left{static_cast<time_t>(ms / 1000), static_cast<long>((ms % 1000) * 1000000L)};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

// --- Thread control blocks -------------------------------------------------------

namespace {

constexpr char kTcbSignature[8] = {'b', 'c', 't', 'n', 0, 0, 0, 0};

// Every call on a block holds this lock for reading; _KepThrdDestroy holds it for
// writing, so no call is ever inside a block while it is torn down. Readers are
// preferred (the default), which lets a start hook call the layer again.
pthread_rwlock_t gTcbGuard = PTHREAD_RWLOCK_INITIALIZER;

// One call's access to a control block: the guard is held for reading and the
// block's handle locked; the block is refused when the handle does not lock, the
// block is too small, or it lacks the signature.
class PinnedTcb {
 public:
  explicit PinnedTcb(void* handle, bool exclusive = false) {
    if (exclusive) {
      pthread_rwlock_wrlock(&gTcbGuard);
    } else {
      pthread_rwlock_rdlock(&gTcbGuard);
    }
    if (handle == nullptr) {
      rc_ = KEP_MM_BAD_HANDLE;
      return;
    }
    void* block = nullptr;
    rc_ = _KepMMTestLock(handle, &block);
    if (rc_ != 0) return;
    handle_ = handle;
    unsigned long size = 0;
    if (_KepMMTestSize(handle, &size) != 0 || size < sizeof(_KEP_TCB) ||
        std::memcmp(block, kTcbSignature, sizeof kTcbSignature) != 0) {
      rc_ = KEP_THRD_BAD_SIGNATURE;
      return;
    }
    tcb_ = static_cast<_KEP_TCB*>(block);
  }
  ~PinnedTcb() {
    if (handle_ != nullptr) _KepMMTestUnlock(handle_);
    pthread_rwlock_unlock(&gTcbGuard);
  }
  PinnedTcb(PinnedTcb const&) = delete;
  PinnedTcb& operator=(PinnedTcb const&) = delete;

  uint32_t rc() const { return rc_; }
  _KEP_TCB* operator->() const { return tcb_; }
  _KEP_TCB* get() const { return tcb_; }
  // Hands the handle's lock over to the caller (used by destroy, which frees the
  // block together with that lock).
  void* release() {
    void* h = handle_;
    handle_ = nullptr;
    return h;
  }

 private:
  void* handle_ = nullptr;
  _KEP_TCB* tcb_ = nullptr;
  uint32_t rc_ = 0;
};

// Runs `op(block)` on the pinned block and answers its code, or answers why the
// block was refused.
template <class Op>
uint32_t onBlock(void* handle, Op op) {
  PinnedTcb pinned(handle);
  if (pinned.rc() != 0) return pinned.rc();
  return op(pinned.get());
}

// Runs `op` under the block's mutex, or unguarded under create flag 16.
template <class Op>
uint32_t underMutex(_KEP_TCB* tcb, Op op) {
  if (tcb->mutex == nullptr) {
    op();
    return 0;
  }
  uint32_t rc = _KepMSemWait(&tcb->mutex, static_cast<unsigned long>(-1));
  if (rc != 0) return rc;
  op();
  _KepMSemSignal(&tcb->mutex);
  return 0;
}

void copyName(char* out, char const* name) {
  std::memset(out, 0, KEP_THRD_NAME_MAX + 1);
  if (name != nullptr) std::strncpy(out, name, KEP_THRD_NAME_MAX);
}

// The fields a restart or a new thread takes from a block.
struct StartFields {
  unsigned long flags;
  char name[KEP_THRD_NAME_MAX + 1];
  _KepThrdProcedure procedure;
  _KepThrdStartHook startHook;
  unsigned long userWord;
  void* argument1;
  void* argument2;
  unsigned long argument3;
};

}  // namespace

uint32_t _KepThrdCreate(void** handle, unsigned long flags, unsigned char* name,
                        _KepThrdProcedure procedure, _KepThrdStartHook startHook,
                        unsigned long userWord, void* argument1, void* argument2,
                        unsigned long argument3) {
  if (handle == nullptr) return KEP_MM_BAD_HANDLE;
  *handle = nullptr;
  if (procedure == nullptr) return KEP_MM_BAD_HANDLE;
  void* h = nullptr;
  void* block = nullptr;
  uint32_t rc = _KepMMTestAllocLocked(sizeof(_KEP_TCB), &h, &block);
  if (rc != 0) return rc;
  auto* tcb = new (block) _KEP_TCB();
  std::memcpy(tcb->signature, kTcbSignature, sizeof kTcbSignature);
  copyName(tcb->name, reinterpret_cast<char const*>(name));
  tcb->handle = h;
  if ((flags & KEP_THRD_FLAG_NO_MUTEX) == 0) {
    rc = _KepMSemCreate(&tcb->mutex);
    if (rc != 0) {
      std::memset(block, 0, sizeof(_KEP_TCB));
      _KepMMTestFreeLocked(h);
      return rc;
    }
  }
  tcb->command.store(KEP_THRD_COMMAND_INITIAL, std::memory_order_relaxed);
  tcb->status.store(KEP_THRD_STATUS_CREATED, std::memory_order_relaxed);
  tcb->createFlags.store(flags, std::memory_order_relaxed);
  tcb->startHook = startHook;
  tcb->procedure = procedure;
  tcb->argument1 = argument1;
  tcb->argument2 = argument2;
  tcb->argument3 = argument3;
  _KepMMTestUnlock(h);
  *handle = h;

  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  pthread_t id;
  int err = pthread_create(&id, &attr, _MavThrdCreate, h);
  pthread_attr_destroy(&attr);
  if (err != 0) {
    _KepThrdDestroy(handle);
    return KEP_THRD_CREATE_FAILED;
  }
  // The thread may already have ended and, under flag 8, freed its block.
  PinnedTcb pinned(h);
  if (pinned.rc() == 0) {
    pinned->pthread.store(static_cast<unsigned long>(id), std::memory_order_release);
    pinned->userWord.store(userWord, std::memory_order_release);
  }
  return 0;
}

void* _MavThrdCreate(void* handle) {
  _KepThrdProcedure procedure;
  void* argument1;
  void* argument2;
  unsigned long argument3;
  unsigned long flags;
  {
    PinnedTcb pinned(handle);
    if (pinned.rc() != 0) return nullptr;
    pinned->pthread.store(static_cast<unsigned long>(pthread_self()), std::memory_order_release);
    procedure = pinned->procedure;
    argument1 = pinned->argument1;
    argument2 = pinned->argument2;
    argument3 = pinned->argument3;
    flags = pinned->createFlags.load(std::memory_order_acquire);
    if (pinned->startHook != nullptr) pinned->startHook(pinned.get());
  }
  procedure(handle, argument1, argument2, argument3);
  if (flags & KEP_THRD_FLAG_SELF_RELEASE) {
    _KepThrdDestroy(&handle);
  } else {
    PinnedTcb pinned(handle);
    if (pinned.rc() == 0) {
      if (flags & KEP_THRD_FLAG_OR_STATUS) {
        pinned->status.fetch_or(KEP_THRD_STATUS_ENDED, std::memory_order_acq_rel);
      } else {
        pinned->status.store(KEP_THRD_STATUS_ENDED, std::memory_order_release);
      }
    }
  }
  return nullptr;
}

unsigned long _KepThrdGetId(void* handle) {
  PinnedTcb pinned(handle);
  return pinned.rc() == 0 ? pinned->pthread.load(std::memory_order_acquire) : 0;
}

uint32_t _KepThrdGetStatus(void* handle, unsigned long* status) {
  if (status == nullptr) return KEP_MM_BAD_HANDLE;
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    *status = tcb->status.load(std::memory_order_acquire);
    return 0u;
  });
}

uint32_t _KepThrdSetStatus(void* handle, unsigned long status) {
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    if (tcb->createFlags.load(std::memory_order_acquire) & KEP_THRD_FLAG_OR_STATUS) {
      tcb->status.fetch_or(status, std::memory_order_acq_rel);
    } else {
      tcb->status.store(status, std::memory_order_release);
    }
    return 0u;
  });
}

uint32_t _KepThrdGetCommand(void* handle, unsigned long* command) {
  if (command == nullptr) return KEP_MM_BAD_HANDLE;
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    return underMutex(tcb, [&] { *command = tcb->command.exchange(0, std::memory_order_acq_rel); });
  });
}

uint32_t _KepThrdSetCommand(void* handle, unsigned long command) {
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    return underMutex(tcb, [&] { tcb->command.fetch_or(command, std::memory_order_acq_rel); });
  });
}

uint32_t _KepThrdGetCreateFlags(void* handle, unsigned long* flags) {
  if (flags == nullptr) return KEP_MM_BAD_HANDLE;
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    return underMutex(tcb, [&] { *flags = tcb->createFlags.load(std::memory_order_acquire); });
  });
}

uint32_t _KepThrdGetName(void* handle, unsigned char* name) {
  if (name == nullptr) return KEP_MM_BAD_HANDLE;
  name[0] = 0;
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    std::memcpy(name, tcb->name, KEP_THRD_NAME_MAX + 1);
    name[KEP_THRD_NAME_MAX] = 0;
    return 0u;
  });
}

uint32_t _KepThrdSetThreadType(void* handle, unsigned long type) {
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    tcb->threadType.store(type, std::memory_order_release);
    return 0u;
  });
}

uint32_t _KepThrdGetThreadType(void* handle, unsigned long* type) {
  if (type == nullptr) return KEP_MM_BAD_HANDLE;
  return onBlock(handle, [&](_KEP_TCB* tcb) {
    *type = tcb->threadType.load(std::memory_order_acquire);
    return 0u;
  });
}

uint32_t _KepThrdDestroy(void** handle) {
  if (handle == nullptr || *handle == nullptr) return KEP_MM_BAD_HANDLE;
  void* h = *handle;
  *handle = nullptr;
  PinnedTcb pinned(h, true);
  if (pinned.rc() != 0) return pinned.rc();
  _KEP_TCB* tcb = pinned.get();
  if (tcb->mutex != nullptr) _KepMSemDestroy(&tcb->mutex);
  tcb->~_KEP_TCB();
  std::memset(static_cast<void*>(tcb), 0, sizeof(_KEP_TCB));
  return _KepMMTestFreeLocked(pinned.release());
}

uint32_t _KepThrdRestart(void** handle) {
  if (handle == nullptr) return KEP_MM_BAD_HANDLE;
  StartFields f;
  {
    PinnedTcb pinned(*handle);
    if (pinned.rc() != 0) return pinned.rc();
    f.flags = pinned->createFlags.load(std::memory_order_acquire);
    std::memcpy(f.name, pinned->name, sizeof f.name);
    f.procedure = pinned->procedure;
    f.startHook = pinned->startHook;
    f.userWord = pinned->userWord.load(std::memory_order_acquire);
    f.argument1 = pinned->argument1;
    f.argument2 = pinned->argument2;
    f.argument3 = pinned->argument3;
  }
  uint32_t rc = _KepThrdDestroy(handle);
  if (rc != 0) return rc;
  return _KepThrdCreate(handle, f.flags, reinterpret_cast<unsigned char*>(f.name), f.procedure,
                        f.startHook, f.userWord, f.argument1, f.argument2, f.argument3);
}

// --- Counting semaphores -------------------------------------------------------------

namespace {

// The argument of semctl, which the caller defines.
union SemArgument {
  int val;
  semid_ds* buf;
  unsigned short* array;
};

uint32_t semaphoreStep(int* id, short delta) {
  if (id == nullptr) return KEP_SEM_BAD_HANDLE;
  sembuf op{0, delta, SEM_UNDO};
  while (semop(*id, &op, 1) != 0) {
    if (errno != EINTR) return KEP_SEM_BAD_HANDLE;
  }
  return 0;
}

}  // namespace

uint32_t _KepCreateCount(unsigned long key, unsigned long initial, int* id) {
  if (id == nullptr) return KEP_SEM_BAD_HANDLE;
  int set = semget(static_cast<key_t>(key), 1, IPC_CREAT | IPC_EXCL | 0666);
  if (set < 0) return errno == EEXIST ? KEP_SEM_COUNT_EXISTS : KEP_SEM_COUNT_CREATE;
  SemArgument value;
  value.val = static_cast<int>(initial);
  if (initial > 0x7fffffffUL || semctl(set, 0, SETVAL, value) != 0) {
    semctl(set, 0, IPC_RMID);
    return KEP_SEM_COUNT_CREATE;
  }
  *id = set;
  return 0;
}

uint32_t _KepOpenCount(unsigned long key, int* id) {
  if (id == nullptr) return KEP_SEM_BAD_HANDLE;
  int set = semget(static_cast<key_t>(key), 1, 0);
  if (set < 0) return KEP_SEM_COUNT_OPEN;
  *id = set;
  return 0;
}

uint32_t _KepWaitCount(int* id, unsigned long /*timeout*/) { return semaphoreStep(id, -1); }

uint32_t _KepSignalCount(int* id) { return semaphoreStep(id, 1); }

uint32_t _KepDestroyCount(int* id) {
  if (id == nullptr) return KEP_SEM_BAD_HANDLE;
  return semctl(*id, 0, IPC_RMID) == 0 ? 0 : KEP_SEM_BAD_HANDLE;
}
