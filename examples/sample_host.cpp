// A small host of the library: brings it up, makes objects through the factory,
// copies handles and shows how the reference counts follow, then shuts down.
#include <cstdio>

#include "kep/Kep.h"

int main() {
  Kep::init(0);
  int major = 0;
  int minor = 0;
  Kep::version(major, minor);
  std::printf("libKep11 %d.%d, initialisations: %d\n", major, minor, Kep::initCount());

  KepObject object = KepGetObject(KepClassID::Object, 0);
  std::printf("made %s (class 0x%x), references: %lld\n", object.toString().toStdString().c_str(),
              object.getClassID(), static_cast<long long>(object.getRealKepObj()->getRefCount()));
  {
    KepObject copy(object);
    KepObject another;
    another = copy;
    std::printf("after two copies, references: %lld\n",
                static_cast<long long>(object.getRealKepObj()->getRefCount()));
  }
  std::printf("after the copies went, references: %lld\n",
              static_cast<long long>(object.getRealKepObj()->getRefCount()));

  KepString text("hello, world");
  KepString shared(text);
  std::printf("string \"%s\" of %d units shared by %lld handles\n", text.toStdString().c_str(),
              text.length(), static_cast<long long>(text.getRealKepObj()->getRefCount()));

  object = KepObject();
  Kep::destroy();
  std::printf("shut down, initialisations: %d\n", Kep::initCount());
  return 0;
}
