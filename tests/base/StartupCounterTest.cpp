// Nested start-up: only the first Kep::init registers the classes and only the
// last Kep::destroy takes them away.
#include <gtest/gtest.h>

#include "kep/Kep.h"

TEST(StartupCounter, TwoInitsAndOneDestroyKeepTheClasses) {
  ASSERT_EQ(Kep::initCount(), 0);
  Kep::init(0);
  Kep::init(0);
  EXPECT_EQ(Kep::initCount(), 2);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_LAST), 2u);
  EXPECT_FALSE(KepGetObject(KepClassID::String, 0).isNull());
  Kep::destroy();
  EXPECT_EQ(Kep::initCount(), 1);
  EXPECT_FALSE(KepGetObject(KepClassID::String, 0).isNull()) << "one init is still live";
  Kep::init(0);  // a later init counts from the live count
  EXPECT_EQ(Kep::initCount(), 2);
  Kep::destroy();
  Kep::destroy();
  EXPECT_EQ(Kep::initCount(), 0);
  EXPECT_FALSE(KepRSharedData::isCreated());
  EXPECT_TRUE(KepGetObject(KepClassID::String, 0).isNull());
}

TEST(StartupCounter, InitAfterFullTearDownStartsAgain) {
  for (int round = 0; round < 3; ++round) {
    Kep::init(0);
    KepObject s = KepGetObject(KepClassID::String, 0);
    ASSERT_FALSE(s.isNull());
    EXPECT_EQ(s.getClassID(), KepClassID::String);
    s = KepObject();
    Kep::destroy();
  }
  EXPECT_FALSE(KepRSharedData::isCreated());
}

TEST(StartupCounter, VersionIsOneZero) {
  int major = -1;
  int minor = -1;
  Kep::version(major, minor);
  EXPECT_EQ(major, 1);
  EXPECT_EQ(minor, 0);
  minor = 7;
  KepVersion(nullptr, &minor);
  EXPECT_EQ(minor, 0);
}
