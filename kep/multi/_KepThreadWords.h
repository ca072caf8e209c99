// Per-thread data words: nine words per thread, each with an optional destroy
// function that runs with the word when the thread ends. This is the storage of
// the shared-data store's thread scope.
#ifndef KEP_MULTI_KEPTHREADWORDS_H
#define KEP_MULTI_KEPTHREADWORDS_H

#include <cstdint>

#include "kep/base/KepDefs.h"

class KepSharedDataIterator;

// The calling thread's word `index` (0..8); 0 for other indexes.
KEP_API uint64_t _KepThreadWordGet(int index);
// Stores the calling thread's word `index` with its destroy function (null for
// none). Other indexes are ignored.
KEP_API void _KepThreadWordSet(int index, uint64_t value, void (*destroyFunc)(void*));
// The destroy function of the calling thread's word `index`, or null.
KEP_API void (*_KepThreadWordDestroyFunc(int index))(void*);
// A new iterator over word `index` of every live thread; free it with delete
// (KepRSharedData::freeIterator). Null for a bad index.
KEP_API KepSharedDataIterator* _KepThreadWordIterator(int index);

#endif  // KEP_MULTI_KEPTHREADWORDS_H
