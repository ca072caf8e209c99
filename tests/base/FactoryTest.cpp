// The factory table: first registration wins, holder ownership, the plain-object
// fallback and the last destroy.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::CountedBody;
using keptest::ScopedKepInit;

namespace {

constexpr int kClassA = 0x4f0100, kAnnounced = 0x4f0101, kAnnouncedSilent = 0x4f0102;
constexpr int kService = 0x4f0200, kSilentService = 0x4f0201;

// The services' side of announced classes: kService registers kAnnounced when it
// is started; kSilentService registers nothing.
std::atomic<int> gServiceStarts{0};
bool startService(int serviceId) {
  ++gServiceStarts;
  if (serviceId != kService) return false;
  KepFactory::registerInternalClass(kAnnounced, KepObject::newObject(), new CountedBody);
  return true;
}

// Two counted classes that both answer the class id kClassA.
class BodyA : public CountedBody {
 public:
  int getClassID() const override { return kClassA; }
  KepObject createAnother() const override { return KepObject(new BodyA()); }
};
class OtherBodyA : public BodyA {
 public:
  KepObject createAnother() const override { return KepObject(new OtherBodyA()); }
};

class Factory : public ::testing::Test {
 protected:
  void TearDown() override {
    KepFactory::setServiceStarter(nullptr);
    for (int id : {kClassA, kAnnounced, kAnnouncedSilent}) KepFactory::unregisterClass(id);
    EXPECT_EQ(CountedBody::live.load(), 0) << "a prototype or a holder leaked";
  }
  ScopedKepInit init_;
};

}  // namespace

TEST_F(Factory, FirstPrototypeWinsAndTheRejectedHolderIsFreed) {
  KepObject first(new BodyA);
  KepObject second(new OtherBodyA);
  KepFactory::registerClass(KepObject::newObject(), &first);
  EXPECT_EQ(first.getRealKepObj()->getRefCount(), 2) << "the factory's holder targets it";
  KepFactory::registerClass(KepObject::newObject(), &second);
  EXPECT_EQ(second.getRealKepObj()->getRefCount(), 1) << "the rejected holder was freed";
  KepObject made = KepGetObject(kClassA, 0);
  EXPECT_NE(dynamic_cast<BodyA*>(made.getRealKepObj()), nullptr);
  EXPECT_EQ(dynamic_cast<OtherBodyA*>(made.getRealKepObj()), nullptr);
  made = KepObject();
  // A null prototype, too, frees the holder it came with.
  auto* holder = KepObject::newObject();
  KepBridgeOperatorAssign(holder, second);
  KepFactory::registerInternalClass(kAnnounced, holder, nullptr);
  EXPECT_EQ(second.getRealKepObj()->getRefCount(), 1);
  EXPECT_TRUE(KepGetObject(kAnnounced, 0).isNull());

  KepFactory::unregisterClass(kClassA);
  EXPECT_EQ(first.getRealKepObj()->getRefCount(), 1) << "unregistering frees the holder";
  EXPECT_TRUE(KepGetObject(kClassA, 0).isNull());
}

TEST_F(Factory, AnnouncedClassIsMadeOnceItsServiceStartsAndRegistersIt) {
  KepFactory::registerClass(kAnnounced, kService);
  KepFactory::registerClass(kAnnouncedSilent, kSilentService);
  EXPECT_TRUE(KepGetObject(kAnnounced, 0).isNull()) << "no way to start services yet";
  KepFactory::setServiceStarter(startService);
  gServiceStarts = 0;
  KepObject first = KepGetObject(kAnnounced, 7, 5);
  ASSERT_FALSE(first.isNull());
  EXPECT_EQ(gServiceStarts.load(), 1);
  EXPECT_EQ(first.getService(), 5);
  KepObject second = KepGetObject(kAnnounced, 0, 5);
  EXPECT_NE(second.getRealKepObj(), first.getRealKepObj()) << "each request makes a new object";
  EXPECT_EQ(gServiceStarts.load(), 1) << "the registered prototype serves later requests";
  EXPECT_TRUE(KepGetObject(kAnnouncedSilent, 0).isNull());
  EXPECT_EQ(gServiceStarts.load(), 2);
}

TEST(FactoryFallback, UnknownIdsGiveNullAndTheRootIdAPlainObjectWithOrWithoutInit) {
  for (bool up : {false, true}) {
    if (up) Kep::init(0);
    EXPECT_TRUE(KepGetObject(kClassA, 3, 4).isNull()) << up;
    KepObject plain = KepGetObject(KepClassID::Object, 0, 9);
    ASSERT_FALSE(plain.isNull()) << up;
    EXPECT_EQ(plain.toString().toStdString(), "KepRObject");
    EXPECT_EQ(plain.getService(), 9);
    if (up) Kep::destroy();
  }
}

TEST_F(Factory, ConcurrentRequestsAndRegistrationsAreSerialised) {
  KepFactory::registerInternalClass(kClassA, KepObject::newObject(), new CountedBody);
  std::vector<std::thread> threads;
  std::atomic<int> made{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &made] {
      int own = 0x4f0300 + t;
      for (int i = 0; i < 200; ++i) {
        if (!KepGetObject(kClassA, 0).isNull()) ++made;
        KepFactory::registerInternalClass(own, KepObject::newObject(), new CountedBody);
        KepFactory::unregisterClass(own);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(made.load(), 800);
}

TEST(FactoryLifetime, LastDestroyFreesEverythingStillRegistered) {
  {
    ScopedKepInit init;
    KepFactory::registerInternalClass(kClassA, KepObject::newObject(), new CountedBody);
    KepFactory::registerClass(kAnnounced, kService);
    EXPECT_EQ(CountedBody::live.load(), 1);
  }
  EXPECT_EQ(CountedBody::live.load(), 0);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE), 0u);
  EXPECT_EQ(KepFactory::classCount(), 0);
  // Without a table, registrations free their holders and nothing is kept.
  KepFactory::registerInternalClass(kClassA, KepObject::newObject(), new CountedBody);
  EXPECT_EQ(CountedBody::live.load(), 0);
}
