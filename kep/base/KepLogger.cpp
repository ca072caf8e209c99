#include "kep/base/KepLogger.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>

#include "kep/base/KepGlobals.h"
#include "kep/multi/_KepThread.h"

namespace {

constexpr size_t kMaxQueued = 1024;

std::atomic<int> gLoggerInitCount{0};

// The console and the lines waiting for it. `console` is held while lines are
// written; `queue` only while a line is queued or taken.
struct ConsoleState {
  std::mutex console;
  std::mutex queueMutex;
  std::deque<std::string> queue;
  unsigned long dropped = 0;
};

ConsoleState& state() {
  // Never destroyed: threads may log during static destruction at process exit.
  static ConsoleState* s = new ConsoleState;
  return *s;
}

struct HandlerSlot {
  std::mutex mutex;
  KepLogger::LineHandler handler = nullptr;
  void* user = nullptr;
};

HandlerSlot& handlerSlot() {
  static HandlerSlot* h = new HandlerSlot;
  return *h;
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
    case KepLogger::kFatal:
      return "FATAL";
  }
  return "LOG";
}

void writeLine(std::string const& line) {
  std::fputs(line.c_str(), stderr);
  std::fflush(stderr);
}

// Writes the queued lines; the caller holds the console.
void drainQueue(ConsoleState& s) {
  for (;;) {
    std::string line;
    unsigned long dropped;
    {
      std::lock_guard<std::mutex> guard(s.queueMutex);
      dropped = s.dropped;
      s.dropped = 0;
      if (dropped == 0) {
        if (s.queue.empty()) return;
        line = std::move(s.queue.front());
        s.queue.pop_front();
      }
    }
    if (dropped != 0) {
      char note[96];
      std::snprintf(note, sizeof note, "[%d] WARNING: (%lu log lines dropped)\n", _KepProcessId(),
                    dropped);
      line = note;
    }
    writeLine(line);
  }
}

bool queueEmpty(ConsoleState& s) {
  std::lock_guard<std::mutex> guard(s.queueMutex);
  return s.queue.empty() && s.dropped == 0;
}

// Writes whatever is queued when the console is free; never waits for it.
void flushQueued() {
  ConsoleState& s = state();
  while (!queueEmpty(s)) {
    if (!s.console.try_lock()) return;  // its holder writes the queue before leaving
    drainQueue(s);
    s.console.unlock();
  }
}

void writeConsole(std::string line, bool noBlock) {
  ConsoleState& s = state();
  if (!noBlock) {
    {
      std::lock_guard<std::mutex> guard(s.console);
      drainQueue(s);
      writeLine(line);
    }
    flushQueued();  // lines queued while this one was written
    return;
  }
  {
    std::lock_guard<std::mutex> guard(s.queueMutex);
    if (s.queue.size() < kMaxQueued) {
      s.queue.push_back(std::move(line));
    } else {
      ++s.dropped;
    }
  }
  flushQueued();
}

}  // namespace

void KepLogger::init() { gLoggerInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepLogger::destroy() {
  int n = gLoggerInitCount.load(std::memory_order_relaxed);
  while (n > 0 && !gLoggerInitCount.compare_exchange_weak(n, n - 1, std::memory_order_relaxed)) {
  }
  if (n == 1) flushQueued();
}

void KepLogger::notifyKepInit() { flushQueued(); }

void KepLogger::notifyKepDestroy() { flushQueued(); }

int KepLogger::initCount() { return gLoggerInitCount.load(std::memory_order_relaxed); }

void KepLogger::log(Level level, char const* format, ...) {
  va_list args;
  va_start(args, format);
  logV(level, format, args);
  va_end(args);
}

void KepLogger::logV(Level level, char const* format, va_list args) {
  unsigned long options = gKepLogOptions.load(std::memory_order_relaxed);
  if ((options & kNone) != 0 || (options & (kConsole | kGUI)) == 0) return;
  char text[4096];
  std::vsnprintf(text, sizeof text, format, args);
  logText(level, text);
}

void KepLogger::logText(Level level, char const* text) {
  unsigned long options = gKepLogOptions.load(std::memory_order_relaxed);
  if (text == nullptr || (options & kNone) != 0) return;
  size_t n = strnlen(text, 4095);
  while (n > 0 && text[n - 1] == '\n') --n;
  std::string body(text, n);
  if (options & kGUI) {
    LineHandler handler;
    void* user;
    {
      HandlerSlot& h = handlerSlot();
      std::lock_guard<std::mutex> guard(h.mutex);
      handler = h.handler;
      user = h.user;
    }
    if (handler != nullptr) handler(user, level, body.c_str());
  }
  if (options & kConsole) {
    char prefix[48];
    std::snprintf(prefix, sizeof prefix, "[%d] %s: ", _KepProcessId(), levelName(level));
    writeConsole(prefix + body + "\n", (options & kNoBlock) != 0);
  }
}

KepLogger::LineHandler KepLogger::setLineHandler(LineHandler handler, void* user) {
  HandlerSlot& h = handlerSlot();
  std::lock_guard<std::mutex> guard(h.mutex);
  LineHandler previous = h.handler;
  h.handler = handler;
  h.user = user;
  return previous;
}
