// GoogleTest main for suites that need the library brought up: Kep::init(0)
// before the first test, Kep::destroy() after the last.
#include <gtest/gtest.h>

#include "kep/Kep.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  Kep::init(0);
  int rc = RUN_ALL_TESTS();
  Kep::destroy();
  return rc;
}
