// Handles, bodies, reference counting, outer objects and the root behaviours.
#include <gtest/gtest.h>

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
  }
  ScopedKepInit init_;
  int baseline_ = 0;
};

// An outer object: a caller's class derived from a handle class.
class Outer : public KepObject {
 public:
  Outer() : KepObject(nullptr, KepClassIdArg(kCountedClassId)) { ++live; }
  ~Outer() override { --live; }
  unsigned long isBridge() const override { return 0; }
  KepString toString() const override { return KepString("outer"); }
  void _destroy() override { ++destroyHooks; }
  static int live;
  static int destroyHooks;
};
int Outer::live = 0;
int Outer::destroyHooks = 0;

}  // namespace

TEST(ObjectModel, NullHandleBridgesAnswerNeutralResultsAndCallNothing) {
  KepObject null;
  EXPECT_TRUE(null.isNull());
  EXPECT_EQ(null.getRealKepObj(), nullptr);
  EXPECT_EQ(null.getClassID(), 0);
  EXPECT_EQ(null.equals(null), 0u);
  EXPECT_EQ(null.hasAsyncronousInterest(), 0u);
  EXPECT_EQ(null.lock(5000), 0);
  EXPECT_TRUE(null.toString().isNull());
  EXPECT_TRUE(null.createAnother().isNull());
  EXPECT_TRUE(null.getObjectId().isNull());
  null.setService(7);  // void bridge: nothing to call, nothing happens
  EXPECT_EQ(null.getService(), 0);
  EXPECT_EQ(bridgeKepRObject_getClassID(nullptr), 0);
  EXPECT_TRUE(bridgeKepRObject_getContent(nullptr).isNull());
}

TEST(ObjectModel, RootFamilyHasThirtyThreeUnbracketedBridges) {
  EXPECT_EQ(0 KEP_METHODS_Object(KEP_COUNT_METHOD), 33);
  EXPECT_EQ(0 KEP_METHODS_Object(KEP_COUNT_BRACKETED), 0);
}

TEST(ObjectModel, CountsFollowCopiesAndTheLastReleaseDeletes) {
  auto* body = new CountedBody;
  EXPECT_EQ(body->getRefCount(), 0) << "a fresh body is unreferenced";
  {
    KepObject a(body);
    EXPECT_EQ(body->getRefCount(), 1);
    {
      KepObject b(a);
      KepObject c;
      c = b;
      EXPECT_EQ(body->getRefCount(), 3);
      EXPECT_EQ(b.getCount(), 0) << "ordinary handles are never counted";
      KepObject& alias = c;
      c = alias;  // self-assignment changes nothing
      EXPECT_EQ(body->getRefCount(), 3);
    }
    EXPECT_EQ(body->getRefCount(), 1);
    EXPECT_EQ(CountedBody::live.load(), 1);
  }
  EXPECT_EQ(CountedBody::live.load(), 0);
}

TEST(ObjectModel, AssignmentReleasesTheOldBodyAndSharesTheNew) {
  {
    KepObject a(new CountedBody);
    KepObject b(new CountedBody);
    EXPECT_EQ(CountedBody::live.load(), 2);
    a = b;  // a's first body has no other reference left
    EXPECT_EQ(CountedBody::live.load(), 1);
    EXPECT_EQ(a.getRealKepObj(), b.getRealKepObj());
    EXPECT_EQ(b.getRealKepObj()->getRefCount(), 2);
    a = KepObject();  // assigning a null handle releases
    EXPECT_EQ(b.getRealKepObj()->getRefCount(), 1);
  }
  EXPECT_EQ(CountedBody::live.load(), 0);
}

TEST(ObjectModel, MovedHandleTakesTheReferenceWithoutCounting) {
  KepObject a(new CountedBody);
  KepRObject* body = a.getRealKepObj();
  KepObject b(std::move(a));
  EXPECT_TRUE(a.isNull());
  EXPECT_EQ(body->getRefCount(), 1);
  KepString s(std::move(b));  // typed handles move the same way
  EXPECT_EQ(s.getRealKepObj(), body);
  EXPECT_EQ(body->getRefCount(), 1);
}

TEST(ObjectModel, TypedHandleFromAnyHandleTargetsTheSameBody) {
  KepObject plain(new CountedBody);
  KepString typed(plain);  // no type check is made
  EXPECT_EQ(typed.getRealKepObj(), plain.getRealKepObj());
  EXPECT_EQ(plain.getRealKepObj()->getRefCount(), 2);
}

TEST(ObjectModel, NewBridgeSharesAndFreeBridgeReleases) {
  KepObject a(new CountedBody);
  KepObject* heap = a.newBridge();
  EXPECT_EQ(a.getRealKepObj()->getRefCount(), 2);
  heap->freeBridge();
  EXPECT_EQ(a.getRealKepObj()->getRefCount(), 1);
  KepObject* fromBody = a.getRealKepObj()->newBridge();
  EXPECT_EQ(fromBody->getRealKepObj(), a.getRealKepObj());
  KepObject const* p = fromBody;
  KepFactory::freeBridge(p);
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(a.getRealKepObj()->getRefCount(), 1);
}

TEST(ObjectModel, FlagsAnswerThePreviousBitUnshifted) {
  KepObject o(new KepRObject);
  EXPECT_EQ(o.shouldPublish(), 1u) << "publishing starts on";
  EXPECT_EQ(o.disablePublish(), 1u);
  EXPECT_EQ(o.disablePublish(), 0u);
  EXPECT_EQ(o.shouldPublish(), 0u);
  EXPECT_EQ(o.enablePublish(), 0u);
  EXPECT_EQ(o.enablePublish(), 1u);

  EXPECT_EQ(o.hasAsyncronousInterest(), 0u);
  EXPECT_EQ(o.enableAsyncronous(), 0u);
  EXPECT_EQ(o.hasAsyncronousInterest(), 2u);
  EXPECT_EQ(o.enableAsyncronous(), 2u);
  EXPECT_EQ(o.disableAsyncronous(), 2u);
  EXPECT_EQ(o.disableAsyncronous(), 0u);
  EXPECT_EQ(o.getRealKepObj()->getFlags(), 1u) << "the other bits are untouched";
}

TEST(ObjectModel, RootBehaviours) {
  KepObject o(new KepRObject);
  EXPECT_EQ(o.toString().toStdString(), "KepRObject");
  EXPECT_EQ(o.getClassID(), 0x40024);
  EXPECT_EQ(o.getKepClassID(), 0x40024);
  EXPECT_EQ(o.getRealKepObj()->getActualClassID(), 0x40024);
  EXPECT_EQ(o.getActualClassID(), 0x40024);
  EXPECT_EQ(KepRObject::getStaticClassID(), 0x40024);
  EXPECT_TRUE(o.isOfType(0x40024));
  EXPECT_FALSE(o.isOfType(KepClassID::String));
  o.setOuterClassID(0x40028);
  EXPECT_EQ(o.getOuterClassID(), 0x40024);
  EXPECT_EQ(o.equals(o), 0u) << "the root never answers equal";
  KepDOMElement element;
  EXPECT_TRUE(o.getContent(element).isNull());
  EXPECT_TRUE(o.getContent().isNull());
  KepObject other = o.createAnother();
  ASSERT_FALSE(other.isNull());
  EXPECT_NE(other.getRealKepObj(), o.getRealKepObj());
  EXPECT_EQ(other.toString().toStdString(), "KepRObject");
  o.setService(42);
  EXPECT_EQ(o.getService(), 42);
  EXPECT_FALSE(o.getRealKepObj()->isBridge());
  EXPECT_TRUE(o.isBridge());
}

TEST(ObjectModel, PlainObjectComesFromTheFactoryEvenWithoutInit) {
  KepObject o = KepGetObject(KepClassID::Object, 0);
  ASSERT_FALSE(o.isNull());
  EXPECT_EQ(o.toString().toStdString(), "KepRObject");
  EXPECT_TRUE(KepGetObject(0x4f00fe, 0).isNull());
}

TEST_F(WithCountedClass, FactoryClonesThePrototypeAndSetsTheService) {
  KepObject o = KepGetObject(kCountedClassId, 7, 99);
  ASSERT_FALSE(o.isNull());
  EXPECT_EQ(CountedBody::live.load(), baseline_ + 1);
  EXPECT_EQ(o.getService(), 99);
  KepObject same = KepGetObject(kCountedClassId, 0, 99);  // `sub` is not used
  EXPECT_EQ(same.getService(), 99);
  KepObject child = o.getObject(kCountedClassId);  // inherits the caller's service
  EXPECT_EQ(child.getService(), 99);
  EXPECT_TRUE(KepGetObject(0x4f00fe, 0, 5).isNull());
}

TEST_F(WithCountedClass, FirstRegistrationWins) {
  auto* holder = KepObject::newObject();
  auto* second = new KepRObject;
  KepObject keepAlive(second);
  KepFactory::registerInternalClass(kCountedClassId, holder, second);
  KepObject made = KepGetObject(kCountedClassId, 0);
  EXPECT_NE(dynamic_cast<CountedBody*>(made.getRealKepObj()), nullptr);
  // The factory took the rejected holder over and freed it: only our handle
  // is left on the second prototype.
  EXPECT_EQ(second->getRefCount(), 1);
}

TEST_F(WithCountedClass, OuterObjectReceivesCallsMadeThroughHandles) {
  auto* outer = new Outer;
  KepRObject* body = outer->getRealKepObj();
  ASSERT_NE(body, nullptr);
  EXPECT_EQ(body->getRealOuterObj(), outer);
  EXPECT_EQ(outer->kepWord, 0u);
  {
    KepObject h(outer);  // targets the outer object, not the body
    EXPECT_EQ(h.getTarget(), outer);
    EXPECT_EQ(h.getRealKepObj(), body);
    EXPECT_EQ(outer->getCount(), 1);
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
  Outer::destroyHooks = 0;
}

TEST_F(WithCountedClass, OuterObjectOutlivesItsHandlesWhileItsBodyIsShared) {
  auto* outer = new Outer;
  KepObject direct(outer->getRealKepObj());  // a second reference on the body
  { KepObject h(outer); }
  EXPECT_EQ(Outer::live, 1) << "the body is still shared, so the outer object lives";
  EXPECT_EQ(outer->getCount(), 0);
  EXPECT_EQ(CountedBody::live.load(), baseline_ + 1);
  direct = KepObject();  // the body's last other reference: outer object, then body
  EXPECT_EQ(Outer::live, 0);
  EXPECT_EQ(CountedBody::live.load(), baseline_);
  Outer::destroyHooks = 0;
}

TEST(ObjectModel, DebuggerCountsHandlesAndBodiesWhenDiagnosticsAreOn) {
  KepDebugger::resetCounts();
  gDiagKep.store(1);
  {
    KepObject a(new KepRObject);
    KepObject b(a);
    KepString s;
    EXPECT_EQ(KepDebugger::liveObjects(), 1);
    EXPECT_EQ(KepDebugger::liveBridges(), 3);
  }
  EXPECT_EQ(KepDebugger::liveObjects(), 0);
  EXPECT_EQ(KepDebugger::liveBridges(), 0);
  gDiagKep.store(0);
}

TEST(ObjectModel, IsRealObjTellsBodiesFromHandles) {
  KepRObject body;
  KepObject handle;
  EXPECT_TRUE(KEP_IS_REAL_OBJ(static_cast<void const*>(&body)));
  EXPECT_FALSE(KEP_IS_REAL_OBJ(static_cast<void const*>(&handle)));
  EXPECT_TRUE(KEP_IS_REAL_OBJ(static_cast<KepBridgeToObject const*>(&body)));
}
