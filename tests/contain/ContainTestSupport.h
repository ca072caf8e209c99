// Element bodies for the container suites: counted (to prove what is released)
// and carrying a value (to compare and order them).
#ifndef KEP_TESTS_CONTAIN_CONTAINTESTSUPPORT_H
#define KEP_TESTS_CONTAIN_CONTAINTESTSUPPORT_H

#include <gtest/gtest.h>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace keptest {

class ValueBody : public CountedBody {
 public:
  explicit ValueBody(int v) : value(v) {}
  unsigned long equals(KepObject const& other) const override {
    auto* b = dynamic_cast<ValueBody*>(other.getRealKepObj());
    return b != nullptr && b->value == value;
  }
  KepObject createAnother() const override { return KepObject(new ValueBody(0)); }
  int value;
};

inline KepObject makeValue(int v) { return KepObject(new ValueBody(v)); }

// The value behind a handle, -1 for a null handle or another body.
inline int valueOf(KepObject const& o) {
  auto* b = dynamic_cast<ValueBody*>(o.getRealKepObj());
  return b != nullptr ? b->value : -1;
}

// Orders the handles given to a set by their bodies' values.
inline unsigned long compareValues(void* a, void* b) {
  return valueOf(*static_cast<KepObject*>(a)) < valueOf(*static_cast<KepObject*>(b));
}

// Checks at its end that every counted body made during the test is gone.
class CountedBodies : public ::testing::Test {
 protected:
  void SetUp() override { baseline_ = CountedBody::live.load(); }
  void TearDown() override { EXPECT_EQ(CountedBody::live.load(), baseline_) << "bodies leaked"; }
  int live() const { return CountedBody::live.load() - baseline_; }
  int baseline_ = 0;
};

}  // namespace keptest

#endif  // KEP_TESTS_CONTAIN_CONTAINTESTSUPPORT_H
