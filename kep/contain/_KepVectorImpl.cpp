#include "kep/contain/_KepVectorImpl.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr size_t kFirstCapacity = 32;

}  // namespace

_KepVectorImpl::~_KepVectorImpl() {
  if (start != nullptr) std::free(start);
}

void** _KepVectorImpl::insert(void** pos, void* const& value) {
  if (pos < start || pos > finish) pos = finish;
  size_t index = static_cast<size_t>(pos - start);
  if (finish != endOfStorage && pos == finish) {
    *finish++ = value;
  } else {
    _M_insert_aux(pos, value);
  }
  return start + index;
}

void _KepVectorImpl::_M_insert_aux(void** pos, void* const& value) {
  if (pos < start || pos > finish) pos = finish;
  void* copy = value;  // `value` may live in the storage that moves
  if (finish != endOfStorage && pos == finish) {
    *finish++ = copy;
    return;
  }
  if (finish != endOfStorage) {
    // Room left: the last element moves up one, then the rest from the back.
    *finish = *(finish - 1);
    ++finish;
    std::memmove(pos + 1, pos, static_cast<size_t>(finish - 2 - pos) * sizeof(void*));
    *pos = copy;
    return;
  }
  size_t count = size();
  size_t capacity = count == 0 ? kFirstCapacity : 2 * count;
  auto** block = static_cast<void**>(std::malloc(capacity * sizeof(void*)));
  if (block == nullptr) throw std::bad_alloc();
  size_t before = static_cast<size_t>(pos - start);
  if (before != 0) std::memcpy(block, start, before * sizeof(void*));
  block[before] = copy;
  if (count != before) std::memcpy(block + before + 1, pos, (count - before) * sizeof(void*));
  if (start != nullptr) std::free(start);
  start = block;
  finish = block + count + 1;
  endOfStorage = block + capacity;
}

void** _KepVectorImpl::erase(void** pos) {
  if (pos < start || pos >= finish) return pos;
  std::memmove(pos, pos + 1, static_cast<size_t>(finish - pos - 1) * sizeof(void*));
  --finish;
  return pos;
}

void _KepVectorImpl::stable_sort(void**, void**, KepCompareFunction) {}
