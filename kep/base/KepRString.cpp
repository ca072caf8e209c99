#include "kep/base/KepRString.h"

#include <cstring>
#include <new>

#include "kep/base/KepFactory.h"

namespace {

std::size_t blockSize(std::size_t bodySize, int units) {
  return bodySize + (static_cast<std::size_t>(units) + 1u) * sizeof(unsigned short);
}

}  // namespace

void* KepRString::operator new(std::size_t size) noexcept {
  return ::operator new(blockSize(size, 0), std::nothrow);
}

void* KepRString::operator new(std::size_t size, int units) noexcept {
  if (units < 0) units = 0;
  return ::operator new(blockSize(size, units), std::nothrow);
}

void KepRString::operator delete(void* p) noexcept { ::operator delete(p); }

void KepRString::operator delete(void* p, int) noexcept { ::operator delete(p); }

KepRString::KepRString() noexcept : KepRString(0) {}

KepRString::KepRString(int n) noexcept
    : characters(reinterpret_cast<unsigned short*>(this + 1)), len(n < 0 ? 0 : n) {
  characters[len] = 0;
}

KepRString* KepRString::allocate(int n) {
  if (n < 0) n = 0;
  return new (n) KepRString(n);
}

KepRString* KepRString::create(unsigned short const* units, int n) {
  if (units == nullptr || n < 0) n = 0;
  KepRString* s = allocate(n);
  if (s != nullptr && n > 0) std::memcpy(s->characters, units, static_cast<std::size_t>(n) * 2u);
  return s;
}

KepRString* KepRString::createFromBytes(unsigned char const* bytes, int n) {
  if (bytes == nullptr || n < 0) n = 0;
  KepRString* s = allocate(n);
  if (s != nullptr) {
    for (int i = 0; i < n; ++i) s->characters[i] = bytes[i];
  }
  return s;
}

KepObject KepRString::createAnother() const { return KepObject(new KepRString()); }

unsigned long KepRString::equals(KepObject const& other) const {
  KepRObject* body = other.getRealKepObj();
  if (body == nullptr) return 0;
  if (body == this) return 1;
  if (!body->isOfType(KepClassID::String)) return 0;
  auto* s = static_cast<KepRString*>(body);
  return s->len == len &&
         std::memcmp(s->characters, characters, static_cast<std::size_t>(len) * 2u) == 0;
}

KepString KepRString::toString() const { return KepString(const_cast<KepRString*>(this)); }

unsigned short KepRString::charAt(int index) const {
  if (index < 0 || index >= len) return 0xFFFF;
  return characters[index];
}

int KepRString::length() const { return len; }

KEP_REGISTER_LIBRARY_CLASS(String);
