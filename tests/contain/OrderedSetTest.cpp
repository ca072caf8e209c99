// KepOrderedSet and its iterator: order, uniqueness, and which references the
// set gives back (including the two it deliberately keeps).
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "contain/ContainTestSupport.h"

#if defined(__SANITIZE_ADDRESS__)
#define KEP_TEST_LSAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEP_TEST_LSAN 1
#endif
#endif
#ifdef KEP_TEST_LSAN
#include <sanitizer/lsan_interface.h>
#endif

using keptest::makeValue;
using keptest::valueOf;

namespace {

class OrderedSet : public keptest::CountedBodies {};

// The heap handles a set keeps by design (a rejected duplicate's, a removed
// element's) are allocated in this scope; the leak checker is told they are
// intended.
class IntendedLeaks {
 public:
  IntendedLeaks() {
#ifdef KEP_TEST_LSAN
    __lsan_disable();
#endif
  }
  ~IntendedLeaks() {
#ifdef KEP_TEST_LSAN
    __lsan_enable();
#endif
  }
};

KepOrderedSet newSet() {
  KepOrderedSet s(new KepROrderedSet);
  s.setComparator(keptest::compareValues);
  return s;
}

// Puts fresh elements with the given values.
void putValues(KepOrderedSet& s, std::vector<int> const& vs) {
  for (int v : vs) {
    KepObject e = makeValue(v);
    EXPECT_TRUE(s.put(e).isNull()) << "put always answers a null object";
  }
}

KepOrderedSetIterator findValue(KepOrderedSet const& s, int v) {
  KepObject probe = makeValue(v);
  return s.find(probe);
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
    for (int i = 0; i < 500; ++i) oracle.push_back((i * 7919) % 1000);  // distinct for i < 1000
    putValues(s, std::vector<int>(oracle.begin() + 1, oracle.end()));
    std::sort(oracle.begin(), oracle.end());
    EXPECT_EQ(walk(s), oracle);
    EXPECT_EQ(s.size(), 501);
    EXPECT_TRUE(static_cast<KepROrderedSet*>(s.getRealKepObj())->impl().impl().__rb_verify());
    KepOrderedSetIterator at = findValue(s, oracle[7]);
    EXPECT_EQ(valueOf(at.get()), oracle[7]);
    EXPECT_EQ(valueOf(at.nextElement()), oracle[8]);
    EXPECT_TRUE(findValue(s, 1000).isNull()) << "absent";
    EXPECT_EQ(kept.getRealKepObj()->getRefCount(), 2);
    EXPECT_EQ(live(), 501);
  }
  EXPECT_EQ(live(), 1) << "the destructor released what the set held";
  EXPECT_EQ(kept.getRealKepObj()->getRefCount(), 1);
  EXPECT_TRUE(KepOrderedSet(KepGetObject(KepClassID::OrderedSet, 0)).begin().isNull());
}

TEST_F(OrderedSet, IteratorsAreIndependentStayAtTheEndAndAreReused) {
  KepOrderedSet s = newSet();
  putValues(s, {1, 2, 3});
  KepOrderedSetIterator a = findValue(s, 1);
  KepOrderedSetIterator b = findValue(s, 2);
  ASSERT_NE(a.getRealKepObj(), b.getRealKepObj());
  EXPECT_EQ(valueOf(a.nextElement()), 2);
  EXPECT_EQ(valueOf(b.nextElement()), 3);
  EXPECT_EQ(valueOf(a.get()), 2) << "moving one iterator leaves the other";
  EXPECT_TRUE(b.nextElement().isNull());
  EXPECT_TRUE(b.nextElement().isNull()) << "advancing past the end stays there";
  EXPECT_TRUE(b.get().isNull());

  a.setService(44);
  a.disablePublish();
  a.enableAsyncronous();
  KepRObject* reused = a.getRealKepObj();
  a = KepOrderedSetIterator();
  b = KepOrderedSetIterator();
  KepOrderedSetIterator c = s.begin();
  EXPECT_EQ(valueOf(c.get()), 1);
  ASSERT_EQ(c.getRealKepObj(), reused) << "the spare body is handed out again";
  EXPECT_EQ(c.getService(), 0) << "and starts as new";
  EXPECT_EQ(c.shouldPublish(), 1u);
  EXPECT_EQ(c.hasAsyncronousInterest(), 0u);
  KepOrderedSetIterator none(new KepROrderedSetIterator);
  EXPECT_TRUE(none.get().isNull());
  EXPECT_TRUE(none.nextElement().isNull());
}

TEST_F(OrderedSet, ConcurrentLookupsWithoutWritersAgree) {
  KepOrderedSet s = newSet();
  std::vector<KepObject> elems;
  for (int v = 0; v < 64; ++v) {
    elems.push_back(makeValue(v));
    s.put(elems.back());
  }
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&s, &elems, &wrong, t] {
      for (int i = 0; i < 2000; ++i) {
        KepObject& probe = elems[static_cast<size_t>((i * 7 + t) % 64)];
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
    {
      IntendedLeaks leaks;
      s.put(twin);  // equal to `first`: rejected
    }
    EXPECT_EQ(s.size(), 1);
    EXPECT_EQ(s.find(twin).get().getRealKepObj(), first.getRealKepObj()) << "the first stays";
    {
      IntendedLeaks leaks;  // the handle put here is the one remove() keeps
      s.put(other);
      EXPECT_EQ(s.remove(other), 1u);
    }
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

TEST_F(OrderedSet, WithoutComparatorNothingIsStored) {
  KepOrderedSet s(new KepROrderedSet);
  KepObject e = makeValue(1);
  s.put(e);
  EXPECT_EQ(s.size(), 0);
  EXPECT_EQ(e.getRealKepObj()->getRefCount(), 1) << "no handle was made";
  EXPECT_TRUE(s.find(e).isNull());
  EXPECT_EQ(s.remove(e), 0u);
  KepOrderedSet null;
  EXPECT_EQ(null.size(), 0);
  EXPECT_TRUE(null.put(e).isNull());
}
