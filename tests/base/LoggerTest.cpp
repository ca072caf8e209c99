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
  EXPECT_EQ(GetCapturedStderr(), prefix("ERROR") + "code 42\n" + prefix("DEBUG") +
                                     "Unregistering classes\n" + prefix("FATAL") + "last words\n" +
                                     prefix("WARNING") + "\n");
}

TEST_F(Logger, TheGuiBitFeedsTheHostsLineHandlerAndNoOutputBitWritesNothing) {
  gKepLogOptions.store(KepLogger::kGUI | KepLogger::kConsole);
  {
    keptest::LogCapture capture;
    CaptureStderr();
    KepLogger::log(KepLogger::kInfo, "both %s", "ways");
    EXPECT_EQ(GetCapturedStderr(), prefix("INFO") + "both ways\n");
    gKepLogOptions.store(KepLogger::kGUI);
    std::string longText(10000, 'z'), cut(4095, 'z');
    KepLogger::log(KepLogger::kDebug, "%s", longText.c_str());
    KepLogger::logText(KepLogger::kDebug, longText.c_str());
    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"both ways", cut, cut}))
        << "long lines are cut";
    EXPECT_EQ(capture.levels(), (std::vector<KepLogger::Level>{KepLogger::kInfo, KepLogger::kDebug,
                                                               KepLogger::kDebug}));
  }
  // Without a handler the GUI lines go nowhere; without an output bit nothing goes.
  for (unsigned long word : {1ul, 0ul, 2ul, 6ul, 128ul, 130ul, 16ul | 32ul}) {
    gKepLogOptions.store(word);
    keptest::LogCapture capture;
    if (word == 1) KepLogger::setLineHandler(nullptr, nullptr);
    CaptureStderr();
    KepLogger::log(KepLogger::kError, "hidden %lu", word);
    EXPECT_EQ(GetCapturedStderr(), "") << word;
    EXPECT_TRUE(capture.lines().empty()) << word;
  }
}

// Lines from many threads arrive whole and complete, with and without NoBlock.
TEST_F(Logger, ConcurrentLinesAreWholeAndKeepEachThreadsOrder) {
  for (unsigned long options : {KepLogger::kConsole, KepLogger::kConsole | KepLogger::kNoBlock}) {
    gKepLogOptions.store(options);
    constexpr int kThreads = 4, kLines = 200;
    CaptureStderr();
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t] {
        for (int i = 0; i < kLines; ++i)
          KepLogger::log(KepLogger::kInfo, "thread %d line %d", t, i);
      });
    }
    for (std::thread& t : threads) t.join();
    KepLogger::notifyKepDestroy();  // writes whatever is still queued
    std::istringstream out(GetCapturedStderr());
    std::vector<int> next(kThreads, 0);
    std::string const start = prefix("INFO") + "thread ";
    for (std::string line; std::getline(out, line);) {
      int t = -1, i = -1;
      ASSERT_EQ(line.compare(0, start.size(), start), 0) << line;
      ASSERT_EQ(std::sscanf(line.c_str() + start.size(), "%d line %d", &t, &i), 2) << line;
      ASSERT_TRUE(t >= 0 && t < kThreads) << line;
      EXPECT_EQ(i, next[t]++) << "a thread's lines keep their order";
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLines)) << "every line arrived, " << options;
  }
}

}  // namespace
