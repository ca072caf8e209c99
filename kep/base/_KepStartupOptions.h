// The start-up options reader: the first Kep::init reads the options file and
// sets the option words of KepGlobals.h from it.
#ifndef KEP_BASE_KEPSTARTUPOPTIONS_H
#define KEP_BASE_KEPSTARTUPOPTIONS_H

#include "kep/base/KepDefs.h"

// Reads the start-up options file (_KepGetStartupConfigPath: KEP_STARTUP_OPTIONS,
// else kepstartup.xml in the current directory) with the simple XML parser. The
// file looks like
//
//   <Startup>
//     <MemoryManager>
//       <Allocator><KepNative/></Allocator>          (or KepPooled, or
//                 <External><ModuleName>m</ModuleName>
//                 <InitializeFunctionName>f</InitializeFunctionName></External>)
//       <KEPAlloc><Diagnostics><Count/><Sizes/><Check/></Diagnostics></KEPAlloc>
//       <KEP><Diagnostics><InstanceCount/></Diagnostics></KEP>
//     </MemoryManager>                               (also QBAlloc, CPPAlloc)
//     <Logger><KepConsole/><NoBlock/></Logger>
//     <Debugger><NameTable/></Debugger>
//     <General><Processes>4</Processes></General>
//   </Startup>
//
// (the root element's name is free). What it sets:
//  - gDiagKepAlloc, gDiagCPPAlloc, _gKepDiagQBAlloc from the Diagnostics of
//    KEPAlloc, CPPAlloc and QBAlloc: the names are collected and tested as
//    substrings, "Count" 1, "Sizes" 2, "Stack" 8, "Shift" 16, "Check" 0x100 (so
//    "InstanceCount" also counts as "Count"); 0 when the allocator has no
//    Diagnostics element. gDiagKep: bit 0 when KEP's Diagnostics name
//    "InstanceCount", else 0.
//  - gKepLogOptions from the Logger's child names: "KepGUI" 1, "KepConsole" 4,
//    "KepNone" 2, and 130 when none of these three is named; then "KepEvent"
//    16, "KepDebugger" 32, "NoBlock" 128 are added. Without Logger children the
//    value is `logDefault`, or 130 when `logDefault` is 0.
//  - gKepDebuggerOptions: 1 when the Debugger names "NameTable", else 0.
//  - `processes`: the decimal value of General/Processes, 0 when absent.
//  - the allocator kind and the external allocator's names
//    (_KepGetStartupAllocator).
// Text of an element given in several pieces keeps its last piece. A missing
// (or unreadable) file keeps gDiagKep, gDiagKepAlloc, gDiagCPPAlloc,
// _gKepDiagQBAlloc and gKepDebuggerOptions as they are and sets
// gKepLogOptions and `processes` as for a file without those elements. A file
// with an XML error keeps what was read before the error (the error is logged).
// In every case the statistics counters gKepTotalMallocSize, gKepTotalFreeSize,
// gKepMallocCount and gKepFreeCount are reset to 0 at the end.
//
// The first argument is not used. Not thread-safe: Kep::init calls it once.
KEP_API void _KepGetStartupOptions(int a, int logDefault, int& processes, char* configName);

// The allocator settings of the options file last read: the kind ("KepNative",
// "KepPooled", "External" or empty), and for "External" the module and its
// initialise function (empty when not given). No allocator other than the
// library's own is loaded from them yet.
struct _KepStartupAllocator {
  char kind[64];
  char moduleName[1024];
  char initializeFunctionName[1024];
};
KEP_API void _KepGetStartupAllocator(_KepStartupAllocator& out);

#endif  // KEP_BASE_KEPSTARTUPOPTIONS_H
