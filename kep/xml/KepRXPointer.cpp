#include "kep/xml/KepRXPointer.h"

#include <cstring>

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(XPointer);

// The units are placed right behind the body by KepRString's allocation, which
// sizes the block for the most derived class; this class must stay free of
// data members so that the string's unit pointer lands where the block has room.
static_assert(sizeof(KepRXPointer) == sizeof(KepRString), "XPointer bodies carry no extra data");

KepRXPointer::KepRXPointer() noexcept : KepRString(0) {}

KepRXPointer::KepRXPointer(int n) noexcept : KepRString(n) {}

KepRXPointer* KepRXPointer::create(unsigned short const* units, int n) {
  if (units == nullptr || n < 0) n = 0;
  auto* body = new (n) KepRXPointer(n);
  if (body != nullptr && n > 0) std::memcpy(body->characters, units, sizeof(unsigned short) * n);
  return body;
}

KepRXPointer* KepRXPointer::createFromBytes(unsigned char const* bytes, int n) {
  if (bytes == nullptr || n < 0) n = 0;
  auto* body = new (n) KepRXPointer(n);
  if (body != nullptr) {
    for (int i = 0; i < n; ++i) body->characters[i] = bytes[i];
  }
  return body;
}

KepRXPointer* KepRXPointer::copyOf(KepString const& path) {
  KepRString const* s = KepRString::of(path);
  if (s == nullptr) return nullptr;
  return create(s->units(), s->unitCount());
}

KepObject KepRXPointer::createAnother() const { return KepObject(new KepRXPointer()); }
