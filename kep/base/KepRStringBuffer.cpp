#include "kep/base/KepRStringBuffer.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"

namespace {

std::size_t unitBytes(int64_t n) { return static_cast<std::size_t>(n) * sizeof(unsigned short); }

// A unit count that must fit an int.
int checkedCount(int64_t n) {
  if (n > INT_MAX) throw std::bad_array_new_length();
  return static_cast<int>(n);
}

// Printed text of a number, widened to units; answers the count.
int decimalUnits(unsigned short (&out)[32], char const* format, ...)
    __attribute__((format(printf, 2, 3)));

int decimalUnits(unsigned short (&out)[32], char const* format, ...) {
  char text[32];
  va_list args;
  va_start(args, format);
  int n = std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  n = std::max(0, std::min(n, static_cast<int>(sizeof text) - 1));
  for (int i = 0; i < n; ++i) out[i] = static_cast<unsigned char>(text[i]);
  return n;
}

}  // namespace

KepRStringBuffer::KepRStringBuffer() noexcept : chars(nullptr), len(0), cap(0), allocated(0) {}

KepRStringBuffer::~KepRStringBuffer() { delete[] chars; }

KepStringBuffer KepRStringBuffer::self() { return KepStringBuffer(this); }

KepString KepRStringBuffer::toString() const {
  return KepString(static_cast<KepBridgeToObject*>(KepRString::create(chars, len)));
}

// --- Growth ----------------------------------------------------------------

unsigned short* KepRStringBuffer::growFor(int k) {
  int64_t need = static_cast<int64_t>(len) + k + 1;
  if (need > cap || need > allocated) {
    int64_t wanted = 2 * (static_cast<int64_t>(len) + k);
    int size = checkedCount(std::max(need, std::min<int64_t>(wanted, INT_MAX)));
    auto* fresh = new unsigned short[static_cast<std::size_t>(size)];
    if (len > 0) std::memcpy(fresh, chars, unitBytes(len));
    delete[] chars;
    chars = fresh;
    cap = size;
    allocated = size;
  }
  return chars + len;
}

void KepRStringBuffer::adopt(unsigned short* fresh, int units) {
  delete[] chars;
  chars = fresh;
  allocated = units + 1;
  chars[units] = 0;
}

KepStringBuffer KepRStringBuffer::appendUnits(unsigned short const* units, int k) {
  return units != nullptr ? appendText(units, nullptr, k, k) : self();
}

KepStringBuffer KepRStringBuffer::appendText(unsigned short const* units,
                                             unsigned char const* bytes, int readable, int k) {
  if (k > 0) {
    unsigned short* out = growFor(k);
    int n = std::max(0, std::min(readable, k));
    if (units != nullptr) {
      std::memcpy(out, units, unitBytes(n));
    } else if (bytes != nullptr) {
      for (int i = 0; i < n; ++i) out[i] = bytes[i];
    } else {
      n = 0;
    }
    std::fill(out + n, out + k, static_cast<unsigned short>(0));
    len += k;
    chars[len] = 0;
  }
  return self();
}

KepStringBuffer KepRStringBuffer::insertUnits(int at, unsigned short const* units, int k) {
  if (at < 0) at = 0;
  if (units == nullptr || k <= 0 || at > len) return self();
  int total = checkedCount(static_cast<int64_t>(len) + k);
  auto* fresh = new unsigned short[static_cast<std::size_t>(total) + 1];
  if (at > 0) std::memcpy(fresh, chars, unitBytes(at));
  std::memcpy(fresh + at, units, unitBytes(k));
  if (len > at) std::memcpy(fresh + at + k, chars + at, unitBytes(len - at));
  adopt(fresh, total);
  len = total;
  return self();
}

// --- Appending -------------------------------------------------------------

KepStringBuffer KepRStringBuffer::append(unsigned long value) {
  unsigned short text[32];
  return appendUnits(text, decimalUnits(text, "%lu", value));
}

KepStringBuffer KepRStringBuffer::append(unsigned short unit) { return appendUnits(&unit, 1); }

KepStringBuffer KepRStringBuffer::append(signed char const* text) { return append(text, 0, -1); }

KepStringBuffer KepRStringBuffer::append(signed char const* text, int offset, int count) {
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  KepRString::Span span = KepRString::byteSpan(bytes, offset, count);
  return appendText(nullptr, span.readable > 0 ? bytes + offset : nullptr, span.readable,
                    span.length);
}

KepStringBuffer KepRStringBuffer::append(unsigned short const* units) {
  return append(units, 0, -1);
}

KepStringBuffer KepRStringBuffer::append(unsigned short const* units, int offset, int count) {
  KepRString::Span span = KepRString::unitSpan(units, offset, count);
  return appendText(span.readable > 0 ? units + offset : nullptr, nullptr, span.readable,
                    span.length);
}

KepStringBuffer KepRStringBuffer::append(int value) {
  unsigned short text[32];
  return appendUnits(text, decimalUnits(text, "%ld", static_cast<long>(value)));
}

KepStringBuffer KepRStringBuffer::append(KepString const& str) {
  KepRString const* s = KepRString::of(str);
  if (s == nullptr) return self();
  return appendUnits(s->units(), s->unitCount());
}

// --- Inserting -------------------------------------------------------------

KepStringBuffer KepRStringBuffer::insert(int at, unsigned long value) {
  unsigned short digit = value == 1 ? '1' : '0';
  return insertUnits(at, &digit, 1);
}

KepStringBuffer KepRStringBuffer::insert(int at, unsigned short unit) {
  return insertUnits(at, &unit, 1);
}

KepStringBuffer KepRStringBuffer::insert(int at, unsigned short const* units) {
  return insertUnits(at, units, KepWStrLen(units));
}

KepStringBuffer KepRStringBuffer::insert(int at, int value) {
  unsigned short text[32];
  return insertUnits(at, text, decimalUnits(text, "%ld", static_cast<long>(value)));
}

KepStringBuffer KepRStringBuffer::insert(int at, KepString const& str) {
  KepRString const* s = KepRString::of(str);
  if (s == nullptr) return self();
  return insertUnits(at, s->units(), s->unitCount());
}

// --- Access and reshaping ----------------------------------------------------

int KepRStringBuffer::capacity() const { return len; }

int KepRStringBuffer::length() const { return len; }

unsigned short KepRStringBuffer::charAt(int index) const {
  if (index < 0 || index >= len) return 0xFFFF;
  return chars[index];
}

void KepRStringBuffer::setCharAt(int index, unsigned short unit) {
  if (index >= 0 && index < len) chars[index] = unit;
}

void KepRStringBuffer::getChars(int begin, int end, unsigned short* dst, int dstBegin) const {
  if (begin < 0) begin = 0;
  if (dst == nullptr || end < 0 || begin >= len) return;
  int count = std::min(end - begin, len - begin);
  if (count <= 0) return;
  if (dstBegin < 0) dstBegin = 0;
  std::memcpy(dst + dstBegin, chars + begin, unitBytes(count));
}

void KepRStringBuffer::ensureCapacity(int minimum) {
  if (minimum <= 0 || minimum <= len) return;
  int64_t n = (static_cast<int64_t>(len) + 1) * 2;
  if (minimum > n) n = minimum;
  setLength(checkedCount(n));
}

void KepRStringBuffer::setLength(int n) {
  if (n <= 0) {
    delete[] chars;
    chars = nullptr;
    len = 0;
    allocated = 0;
    return;
  }
  auto* fresh = new unsigned short[static_cast<std::size_t>(checkedCount(int64_t{n} + 1))];
  int kept = chars != nullptr ? std::min(len, n) : 0;
  if (kept > 0) std::memcpy(fresh, chars, unitBytes(kept));
  // New units are zero rather than left undefined.
  std::fill(fresh + kept, fresh + n, static_cast<unsigned short>(0));
  adopt(fresh, n);
  len = n;
}

void KepRStringBuffer::reverse() {
  if (len == 0) return;
  auto* fresh = new unsigned short[static_cast<std::size_t>(len) + 1];
  std::reverse_copy(chars, chars + len, fresh);
  adopt(fresh, len);
}

KEP_REGISTER_LIBRARY_CLASS(StringBuffer);
