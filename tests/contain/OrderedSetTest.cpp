// KepOrderedSet and its iterator: order, uniqueness, and which references the
// set gives back (including the two it deliberately keeps).
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "contain/ContainTestSupport.h"

// The leak checker's switches, defined only in builds under AddressSanitizer.
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

using keptest::makeValue;
using keptest::valueOf;

namespace {

class OrderedSet : public keptest::CountedBodies {};

KepOrderedSet newSet() {
  KepOrderedSet s(new KepROrderedSet);
  s.setComparator(keptest::compareValues);
  return s;
}

KepOrderedSetIterator findValue(KepOrderedSet const& s, int v) {
  KepObject probe = makeValue(v);
  return s.find(probe);
}

void putValue(KepOrderedSet& s, int v) {
  KepObject e = makeValue(v);
  EXPECT_TRUE(s.put(e).isNull()) << "put always answers a null object";
}

std::vector<int> walk(KepOrderedSet const& s) {
  std::vector<int> out;
  KepOrderedSetIterator it = s.begin();
  for (KepObject e = it.get(); !e.isNull(); e = it.nextElement()) out.push_back(valueOf(e));
  return out;
}

}  // namespace

TEST_F(OrderedSet, IteratesInComparatorOrderAndFindsByValue) {
  KepObject kept = makeValue(1001);
  {
    KepOrderedSet s = newSet();
    s.put(kept);
    std::vector<int> oracle{1001};
    for (int i = 0; i < 500; ++i) {
      oracle.push_back((i * 7919) % 1000);  // distinct for i < 1000
      putValue(s, oracle.back());
    }
    std::sort(oracle.begin(), oracle.end());
    EXPECT_EQ(walk(s), oracle);
    EXPECT_EQ(s.size(), 501);
    KepOrderedSetIterator at = findValue(s, oracle[7]);
    EXPECT_EQ(valueOf(at.get()), oracle[7]);
    EXPECT_EQ(valueOf(at.nextElement()), oracle[8]);
    EXPECT_TRUE(findValue(s, 1000).isNull()) << "absent";
    EXPECT_EQ(kept.getRealKepObj()->getRefCount(), 2);
  }
  EXPECT_EQ(live(), 1) << "the destructor released what the set held";
  EXPECT_EQ(kept.getRealKepObj()->getRefCount(), 1);

  KepOrderedSet bare(new KepROrderedSet);  // without a comparator nothing is stored
  bare.put(kept);
  EXPECT_EQ(bare.size(), 0);
  EXPECT_EQ(kept.getRealKepObj()->getRefCount(), 1) << "no handle was made";
}

TEST_F(OrderedSet, IteratorsAreIndependentStayAtTheEndAreReusedAndServeSeveralThreads) {
  KepOrderedSet s = newSet();
  for (int v : {1, 2, 3}) putValue(s, v);
  KepOrderedSetIterator a = findValue(s, 1);
  KepOrderedSetIterator b = findValue(s, 2);
  ASSERT_NE(a.getRealKepObj(), b.getRealKepObj());
  EXPECT_EQ(valueOf(a.nextElement()), 2);
  EXPECT_EQ(valueOf(b.nextElement()), 3);
  EXPECT_EQ(valueOf(a.get()), 2) << "moving one iterator leaves the other";
  EXPECT_TRUE(b.nextElement().isNull());
  EXPECT_TRUE(b.nextElement().isNull()) << "advancing past the end stays there";

  a.setService(44);
  KepRObject* reused = a.getRealKepObj();
  a = KepOrderedSetIterator();
  b = KepOrderedSetIterator();
  KepOrderedSetIterator c = s.begin();
  EXPECT_EQ(valueOf(c.get()), 1);
  ASSERT_EQ(c.getRealKepObj(), reused) << "the spare body is handed out again";
  EXPECT_EQ(c.getService(), 0) << "and starts as new";
  c = KepOrderedSetIterator();  // the spare is free again for the threads below

  // Lookups from several threads, each taking and returning iterators, agree.
  std::vector<KepObject> elems;
  for (int v = 4; v < 64; ++v) {
    elems.push_back(makeValue(v));
    s.put(elems.back());
  }
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&s, &elems, &wrong, t] {
      for (int i = 0; i < 2000; ++i) {
        KepObject& probe = elems[static_cast<size_t>((i * 7 + t) % elems.size())];
        if (s.find(probe).get().getRealKepObj() != probe.getRealKepObj()) ++wrong;
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong.load(), 0);
}

TEST_F(OrderedSet, RejectedAndRemovedElementsKeepTheirSetReference) {
  KepObject first = makeValue(1);
  KepObject twin = makeValue(1);
  KepObject other = makeValue(2);
  {
    KepOrderedSet s = newSet();
    s.put(first);
    // The heap handles the set keeps by design (the rejected duplicate's, the removed
    // element's) are allocated while the leak checker is told they are intended.
    if (__lsan_disable != nullptr) __lsan_disable();
    s.put(twin);  // equal to `first`: rejected
    s.put(other);
    EXPECT_EQ(s.remove(other), 1u);
    if (__lsan_enable != nullptr) __lsan_enable();
    EXPECT_EQ(s.size(), 1);
    EXPECT_EQ(s.find(twin).get().getRealKepObj(), first.getRealKepObj()) << "the first stays";
    EXPECT_EQ(s.remove(other), 0u) << "already gone";
    EXPECT_EQ(walk(s), (std::vector<int>{1}));
  }
  EXPECT_EQ(first.getRealKepObj()->getRefCount(), 1) << "held elements are released";
  EXPECT_EQ(twin.getRealKepObj()->getRefCount(), 2) << "the rejected copy was never released";
  EXPECT_EQ(other.getRealKepObj()->getRefCount(), 2) << "remove does not release";
  // Give back the two references the set kept so that the bodies can go.
  twin.getRealKepObj()->release();
  other.getRealKepObj()->release();
}
