#include "kep/base/KepGlobals.h"

std::atomic<unsigned long> gKepLogOptions{0};
std::atomic<unsigned long> gKepDebuggerOptions{0};
std::atomic<unsigned long> gDiagKep{0};
std::atomic<unsigned long> gDiagKepAlloc{0};
std::atomic<unsigned long> gDiagCPPAlloc{0};
std::atomic<unsigned long> _gKepDiagQBAlloc{0};
std::atomic<unsigned long> gKepTotalMallocSize{0};
std::atomic<unsigned long> gKepTotalFreeSize{0};
std::atomic<unsigned long> gKepMallocCount{0};
std::atomic<unsigned long> gKepFreeCount{0};
