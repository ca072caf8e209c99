// The logger: where lines go for each option bit, their form, and whole lines
// from many threads.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::vector<std::string> splitLines(std::string const& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string prefix(char const* level) {
  return "[" + std::to_string(_KepProcessId()) + "] " + level + ": ";
}

class Logger : public ::testing::Test {
 protected:
  keptest::SavedOptionWords saved_;
};

TEST_F(Logger, ConsoleLinesCarryTheProcessIdAndTheLevel) {
  gKepLogOptions.store(KepLogger::kConsole);
  CaptureStderr();
  KepLogger::log(KepLogger::kError, "code %d", 42);
  KepProcess::logDebugString("Unregistering classes\n");
  KepLogger::logText(KepLogger::kFatal, "last words\n\n");
  KepLogger::logText(KepLogger::kInfo, nullptr);
  KepLogger::log(KepLogger::kWarning, "%s", "");
  std::string out = GetCapturedStderr();
  EXPECT_EQ(out, prefix("ERROR") + "code 42\n" + prefix("DEBUG") + "Unregistering classes\n" +
                     prefix("FATAL") + "last words\n" + prefix("WARNING") + "\n");
}

TEST_F(Logger, NoneOrNoOutputBitWritesNothing) {
  for (unsigned long word : {0ul, 2ul, 6ul, 128ul, 130ul, 16ul | 32ul}) {
    gKepLogOptions.store(word);
    keptest::LogCapture capture;
    CaptureStderr();
    KepLogger::log(KepLogger::kError, "hidden %lu", word);
    EXPECT_EQ(GetCapturedStderr(), "") << word;
    EXPECT_TRUE(capture.lines().empty()) << word;
  }
}

TEST_F(Logger, TheGuiBitFeedsTheHostsLineHandler) {
  gKepLogOptions.store(KepLogger::kGUI | KepLogger::kConsole);
  {
    keptest::LogCapture capture;
    CaptureStderr();
    KepLogger::log(KepLogger::kInfo, "both %s", "ways");
    std::string out = GetCapturedStderr();
    EXPECT_EQ(out, prefix("INFO") + "both ways\n");
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], "both ways");
    EXPECT_EQ(capture.levels()[0], KepLogger::kInfo);
  }
  // Without a handler the GUI lines go nowhere.
  gKepLogOptions.store(KepLogger::kGUI);
  CaptureStderr();
  KepLogger::log(KepLogger::kInfo, "dropped");
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(Logger, LongLinesAreCut) {
  gKepLogOptions.store(KepLogger::kGUI);
  keptest::LogCapture capture;
  std::string longText(10000, 'z');
  KepLogger::log(KepLogger::kDebug, "%s", longText.c_str());
  KepLogger::logText(KepLogger::kDebug, longText.c_str());
  std::vector<std::string> lines = capture.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], std::string(4095, 'z'));
  EXPECT_EQ(lines[1], std::string(4095, 'z'));
}

// Lines from many threads arrive whole and complete, with and without NoBlock.
void logFromThreads(unsigned long options) {
  gKepLogOptions.store(options);
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  CaptureStderr();
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kLines; ++i) KepLogger::log(KepLogger::kInfo, "thread %d line %d", t, i);
    });
  }
  for (std::thread& t : threads) t.join();
  KepLogger::notifyKepDestroy();  // writes whatever is still queued
  std::vector<std::string> lines = splitLines(GetCapturedStderr());
  ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLines)) << options;
  std::vector<int> next(kThreads, 0);
  for (std::string const& line : lines) {
    int t = -1;
    int i = -1;
    std::string expectedStart = prefix("INFO") + "thread ";
    ASSERT_EQ(line.compare(0, expectedStart.size(), expectedStart), 0) << line;
    ASSERT_EQ(std::sscanf(line.c_str() + expectedStart.size(), "%d line %d", &t, &i), 2) << line;
    ASSERT_TRUE(t >= 0 && t < kThreads) << line;
    EXPECT_EQ(i, next[t]++) << "a thread's lines keep their order";
  }
}

TEST_F(Logger, ConcurrentConsoleLinesAreWhole) { logFromThreads(KepLogger::kConsole); }

TEST_F(Logger, ConcurrentNoBlockLinesAreWhole) {
  logFromThreads(KepLogger::kConsole | KepLogger::kNoBlock);
}

}  // namespace
