// POSIX implementation of the thread layer.
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "kep/multi/_KepThread.h"

namespace {

// Layout of a mutex semaphore block: an 8-byte signature, then the mutex.
struct MutexSemaphore {
  char signature[8];
  pthread_mutex_t mutex;
};

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
