#include "kep/base/KepRByteArray.h"

#include <cstring>

#include "kep/base/KepFactory.h"

KepRByteArray::KepRByteArray() : KepRByteArray(0) {}

KepRByteArray::KepRByteArray(int n) : bytes(nullptr), count(n < 0 ? 0 : n) {
  bytes = new char[static_cast<size_t>(count) + 1]();
}

KepRByteArray::KepRByteArray(char const* source, int n) : KepRByteArray(source == nullptr ? 0 : n) {
  if (count > 0) std::memcpy(bytes, source, static_cast<size_t>(count));
}

KepRByteArray::~KepRByteArray() { delete[] bytes; }

char* KepRByteArray::asChars() const { return bytes; }

signed char* KepRByteArray::asSignedChars() const { return reinterpret_cast<signed char*>(bytes); }

unsigned char* KepRByteArray::asUnsignedChars() const {
  return reinterpret_cast<unsigned char*>(bytes);
}

KEP_REGISTER_LIBRARY_CLASS(ByteArray);
