#include "kep/base/_KepStartupOptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kep/base/KepGlobals.h"
#include "kep/base/KepStartupPath.h"
#include "kep/io/_KepIOBuffered.h"
#include "kep/xml/KepXMLSimpleParser.h"

namespace {

constexpr int kPathSize = 2048;
// The largest piece asked of the buffered file at once.
constexpr uint32_t kReadPiece = 32000;

// Reader states: where in the options document the parser is.
enum State {
  kTop = 1,            // inside the root element
  kMemoryManager = 2,  // MemoryManager
  kLogger = 3,         // Logger: child names are logger words
  kAllocator = 4,      // MemoryManager/Allocator
  kExternal = 5,       // Allocator/External
  kModuleName = 6,     // External/ModuleName: text
  kInitFunction = 7,   // External/InitializeFunctionName: text
  kDiagnostics = 8,    // <allocator>/Diagnostics: child names are words
  kAllocatorDiag = 9,  // MemoryManager/QBAlloc, CPPAlloc, KEPAlloc or KEP
  kDebugger = 10,      // Debugger: child names are debugger words
  kGeneral = 11,       // General
  kProcesses = 12,     // General/Processes: text
};

struct _StartupUserData {
  int state = kTop;
  _KEP_IO_BUFFERED file{};
  char logger[1024] = {};
  char debugger[1024] = {};
  char allocatorKind[64] = {};
  char moduleName[1024] = {};
  char initializeFunctionName[1024] = {};
  char processes[64] = {};
  char qbAlloc[1024] = {};
  char cppAlloc[1024] = {};
  char kepAlloc[1024] = {};
  char kep[1024] = {};
  char* selected = nullptr;  // the diagnostics buffer being filled (1024 bytes)
};

_KepStartupAllocator gAllocator{};

bool is(char const* name, char const* word) { return std::strcmp(name, word) == 0; }

bool has(char const* words, char const* word) { return std::strstr(words, word) != nullptr; }

// Appends `text` to the zero-terminated text in `buffer` (`size` bytes), cut to
// fit.
void append(char* buffer, size_t size, char const* text) {
  size_t used = strnlen(buffer, size - 1);
  std::snprintf(buffer + used, size - used, "%s", text);
}

template <size_t N>
void appendWord(char (&buffer)[N], char const* name) {
  append(buffer, N, name);
  append(buffer, N, "|");
}

template <size_t N>
void copyText(char (&buffer)[N], char const* text, size_t length) {
  if (length > N - 1) length = N - 1;
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
}

void onStart(void* user, char const* name, char const** /*attributes*/) {
  auto* d = static_cast<_StartupUserData*>(user);
  switch (d->state) {
    case kTop:
      if (is(name, "MemoryManager")) d->state = kMemoryManager;
      if (is(name, "Logger")) d->state = kLogger;
      if (is(name, "Debugger")) d->state = kDebugger;
      if (is(name, "General")) d->state = kGeneral;
      break;
    case kMemoryManager:
      if (is(name, "Allocator")) {
        d->state = kAllocator;
      } else if (is(name, "QBAlloc") || is(name, "CPPAlloc") || is(name, "KEPAlloc") ||
                 is(name, "KEP")) {
        d->selected = is(name, "QBAlloc")    ? d->qbAlloc
                      : is(name, "CPPAlloc") ? d->cppAlloc
                      : is(name, "KEPAlloc") ? d->kepAlloc
                                             : d->kep;
        d->state = kAllocatorDiag;
      } else {
        d->selected = nullptr;
      }
      break;
    case kLogger:
      appendWord(d->logger, name);
      break;
    case kAllocator:
      if (is(name, "KepNative") || is(name, "KepPooled") || is(name, "External")) {
        copyText(d->allocatorKind, name, std::strlen(name));
      }
      if (is(name, "External")) d->state = kExternal;
      break;
    case kExternal:
      if (is(name, "ModuleName")) d->state = kModuleName;
      if (is(name, "InitializeFunctionName")) d->state = kInitFunction;
      break;
    case kAllocatorDiag:
      if (is(name, "Diagnostics")) {
        if (d->selected != nullptr) append(d->selected, 1024, "(OptionsSpecified)");
        d->state = kDiagnostics;
      }
      break;
    case kDiagnostics:
      if (d->selected != nullptr) {
        append(d->selected, 1024, name);
        append(d->selected, 1024, "|");
      }
      break;
    case kDebugger:
      appendWord(d->debugger, name);
      break;
    case kGeneral:
      if (is(name, "Processes")) d->state = kProcesses;
      break;
    default:
      break;
  }
}

void onEnd(void* user, char const* name) {
  auto* d = static_cast<_StartupUserData*>(user);
  struct Return {
    int state;
    char const* name;
    int to;
  };
  static constexpr Return kReturns[] = {
      {kMemoryManager, "MemoryManager", kTop},
      {kLogger, "Logger", kTop},
      {kDebugger, "Debugger", kTop},
      {kGeneral, "General", kTop},
      {kAllocator, "Allocator", kMemoryManager},
      {kExternal, "External", kAllocator},
      {kModuleName, "ModuleName", kExternal},
      {kInitFunction, "InitializeFunctionName", kExternal},
      {kDiagnostics, "Diagnostics", kAllocatorDiag},
      {kAllocatorDiag, "QBAlloc", kMemoryManager},
      {kAllocatorDiag, "CPPAlloc", kMemoryManager},
      {kAllocatorDiag, "KEPAlloc", kMemoryManager},
      {kAllocatorDiag, "KEP", kMemoryManager},
      {kProcesses, "Processes", kGeneral},
  };
  for (Return const& r : kReturns) {
    if (d->state == r.state && is(name, r.name)) {
      d->state = r.to;
      return;
    }
  }
}

void onChars(void* user, char const* text, int length) {
  auto* d = static_cast<_StartupUserData*>(user);
  size_t n = length > 0 ? static_cast<size_t>(length) : 0;
  if (d->state == kModuleName) copyText(d->moduleName, text, n);
  if (d->state == kInitFunction) copyText(d->initializeFunctionName, text, n);
  if (d->state == kProcesses) copyText(d->processes, text, n);
}

// Fills the parser's request from the buffered file in pieces of at most
// kReadPiece bytes; -1 when nothing more came.
int readOptions(void* user, char* buffer, int offset, int size) {
  auto* d = static_cast<_StartupUserData*>(user);
  if (buffer == nullptr || offset < 0 || size <= 0) return -1;
  int done = 0;
  while (done < size) {
    uint32_t ask = static_cast<uint32_t>(size - done);
    if (ask > kReadPiece) ask = kReadPiece;
    uint32_t got = 0;
    uint32_t rc = _KepIOBufferedRead(&d->file, buffer + offset + done, ask, &got);
    done += static_cast<int>(got);
    if (rc != 0 || got < ask) break;
  }
  return done > 0 ? done : -1;
}

// The allocator diagnostics word of the names in `words`.
unsigned long allocatorWord(char const* words) {
  unsigned long word = 0;
  if (has(words, "Count")) word |= 1;
  if (has(words, "Sizes")) word |= 2;
  if (has(words, "Stack")) word |= 8;
  if (has(words, "Shift")) word |= 16;
  if (has(words, "Check")) word |= 0x100;
  return word;
}

unsigned long logOptions(char const* words, int logDefault) {
  if (words[0] == '\0') return logDefault == 0 ? 130 : static_cast<unsigned long>(logDefault);
  unsigned long value = 0;
  if (has(words, "KepGUI")) value |= 1;
  if (has(words, "KepConsole")) value |= 4;
  if (has(words, "KepNone")) value |= 2;
  if (value == 0) value = 130;
  if (has(words, "KepEvent")) value |= 16;
  if (has(words, "KepDebugger")) value |= 32;
  if (has(words, "NoBlock")) value |= 128;
  return value;
}

}  // namespace

void _KepGetStartupOptions(int /*a*/, int logDefault, int& processes, char* configName) {
  auto d = std::make_unique<_StartupUserData>();
  char path[kPathSize];
  char normal[KEP_IO_PATH_MAX];
  bool opened = _KepGetStartupConfigPath(configName, path, kPathSize) &&
                _KepIOPathBuild(path, nullptr, nullptr, nullptr, normal) == 0 &&
                _KepIOBufferedOpen(normal, KEP_IO_BUFFERED_DEFAULT, &d->file) == 0;
  if (opened) {
    KepRXMLSimpleParserExecute(d.get(), readOptions, onStart, onEnd, onChars);
    _KepIOBufferedClose(&d->file);

    _gKepDiagQBAlloc.store(allocatorWord(d->qbAlloc));
    gDiagCPPAlloc.store(allocatorWord(d->cppAlloc));
    gDiagKepAlloc.store(allocatorWord(d->kepAlloc));
    gDiagKep.store(has(d->kep, "InstanceCount") ? 1 : 0);
    gKepDebuggerOptions.store(has(d->debugger, "NameTable") ? 1 : 0);
  }
  gKepLogOptions.store(logOptions(d->logger, logDefault));
  processes = std::atoi(d->processes);
  copyText(gAllocator.kind, d->allocatorKind, std::strlen(d->allocatorKind));
  copyText(gAllocator.moduleName, d->moduleName, std::strlen(d->moduleName));
  copyText(gAllocator.initializeFunctionName, d->initializeFunctionName,
           std::strlen(d->initializeFunctionName));

  gKepTotalMallocSize.store(0);
  gKepTotalFreeSize.store(0);
  gKepMallocCount.store(0);
  gKepFreeCount.store(0);
}

void _KepGetStartupAllocator(_KepStartupAllocator& out) { out = gAllocator; }
