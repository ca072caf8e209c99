#include "kep/base/KepString.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "kep/base/KepRString.h"

KEP_METHODS_String(KEP_DEFINE_BRIDGE) KEP_METHODS_String(KEP_DEFINE_HANDLE_METHOD)

    int KepStrLen(signed char const* text) {
  if (text == nullptr) return 0;
  return static_cast<int>(std::strlen(reinterpret_cast<char const*>(text)));
}

int KepWStrLen(unsigned short const* text) {
  if (text == nullptr) return 0;
  int n = 0;
  while (text[n] != 0) ++n;
  return n;
}

KepString::KepString(char const* text) : KepString(text, 0, -1) {}

KepString::KepString(signed char* text) : KepString(reinterpret_cast<char const*>(text), 0, -1) {}

KepString::KepString(char const* text, int offset, int count) : KepObject() {
  if (offset < 0) offset = 0;
  int n = 0;
  if (text != nullptr) {
    n = count;
    if (count == -1) {
      // -1 measures the whole text from its start; the copy still stops at the
      // terminator instead of reading past it when an offset was given.
      int total = KepStrLen(reinterpret_cast<signed char const*>(text));
      n = offset >= total ? 0 : total - offset;
    }
  }
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  KepBridgeBaseCtor(this, KepRString::createFromBytes(n > 0 ? bytes + offset : nullptr, n));
}

KepString::KepString(signed char* text, int offset, int count)
    : KepString(reinterpret_cast<char const*>(text), offset, count) {}

KepString::KepString(unsigned short const* units) : KepString(units, 0, -1) {}

KepString::KepString(unsigned short const* units, int offset, int count) : KepObject() {
  if (offset < 0) offset = 0;
  int n = 0;
  if (units != nullptr) {
    n = count;
    if (count == -1) {
      int total = KepWStrLen(units);
      n = offset >= total ? 0 : total - offset;
    }
  }
  KepBridgeBaseCtor(this, KepRString::create(n > 0 ? units + offset : nullptr, n));
}

std::string KepString::toStdString() const {
  KepRObject* body = getRealKepObj();
  if (body == nullptr || !body->isOfType(KepClassID::String)) return std::string();
  auto* s = static_cast<KepRString*>(body);
  std::string out(static_cast<size_t>(s->unitCount()), '\0');
  for (int i = 0; i < s->unitCount(); ++i)
    out[static_cast<size_t>(i)] = static_cast<char>(s->units()[i]);
  return out;
}
