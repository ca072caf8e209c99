// Process-wide option words and statistics counters, set from the start-up options
// file by the first Kep::init and read by the logger, the debugger, the object
// model and the memory manager.
#ifndef KEP_BASE_KEPGLOBALS_H
#define KEP_BASE_KEPGLOBALS_H

#include <atomic>

#include "kep/base/KepDefs.h"

// Logger output bits: 1 GUI, 2 none, 4 console (standard error), 16 event,
// 32 debugger, 128 NoBlock.
KEP_API extern std::atomic<unsigned long> gKepLogOptions;
// Debugger bits: bit 0 reports tag names and class registrations.
KEP_API extern std::atomic<unsigned long> gKepDebuggerOptions;
// Object-model diagnostics: bit 0 counts live bodies and handles per class.
KEP_API extern std::atomic<unsigned long> gDiagKep;
// Allocator diagnostics of the library's allocator, the C++ allocator and the
// queue-block allocator: 1 Count, 2 Sizes, 8 Stack, 16 Shift, 0x100 Check.
KEP_API extern std::atomic<unsigned long> gDiagKepAlloc;
KEP_API extern std::atomic<unsigned long> gDiagCPPAlloc;
KEP_API extern std::atomic<unsigned long> _gKepDiagQBAlloc;

// Allocation statistics of KepMalloc/KepFree since the options were read.
KEP_API extern std::atomic<unsigned long> gKepTotalMallocSize;
KEP_API extern std::atomic<unsigned long> gKepTotalFreeSize;
KEP_API extern std::atomic<unsigned long> gKepMallocCount;
KEP_API extern std::atomic<unsigned long> gKepFreeCount;

#endif  // KEP_BASE_KEPGLOBALS_H
