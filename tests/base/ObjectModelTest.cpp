// Handles, bodies, reference counting, outer objects and the root behaviours.
#include <gtest/gtest.h>

#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::CountedBody;
using keptest::ScopedKepInit;

namespace {

// A class id outside the library's table, used to register CountedBody.
constexpr int kCountedClassId = 0x4f00ff;

// Registers CountedBody under kCountedClassId for the life of the fixture.
class WithCountedClass : public ::testing::Test {
 protected:
  void SetUp() override {
    KepFactory::registerInternalClass(kCountedClassId, KepObject::newObject(), new CountedBody);
    baseline_ = CountedBody::live.load();
  }
  void TearDown() override {
    KepFactory::unregisterClass(kCountedClassId);
    EXPECT_EQ(CountedBody::live.load(), 0) << "a counted body leaked";
    Outer::destroyHooks = 0;
  }
  ScopedKepInit init_;
  int baseline_ = 0;

  // An outer object: a caller's class derived from a handle class.
  class Outer : public KepObject {
   public:
    Outer() : KepObject(nullptr, KepClassIdArg(kCountedClassId)) { ++live; }
    ~Outer() override { --live; }
    unsigned long isBridge() const override { return 0; }
    KepString toString() const override { return KepString("outer"); }
    void _destroy() override { ++destroyHooks; }
    static inline int live = 0;
    static inline int destroyHooks = 0;
  };
};

}  // namespace

TEST(ObjectModel, NullHandleBridgesAnswerNeutralResultsAndCallNothing) {
  KepObject null;
  EXPECT_TRUE(null.isNull());
  EXPECT_EQ(null.getClassID(), 0);
  EXPECT_EQ(null.equals(null), 0u);
  EXPECT_TRUE(null.toString().isNull());
  null.setService(7);  // void bridge: nothing to call, nothing happens
  EXPECT_EQ(null.getService(), 0);
  EXPECT_EQ(bridgeKepRObject_getClassID(nullptr), 0);
}

TEST(ObjectModel, CountsFollowCopiesMovesAndBridgesAndTheLastReleaseDeletes) {
  auto* body = new CountedBody;
  EXPECT_EQ(body->getRefCount(), 0) << "a fresh body is unreferenced";
  {
    KepObject a(body);
    {
      KepObject b(a);
      KepObject c;
      c = b;
      EXPECT_EQ(body->getRefCount(), 3);
      EXPECT_EQ(b.getCount(), 0) << "ordinary handles are never counted";
      KepObject& alias = c;
      c = alias;           // self-assignment changes nothing
      KepString typed(c);  // no type check is made
      EXPECT_EQ(typed.getRealKepObj(), body);
      EXPECT_EQ(body->getRefCount(), 4);
      KepString moved(std::move(typed));  // a move takes the reference over
      EXPECT_TRUE(typed.isNull());
      EXPECT_EQ(body->getRefCount(), 4);
    }
    EXPECT_EQ(body->getRefCount(), 1);
    KepObject const* heap = a.newBridge();
    EXPECT_EQ(body->getRefCount(), 2);
    KepFactory::freeBridge(heap);
    EXPECT_EQ(heap, nullptr);
    EXPECT_EQ(body->getRefCount(), 1);
    // Assignment releases the old body, here its last reference, and shares the new.
    KepObject other(new CountedBody);
    other = a;
    EXPECT_EQ(CountedBody::live.load(), 1);
    EXPECT_EQ(body->getRefCount(), 2);
    other = KepObject();  // assigning a null handle releases
    EXPECT_EQ(body->getRefCount(), 1);
  }
  EXPECT_EQ(CountedBody::live.load(), 0);
}

// Each call answers the bit as it was before, unshifted: 1 for publishing, 2 for
// asynchronous interest (the list is evaluated left to right).
TEST(ObjectModel, FlagsAnswerThePreviousBitUnshifted) {
  KepObject o(new KepRObject);
  EXPECT_EQ((std::vector<unsigned long>{o.shouldPublish(), o.disablePublish(), o.disablePublish(),
                                        o.enablePublish(), o.enablePublish()}),
            (std::vector<unsigned long>{1, 1, 0, 0, 1}));
  EXPECT_EQ((std::vector<unsigned long>{o.hasAsyncronousInterest(), o.enableAsyncronous(),
                                        o.hasAsyncronousInterest(), o.disableAsyncronous(),
                                        o.disableAsyncronous()}),
            (std::vector<unsigned long>{0, 0, 2, 2, 0}));
  EXPECT_EQ(o.getRealKepObj()->getFlags(), 1u) << "the other bits are untouched";
}

TEST_F(WithCountedClass, OuterObjectReceivesCallsMadeThroughHandles) {
  auto* outer = new Outer;
  KepRObject* body = outer->getRealKepObj();
  ASSERT_NE(body, nullptr);
  EXPECT_EQ(body->getRealOuterObj(), outer);
  {
    KepObject h(outer);  // targets the outer object, not the body
    EXPECT_EQ(h.getTarget(), outer);
    EXPECT_EQ(h.getRealKepObj(), body);
    EXPECT_EQ(h.toString().toStdString(), "outer") << "the override runs";
    h.setService(3);  // not overridden: reaches the body through the outer object
    EXPECT_EQ(body->getService(), 3);
    KepObject copy(h);
    EXPECT_EQ(copy.getTarget(), outer);
    EXPECT_EQ(outer->getCount(), 2);
  }
  // The last handle went and the body was only the outer object's: both are gone.
  EXPECT_EQ(Outer::live, 0);
  EXPECT_EQ(Outer::destroyHooks, 1);
}

TEST_F(WithCountedClass, OuterObjectOutlivesItsHandlesWhileItsBodyIsShared) {
  auto* outer = new Outer;
  KepObject direct(outer->getRealKepObj());  // a second reference on the body
  { KepObject h(outer); }
  EXPECT_EQ(Outer::live, 1) << "the body is still shared, so the outer object lives";
  EXPECT_EQ(outer->getCount(), 0);
  direct = KepObject();  // the body's last other reference: outer object, then body
  EXPECT_EQ(Outer::live, 0);
  EXPECT_EQ(CountedBody::live.load(), baseline_);
}
