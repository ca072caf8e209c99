// Start-up and shut-down: the order of the once-only steps, the subsystems'
// own counters, the process object, repeated cycles and the reports of the last
// destroy.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

class StartupShutdown : public ::testing::Test {
 protected:
  keptest::SavedOptionWords saved_;
  keptest::TempDir dir_;
  // No options file: Kep::init(a) sets the log word to 1, the line handler.
  keptest::ScopedEnv env_{KEP_STARTUP_OPTIONS_VARIABLE, dir_.file("none.xml")};
  keptest::LogCapture log_;
};

// Each subsystem's own count of live inits.
std::vector<int> subsystemCounts() {
  return {Kep::initCount(), KepLogger::initCount(), KepDebugger::initCount(),
          KepMemory::initCount(), KepProcess::initCount()};
}

TEST_F(StartupShutdown, NestedInitsShareOneStartUpAndTheLastDestroyEndsIt) {
  Kep::init(0);
  Kep::init(0);
  EXPECT_EQ(subsystemCounts(), std::vector<int>(5, 2));
  EXPECT_EQ(log_.count("Initializating KEP, invocation #2, for current process"), 1u);
  int classes = KepFactory::classCount();
  int libraryClasses = 0;
  for (KepLibraryClass* c = KepFirstLibraryClass(); c != nullptr; c = c->next) ++libraryClasses;
  EXPECT_EQ(classes, libraryClasses) << "every library class is registered";

  Kep::destroy();
  EXPECT_EQ(subsystemCounts(), std::vector<int>(5, 1));
  EXPECT_EQ(log_.count("Unregistering classes"), 0u);
  EXPECT_EQ(KepFactory::classCount(), classes) << "the classes stay while one init lives";
  Kep::init(0);  // counts on from the live count
  EXPECT_EQ(log_.count("Initializating KEP, invocation #2, for current process"), 2u);
  Kep::destroy();

  Kep::destroy();
  EXPECT_EQ(subsystemCounts(), std::vector<int>(5, 0));
  EXPECT_EQ(log_.count("Unregistering classes"), 1u);
  EXPECT_TRUE(KepProcess::isShuttingDown());
  EXPECT_FALSE(KepRSharedData::isCreated());

  Kep::init(0);
  EXPECT_FALSE(KepProcess::isShuttingDown()) << "a new start-up clears the flag";
  EXPECT_EQ(log_.count("Initializating KEP, invocation #1, for current process"), 2u);
  Kep::destroy();
}

TEST_F(StartupShutdown, TheLastDestroyNamesClassesWithLiveInstances) {
  Kep::init(0);
  gDiagKep.store(1);
  KepObject kept = KepGetObject(KepClassID::StringBuffer, 0);
  KepObject second(kept);
  EXPECT_EQ(KepDebugger::liveObjectsOf(KepClassID::StringBuffer), 1);
  // The last destroy reports after the tag manager is gone, still by name.
  Kep::destroy();
  EXPECT_EQ(log_.count("KepDebugger: 1 live instances of StringBuffer (class 0x4002d), 2 handles"),
            1u);
  EXPECT_EQ(log_.count("KepDebugger: 1 live objects, 2 live handles"), 1u);
  EXPECT_EQ(gDiagKep.load(), 0u);
}

TEST_F(StartupShutdown, RepeatedCyclesLeaveNothingBehind) {
  KepLogger::setLineHandler(nullptr, nullptr);  // the log lines are not kept
  // One cycle first, with instance accounting: storage kept for the process's
  // life (the thread table, the accounting's tables) is made then.
  gDiagKep.store(1);
  Kep::init(0);
  Kep::destroy();
  // Bytes and blocks allocated and not yet freed (unsigned differences).
  auto outstanding = [] {
    return std::make_pair(gKepTotalMallocSize.load() - gKepTotalFreeSize.load(),
                          gKepMallocCount.load() - gKepFreeCount.load());
  };
  auto const afterFirst = outstanding();
  unsigned long handles = _KepMMTestLiveHandles();
  size_t const heapAfterFirst = mallinfo2().uordblks;
  KepDebugger::resetCounts();
  int const cycles = keptest::kSanitized ? 100 : 1000;
  for (int i = 0; i < cycles; ++i) {
    // Every 50th cycle also counts its objects (instance accounting makes a
    // cycle several times slower).
    bool counted = i % 50 == 0;
    if (counted) gDiagKep.store(1);  // the last destroy clears it
    Kep::init(0);
    Kep::destroy();
    ASSERT_EQ(outstanding(), afterFirst) << "cycle " << i;
    if (counted) {
      ASSERT_EQ(KepDebugger::liveObjects(), 0) << "cycle " << i;
      ASSERT_EQ(KepDebugger::liveBridges(), 0) << "cycle " << i;
    }
  }
  EXPECT_EQ(_KepMMTestLiveHandles(), handles);
  EXPECT_FALSE(KepRSharedData::isCreated());
  // The C library's heap as a whole, which also holds what is allocated
  // without KepMalloc (containers, objects made with new): a leak of a few
  // bytes per cycle would add up to more than the allocator's own caching.
  if (!keptest::kSanitized) {
    auto const grown = static_cast<long>(mallinfo2().uordblks) - static_cast<long>(heapAfterFirst);
    EXPECT_LT(grown, 16 * 1024) << "bytes in use after " << cycles << " cycles";
  }
}

TEST_F(StartupShutdown, ABareHostReportsNoLiveBlocksAndNoLiveInstances) {
  std::string options = dir_.file("leakcheck.xml");
  keptest::writeFile(options,
                     "<Startup><MemoryManager>"
                     "<KEPAlloc><Diagnostics><Count/><Sizes/><Check/></Diagnostics></KEPAlloc>"
                     "<KEP><Diagnostics><InstanceCount/></Diagnostics></KEP>"
                     "</MemoryManager><Logger><KepConsole/></Logger></Startup>");
  std::string command =
      std::string("KEP_STARTUP_OPTIONS='") + options + "' '" + KEP_STARTUP_HOST + "' 2>&1";
  FILE* child = popen(command.c_str(), "r");
  ASSERT_NE(child, nullptr);
  std::string output;
  for (char buffer[4096]; size_t n = std::fread(buffer, 1, sizeof buffer, child);)
    output.append(buffer, n);
  EXPECT_EQ(pclose(child), 0) << output;

  // The start-up's own check lists the blocks it keeps while the library is up;
  // the last destroy's reports come at the end.
  size_t unregister = output.find("Unregistering classes");
  ASSERT_NE(unregister, std::string::npos) << output;
  std::string tail = output.substr(unregister);
  EXPECT_NE(tail.find("INFO: KepMemory: 0 live blocks, 0 bytes\n"), std::string::npos) << tail;
  EXPECT_NE(tail.find("INFO: KepDebugger: 0 live objects, 0 live handles"), std::string::npos)
      << tail;
  EXPECT_EQ(tail.find("live block #"), std::string::npos) << tail;
  EXPECT_EQ(tail.find("live instances of"), std::string::npos) << tail;
}

}  // namespace
