// A host that uses only the installed headers and library: it brings the
// library up, makes objects through the factory and shares one of them.
#include <kep/Kep.h>

#include <cstdio>
#include <string>

int main() {
  Kep::init(0);
  int failures = 0;
  {
    KepObject object = KepGetObject(KepClassID::Object, 0);
    KepObject copy(object);
    KepOrderedSet set(KepGetObject(KepClassID::OrderedSet, 0));
    std::string text = object.toString().toStdString();
    long long refs = object.isNull() ? 0 : object.getRealKepObj()->getRefCount();
    std::printf("%s, references %lld, ordered set %s\n", text.c_str(), refs,
                set.isNull() ? "missing" : "made");
    failures = (text == "KepRObject" && refs == 2 && !set.isNull()) ? 0 : 1;
  }
  Kep::destroy();
  return failures;
}
