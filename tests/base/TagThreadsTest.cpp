// Many threads adding and looking up overlapping names at once: every name gets
// one tag, whichever thread adds it first, and lookups see consistent data.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::ScopedKepInit;

namespace {

constexpr int kThreads = 8;
// Enough names to fill the last built-in block and cross into a second new one.
constexpr int kNames = 2600;

std::string sharedName(int i) { return "shared-" + std::to_string(i); }

TEST(TagThreads, OverlappingNamesGetOneTagEach) {
  ScopedKepInit kep;
  std::vector<std::vector<int>> seen(kThreads, std::vector<int>(kNames, 0));
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &seen, &mismatches] {
      // Each thread walks the names from its own starting point, alternating
      // the string and the 8-bit form, and checks what it reads back at once.
      for (int k = 0; k < kNames; ++k) {
        int i = (k + t * (kNames / kThreads)) % kNames;
        std::string n = sharedName(i);
        int tag = (k % 2 == 0) ? KepNameToTag(n.c_str()) : KepNameToTag(KepString(n.c_str()));
        seen[t][i] = tag;
        if (KepProcess::tagToName(tag).toStdString() != n) ++mismatches[t];
        if (KepProcess::nameToTag(KepString(n.c_str())) != tag) ++mismatches[t];
        if (KepProcess::nameToTag("String") != 0x4002C) ++mismatches[t];
      }
    });
  }
  for (std::thread& th : threads) th.join();
  std::set<int> distinct;
  for (int i = 0; i < kNames; ++i) {
    for (int t = 1; t < kThreads; ++t) ASSERT_EQ(seen[t][i], seen[0][i]) << sharedName(i);
    ASSERT_NE(seen[0][i], 0);
    distinct.insert(seen[0][i]);
  }
  EXPECT_EQ(static_cast<int>(distinct.size()), kNames) << "distinct names, distinct tags";
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
  // The tags are the dense sequence of dynamic tags, whatever the interleaving.
  EXPECT_EQ(*distinct.begin(), 0x409E9);
  EXPECT_EQ(*distinct.rbegin(), 0x40A00 + (kNames - 22) + (kNames - 22) / 2047 - 1);
}

}  // namespace
