// A host that does nothing but bring the library up and take it down again; the
// start-up tests run it with an options file of their own and read its log.
#include "kep/Kep.h"

int main() {
  Kep::init(0);
  Kep::destroy();
  return 0;
}
