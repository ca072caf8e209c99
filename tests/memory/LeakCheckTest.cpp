// The leak-checking mode of the allocator: the registry of tracked blocks, its
// reports and the guard behind each tracked block.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

class LeakCheck : public ::testing::Test {
 protected:
  void SetUp() override { gKepLogOptions.store(KepLogger::kGUI); }

  static std::string liveLine(void const* p, unsigned long size) {
    char line[128];
    std::snprintf(line, sizeof line, "KepMemory: live block #%llu of %lu bytes at %p",
                  static_cast<unsigned long long>(KepMemory::sequenceOf(p)), size, p);
    return line;
  }

  keptest::SavedOptionWords saved_;
  keptest::LogCapture log_;
};

TEST_F(LeakCheck, EachSelectingWordSwitchesTrackingAndBlocksFreeAcrossSwitches) {
  for (unsigned long word : {0x1ul, 0x2ul, 0x100ul, 0x103ul, 0x0ul, 0x8ul, 0x10ul}) {
    bool tracking = (word & 0x103) != 0;
    gDiagKepAlloc.store(word);
    EXPECT_EQ(KepMemory::isTracking(), tracking) << word;
    void* p = KepMalloc(8);
    EXPECT_EQ(KepMemory::sequenceOf(p) != 0, tracking) << word;
    KepFree(p);
  }
  // Blocks made before tracking free cleanly with it on, tracked ones with it off.
  void* untracked = KepMalloc(40);
  gDiagKepAlloc.store(2);
  void* tracked = KepMalloc(50);
  unsigned long blocks = KepMemory::trackedBlocks();
  unsigned long damaged = KepMemory::damagedBlocks();
  KepFree(untracked);
  EXPECT_EQ(KepMemory::trackedBlocks(), blocks) << "an untracked block is not in the registry";
  gDiagKepAlloc.store(0);
  KepFree(tracked);
  EXPECT_EQ(KepMemory::trackedBlocks(), blocks - 1) << "tracking off still unlinks";
  EXPECT_EQ(KepMemory::damagedBlocks(), damaged);
}

TEST_F(LeakCheck, TheSanityCheckListsEveryLiveTrackedBlockAndWritesPastItsEnd) {
  gDiagKepAlloc.store(0x100);
  unsigned long blocks = KepMemory::trackedBlocks();
  unsigned long bytes = KepMemory::trackedBytes();
  unsigned long damaged = KepMemory::damagedBlocks();
  void* a = KepMalloc(123);
  void* b = KepCalloc(3, 7);
  void* empty = KepMalloc(0);
  EXPECT_LT(KepMemory::sequenceOf(a), KepMemory::sequenceOf(b)) << "sequence numbers rise";

  EXPECT_EQ(KepMemoryLeakSanityCheck(), blocks + 3);
  for (auto [p, size] : {std::pair<void*, unsigned long>{a, 123}, {b, 21}, {empty, 0}}) {
    EXPECT_EQ(log_.count(liveLine(p, size)), 1u) << size;
  }
  char summary[96];
  std::snprintf(summary, sizeof summary, "KepMemory: %lu live blocks, %lu bytes", blocks + 3,
                bytes + 144);
  EXPECT_EQ(log_.count(summary), 1u);
  for (void* p : {a, b, empty}) KepFree(p);
  EXPECT_EQ(KepMemoryLeakSanityCheck(), blocks);
  EXPECT_EQ(KepMemory::trackedBytes(), bytes);

  auto* p = static_cast<unsigned char*>(KepMalloc(16));
  // The guard word lies inside the system block, so this stays within memory the
  // allocator owns.
  p[16] ^= 0xff;
  KepMemoryLeakSanityCheck();
  EXPECT_EQ(KepMemory::damagedBlocks(), damaged + 1);
  KepFree(p);
  EXPECT_EQ(KepMemory::damagedBlocks(), damaged + 2) << "the free finds it too";
  EXPECT_EQ(log_.count("of 16 bytes at"), 3u);
  EXPECT_EQ(log_.count("was written past its end"), 2u);
}

TEST_F(LeakCheck, TheLastDestroyReportsADeliberatelyLeakedBlock) {
  keptest::TempDir dir;
  keptest::ScopedEnv env(KEP_STARTUP_OPTIONS_VARIABLE, dir.file("none.xml"));
  Kep::init(0);
  gDiagKepAlloc.store(2);
  void* leaked = KepMalloc(77);
  std::string line = liveLine(leaked, 77);
  Kep::init(0);
  Kep::destroy();
  EXPECT_EQ(log_.count(line), 0u) << "only the last destroy reports";
  Kep::destroy();
  EXPECT_EQ(log_.count(line), 1u);
  EXPECT_EQ(gDiagKepAlloc.load(), 0u);
  unsigned long blocks = KepMemory::trackedBlocks();
  KepFree(leaked);  // still frees cleanly after the library went down
  EXPECT_EQ(KepMemory::trackedBlocks(), blocks - 1);
}

TEST_F(LeakCheck, ManyThreadsAllocateAndFreeTrackedBlocks) {
  gDiagKepAlloc.store(1);
  unsigned long blocks = KepMemory::trackedBlocks();
  unsigned long damaged = KepMemory::damagedBlocks();
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::vector<uint64_t> sequences(kThreads * kRounds);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &sequences] {
      void* held[8] = {};  // the last eight blocks, freed in turn
      for (int i = 0; i < kRounds; ++i) {
        KepFree(held[i % 8]);
        held[i % 8] = KepMalloc(static_cast<size_t>(i % 64));
        sequences[static_cast<size_t>(t * kRounds + i)] = KepMemory::sequenceOf(held[i % 8]);
      }
      for (void* p : held) KepFree(p);
    });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(KepMemory::trackedBlocks(), blocks);
  EXPECT_EQ(KepMemory::damagedBlocks(), damaged);
  std::set<uint64_t> unique(sequences.begin(), sequences.end());
  EXPECT_EQ(unique.size(), sequences.size()) << "sequence numbers differ";
  EXPECT_EQ(unique.count(0), 0u);
}

}  // namespace
