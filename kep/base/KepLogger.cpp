#include "kep/base/KepLogger.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "kep/base/KepGlobals.h"
#include "kep/multi/_KepThread.h"

namespace {

std::atomic<int> gLoggerInitCount{0};

std::mutex& outputMutex() {
  static std::mutex* m = new std::mutex;
  return *m;
}

char const* levelName(KepLogger::Level level) {
  switch (level) {
    case KepLogger::kDebug:
      return "DEBUG";
    case KepLogger::kInfo:
      return "INFO";
    case KepLogger::kWarning:
      return "WARNING";
    case KepLogger::kError:
      return "ERROR";
  }
  return "LOG";
}

}  // namespace

void KepLogger::init() { gLoggerInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepLogger::destroy() {
  if (gLoggerInitCount.load(std::memory_order_relaxed) > 0) {
    gLoggerInitCount.fetch_sub(1, std::memory_order_relaxed);
  }
}

void KepLogger::log(Level level, char const* format, ...) {
  va_list args;
  va_start(args, format);
  logV(level, format, args);
  va_end(args);
}

void KepLogger::logV(Level level, char const* format, va_list args) {
  if ((gKepLogOptions.load(std::memory_order_relaxed) & kConsole) == 0) return;
  char text[4096];
  std::vsnprintf(text, sizeof text, format, args);
  // Lines end with one line feed whether or not the text brought its own.
  size_t n = std::strlen(text);
  while (n > 0 && text[n - 1] == '\n') text[--n] = '\0';
  std::lock_guard<std::mutex> guard(outputMutex());
  std::fprintf(stderr, "[%d] %s: %s\n", _KepProcessId(), levelName(level), text);
  std::fflush(stderr);
}
