// Helpers for tests that read the library's log or steer its start-up options.
#ifndef KEP_TESTS_SUPPORT_KEPLOGCAPTURE_H
#define KEP_TESTS_SUPPORT_KEPLOGCAPTURE_H

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace keptest {

// Collects the lines the logger hands to its line handler while it lives. The
// lines arrive only while the GUI bit (1) of gKepLogOptions is set; Kep::init(a,
// 1) with no options file sets exactly that bit.
class LogCapture {
 public:
  LogCapture() { KepLogger::setLineHandler(&LogCapture::take, this); }
  ~LogCapture() { KepLogger::setLineHandler(nullptr, nullptr); }
  LogCapture(LogCapture const&) = delete;
  LogCapture& operator=(LogCapture const&) = delete;

  std::vector<std::string> lines() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return lines_;
  }
  // Lines that contain `text`.
  size_t count(std::string const& text) const {
    std::lock_guard<std::mutex> guard(mutex_);
    return static_cast<size_t>(
        std::count_if(lines_.begin(), lines_.end(),
                      [&](std::string const& l) { return l.find(text) != std::string::npos; }));
  }
  bool contains(std::string const& text) const { return count(text) > 0; }
  std::vector<KepLogger::Level> levels() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return levels_;
  }
  void clear() {
    std::lock_guard<std::mutex> guard(mutex_);
    lines_.clear();
    levels_.clear();
  }

 private:
  static void take(void* user, KepLogger::Level level, char const* text) {
    auto* self = static_cast<LogCapture*>(user);
    std::lock_guard<std::mutex> guard(self->mutex_);
    self->lines_.emplace_back(text);
    self->levels_.push_back(level);
  }

  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  std::vector<KepLogger::Level> levels_;
};

// Sets an environment variable for its lifetime and restores the old value (or
// its absence) afterwards.
class ScopedEnv {
 public:
  ScopedEnv(char const* name, std::string const& value) : name_(name) {
    if (char const* old = std::getenv(name)) old_ = old;
    setenv(name, value.c_str(), 1);
  }
  ~ScopedEnv() {
    if (old_) {
      setenv(name_.c_str(), old_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  ScopedEnv(ScopedEnv const&) = delete;
  ScopedEnv& operator=(ScopedEnv const&) = delete;

 private:
  std::string name_;
  std::optional<std::string> old_;
};

// Keeps the option words and restores them at the end of a test.
class SavedOptionWords {
 public:
  SavedOptionWords() {
    for (size_t i = 0; i < words_.size(); ++i) saved_[i] = words_[i]->load();
  }
  ~SavedOptionWords() {
    for (size_t i = 0; i < words_.size(); ++i) words_[i]->store(saved_[i]);
  }
  SavedOptionWords(SavedOptionWords const&) = delete;
  SavedOptionWords& operator=(SavedOptionWords const&) = delete;

 private:
  std::array<std::atomic<unsigned long>*, 6> const words_{{&gKepLogOptions, &gKepDebuggerOptions,
                                                           &gDiagKep, &gDiagKepAlloc,
                                                           &gDiagCPPAlloc, &_gKepDiagQBAlloc}};
  std::array<unsigned long, 6> saved_{};
};

inline void writeFile(std::string const& path, std::string const& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

}  // namespace keptest

#endif  // KEP_TESTS_SUPPORT_KEPLOGCAPTURE_H
