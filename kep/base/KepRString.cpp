#include "kep/base/KepRString.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "kep/base/KepCharacter.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepRByteArray.h"

namespace {

std::size_t blockSize(std::size_t bodySize, int units) {
  return bodySize + (static_cast<std::size_t>(units) + 1u) * sizeof(unsigned short);
}

std::size_t unitBytes(int n) { return static_cast<std::size_t>(n) * sizeof(unsigned short); }

// A handle on a fresh body; a failed allocation gives a null handle.
KepString wrap(KepRString* body) { return KepString(static_cast<KepBridgeToObject*>(body)); }

// Index of the first `unit` in p[from..to), or -1.
int findUnit(unsigned short const* p, int from, int to, unsigned short unit) {
  int i = from;
#if defined(__SSE2__)
  __m128i const needle = _mm_set1_epi16(static_cast<short>(unit));
  for (; i + 8 <= to; i += 8) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<__m128i const*>(p + i));
    int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(block, needle));
    if (mask != 0) return i + (__builtin_ctz(static_cast<unsigned>(mask)) >> 1);
  }
#endif
  for (; i < to; ++i) {
    if (p[i] == unit) return i;
  }
  return -1;
}

#if defined(__x86_64__)
// Widens 16 bytes per step with 32-byte stores; only called where the processor
// has AVX2.
__attribute__((target("avx2"))) int widenBlocksAvx2(unsigned char const* in, unsigned short* out,
                                                    int n) {
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    __m256i units = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(in + i)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), units);
  }
  return i;
}

bool haveAvx2() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
}
#endif

// Widens the leading whole blocks of 16 bytes; answers how many bytes it did.
int widenBlocks(unsigned char const* in, unsigned short* out, int n) {
#if defined(__x86_64__)
  static bool const avx2 = haveAvx2();
  if (avx2) return widenBlocksAvx2(in, out, n);
#endif
  int i = 0;
#if defined(__SSE2__)
  __m128i const zero = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi8(block, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8), _mm_unpackhi_epi8(block, zero));
  }
#endif
  return i;
}

// Index of the first unit where a and b differ within [0, n), or n.
int firstDifference(unsigned short const* a, unsigned short const* b, int n) {
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    uint64_t wa, wb;
    std::memcpy(&wa, a + i, sizeof wa);
    std::memcpy(&wb, b + i, sizeof wb);
    if (wa != wb) break;
  }
  while (i < n && a[i] == b[i]) ++i;
  return i;
}

// Walks both strings, each with its terminating zero, to the first difference:
// 0 when equal, else this unit minus the other unit. A zero unit inside the longer
// string meeting the other's terminator orders the shorter first.
int compareUnits(unsigned short const* a, int na, unsigned short const* b, int nb) {
  int n = std::min(na, nb);
  int i = firstDifference(a, b, n);
  if (i < n) return static_cast<int>(a[i]) - static_cast<int>(b[i]);
  if (a[n] != b[n]) return static_cast<int>(a[n]) - static_cast<int>(b[n]);
  return na == nb ? 0 : (na < nb ? -1 : 1);
}

bool unitsMatch(unsigned short a, unsigned short b) {
  if (a == b) return true;
  unsigned short ua = KepCharacter::toUpperCase(a);
  unsigned short ub = KepCharacter::toUpperCase(b);
  return ua == ub || KepCharacter::toLowerCase(ua) == KepCharacter::toLowerCase(ub);
}

}  // namespace

// --- Allocation and construction -----------------------------------------------

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

KepRString* KepRString::allocate(int n) {
  if (n < 0) n = 0;
  return new (n) KepRString(n);
}

KepRString* KepRString::create(unsigned short const* units, int n) {
  if (units == nullptr || n < 0) n = 0;
  return createSpan(units, Span{n, n});
}

KepRString* KepRString::createFromBytes(unsigned char const* bytes, int n) {
  if (bytes == nullptr || n < 0) n = 0;
  return createSpan(bytes, Span{n, n});
}

KepRString* KepRString::createSpan(unsigned short const* text, Span span) {
  KepRString* s = allocate(span.length);
  if (s == nullptr) return s;
  int n = text == nullptr ? 0 : std::max(0, std::min(span.readable, s->len));
  if (n > 0) std::memcpy(s->characters, text, unitBytes(n));
  if (n < s->len) std::fill(s->characters + n, s->characters + s->len, 0);
  return s;
}

KepRString* KepRString::createSpan(unsigned char const* text, Span span) {
  KepRString* s = allocate(span.length);
  if (s == nullptr) return s;
  int n = text == nullptr ? 0 : std::max(0, std::min(span.readable, s->len));
  unsigned short* out = s->characters;
  int i = widenBlocks(text, out, n);
  for (; i < n; ++i) out[i] = text[i];
  if (n < s->len) std::fill(out + n, out + s->len, 0);
  return s;
}

KepRString::Span KepRString::byteSpan(unsigned char const* text, int& offset, int count) {
  if (offset < 0) offset = 0;
  if (text == nullptr) return Span{0, 0};
  if (count == -1) {
    // The whole text is measured from its start, whatever the offset.
    int length = KepStrLen(reinterpret_cast<signed char const*>(text));
    return Span{length, offset >= length ? 0 : length - offset};
  }
  if (count <= 0) return Span{0, 0};
  // Look for the terminator no further than the requested range; memchr stops
  // reading at the first zero byte.
  auto limit = static_cast<std::size_t>(offset) + static_cast<std::size_t>(count);
  auto const* zero = static_cast<unsigned char const*>(std::memchr(text, 0, limit));
  std::size_t reach = zero != nullptr ? static_cast<std::size_t>(zero - text) : limit;
  int n = reach <= static_cast<std::size_t>(offset) ? 0 : static_cast<int>(reach - offset);
  return Span{n, n};
}

KepRString::Span KepRString::unitSpan(unsigned short const* units, int& offset, int count) {
  if (offset < 0) offset = 0;
  if (units == nullptr) return Span{0, 0};
  if (count == -1) {
    int length = KepWStrLen(units);
    return Span{length, offset >= length ? 0 : length - offset};
  }
  int n = count > 0 ? count : 0;
  return Span{n, n};
}

KepRString const* KepRString::of(KepObject const& handle) {
  KepRObject* body = handle.getRealKepObj();
  if (body == nullptr || !body->isOfType(KepClassID::String)) return nullptr;
  return static_cast<KepRString const*>(body);
}

KepString KepRString::self() const { return KepString(const_cast<KepRString*>(this)); }

KepObject KepRString::createAnother() const { return KepObject(new KepRString()); }

KepString KepRString::toString() const { return self(); }

// --- Identity and comparison ---------------------------------------------------

unsigned long KepRString::equals(KepObject const& other) const {
  KepRObject* body = other.getRealKepObj();
  if (body == nullptr) return 0;
  if (body == this) return 1;
  if (!body->isOfType(KepClassID::String)) return 0;
  auto* s = static_cast<KepRString*>(body);
  return s->len == len && std::memcmp(s->characters, characters, unitBytes(len)) == 0;
}

unsigned long KepRString::equals(KepString const& other) const {
  return equals(static_cast<KepObject const&>(other));
}

int KepRString::compareTo(KepString const& other) const {
  KepRString const* s = of(other);
  if (s == nullptr) return -1;
  return compareUnits(characters, len, s->characters, s->len);
}

int KepRString::compareTo(KepRString const& other) const {
  if (len == 0 || other.len == 0) {
    if (len == other.len) return 0;
    return len > other.len ? 1 : -1;
  }
  return compareUnits(characters, len, other.characters, other.len);
}

int KepRString::compareTo(signed char const* text) const {
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  if (bytes == nullptr || bytes[0] == 0) return len == 0 ? 0 : 1;
  for (int i = 0;; ++i) {
    int unit = i < len ? characters[i] : 0;
    int byte = bytes[i];
    if (unit != byte) return unit - byte;
    if (byte == 0) return i < len ? 1 : 0;
  }
}

unsigned long KepRString::equalsIgnoreCase(KepString const& other) const {
  KepRString const* s = of(other);
  return s != nullptr && s->len == len && regionMatches(1, 0, other, 0, len);
}

unsigned long KepRString::regionMatches(unsigned long ignoreCase, int offset,
                                        KepString const& other, int otherOffset, int count) const {
  KepRString const* s = of(other);
  if (s == nullptr || offset < 0 || otherOffset < 0 || count < 1 || offset > len - count ||
      otherOffset > s->len - count) {
    return 0;
  }
  unsigned short const* a = characters + offset;
  unsigned short const* b = s->characters + otherOffset;
  if (!ignoreCase) return std::memcmp(a, b, unitBytes(count)) == 0;
  for (int i = 0; i < count; ++i) {
    if (!unitsMatch(a[i], b[i])) return 0;
  }
  return 1;
}

unsigned long KepRString::regionMatches(int offset, KepString const& other, int otherOffset,
                                        int count) const {
  return regionMatches(0, offset, other, otherOffset, count);
}

unsigned long KepRString::startsWith(KepString const& prefix) const {
  return startsWith(prefix, 0);
}

unsigned long KepRString::startsWith(KepString const& prefix, int offset) const {
  KepRString const* s = of(prefix);
  if (s == nullptr || s->len == 0 || offset < 0 || offset > len - s->len) return 0;
  return std::memcmp(characters + offset, s->characters, unitBytes(s->len)) == 0;
}

unsigned long KepRString::endsWith(KepString const& suffix) const {
  KepRString const* s = of(suffix);
  if (s == nullptr || s->len == 0) return 0;
  return startsWith(suffix, len - s->len);
}

int KepRString::hashCode() const {
  uint32_t h = 0;
  if (len <= 15) {
    for (int i = 0; i < len; ++i) h = h * 37u + characters[i];
  } else {
    // Long strings sample about eight units.
    int step = len / 8;
    for (int i = 0, left = len; left > 0; i += step, left -= step) h = h * 39u + characters[i];
  }
  return static_cast<int>(h);
}

// --- Access --------------------------------------------------------------------

unsigned short KepRString::charAt(int index) const {
  if (index < 0 || index >= len) return 0xFFFF;
  return characters[index];
}

int KepRString::length() const { return len; }

KepByteArray KepRString::getBytes() const {
  auto* bytes = new KepRByteArray(len);
  char* out = bytes->data();
  for (int i = 0; i < len; ++i) out[i] = static_cast<char>(characters[i]);
  return KepByteArray(bytes);
}

KepByteArray KepRString::getBytes(KepString const&) const { return getBytes(); }

int KepRString::getBytes(int begin, int end, signed char* dst, int dstBegin) const {
  if (dst == nullptr) return 0;
  if (begin < 0) begin = 0;
  if (end > len) end = len;
  if (dstBegin < 0) dstBegin = 0;
  int at = dstBegin;
  for (int i = begin; i < end; ++i) dst[at++] = static_cast<signed char>(characters[i]);
  dst[at] = 0;
  return at;
}

void KepRString::getChars(int begin, int end, unsigned short* dst, int dstBegin) const {
  if (dst == nullptr || begin < 0 || end <= begin || begin >= len) return;
  if (end > len) end = len;
  if (dstBegin < 0) dstBegin = 0;
  std::memcpy(dst + dstBegin, characters + begin, unitBytes(end - begin));
}

unsigned short* KepRString::toCharArray() const {
  auto* copy = new unsigned short[static_cast<std::size_t>(len)];
  if (len > 0) std::memcpy(copy, characters, unitBytes(len));
  return copy;
}

// --- Searching -----------------------------------------------------------------

int KepRString::indexOf(unsigned short unit) const { return findUnit(characters, 0, len, unit); }

int KepRString::indexOf(unsigned short unit, int from) const {
  if (from < 0) from = 0;
  if (from >= len) return -1;
  return findUnit(characters, from, len, unit);
}

int KepRString::indexOf(KepString const& str) const { return indexOf(str, 0); }

int KepRString::indexOf(KepString const& str, int from) const {
  KepRString const* s = of(str);
  if (s == nullptr || s->len == 0 || from >= len) return -1;
  if (from < 0) from = 0;
  unsigned short const* q = s->characters;
  int const m = s->len;
  int const last = len - m;
  for (int i = from; i <= last; ++i) {
    i = findUnit(characters, i, last + 1, q[0]);
    if (i < 0) return -1;
    if (std::memcmp(characters + i + 1, q + 1, unitBytes(m - 1)) == 0) return i;
  }
  return -1;
}

int KepRString::lastIndexOf(unsigned short unit) const { return lastIndexOf(unit, len - 1); }

int KepRString::lastIndexOf(unsigned short unit, int from) const {
  if (from >= len) from = len - 1;
  for (int i = from; i >= 0; --i) {
    if (characters[i] == unit) return i;
  }
  return -1;
}

int KepRString::lastIndexOf(KepString const& str) const { return lastIndexOf(str, len); }

int KepRString::lastIndexOf(KepString const& str, int from) const {
  KepRString const* s = of(str);
  if (s == nullptr || from < 0) return -1;
  int const m = s->len;
  if (from > len - m) from = len - m;
  if (m == 0) return from;
  unsigned short const* q = s->characters;
  for (int i = from; i >= 0; --i) {
    if (characters[i + m - 1] == q[m - 1] &&
        std::memcmp(characters + i, q, unitBytes(m - 1)) == 0) {
      return i;
    }
  }
  return -1;
}

// --- Derived strings -----------------------------------------------------------

KepString KepRString::concat(KepString const& other) const {
  KepRString const* s = of(other);
  if (s == nullptr || s->len == 0) return self();
  if (len == 0) return s->self();
  if (len > INT_MAX - s->len) throw std::bad_array_new_length();
  KepRString* joined = allocate(len + s->len);
  if (joined == nullptr) return KepString();
  std::memcpy(joined->characters, characters, unitBytes(len));
  std::memcpy(joined->characters + len, s->characters, unitBytes(s->len));
  return wrap(joined);
}

KepString KepRString::replace(unsigned short oldUnit, unsigned short newUnit) const {
  int first = oldUnit == newUnit ? -1 : findUnit(characters, 0, len, oldUnit);
  if (first < 0) return self();
  KepRString* copy = create(characters, len);
  if (copy == nullptr) return KepString();
  for (int i = first; i < len; ++i) {
    if (copy->characters[i] == oldUnit) copy->characters[i] = newUnit;
  }
  return wrap(copy);
}

KepString KepRString::substring(int begin) const { return substring(begin, len); }

KepString KepRString::substring(int begin, int end) const {
  if (end == -1) end = len;
  if (begin < 0 || end > len || begin > end) return KepString();
  if (begin == 0 && end == len) return self();
  return wrap(create(characters + begin, end - begin));
}

KepString KepRString::trim() const {
  int first = 0;
  while (first < len && characters[first] <= 0x20) ++first;
  int last = len;
  while (last > first && characters[last - 1] <= 0x20) --last;
  if (first == 0 && last == len) return self();
  return substring(first, last);
}

KepString KepRString::toLowerCase() const {
  KepRString* lower = allocate(len);
  if (lower == nullptr) return KepString();
  for (int i = 0; i < len; ++i) lower->characters[i] = KepCharacter::toLowerCase(characters[i]);
  return wrap(lower);
}

KepString KepRString::toUpperCase() const {
  constexpr unsigned short kSharpS = 0x00DF;
  int sharp = 0;
  for (int i = 0; i < len; ++i) sharp += characters[i] == kSharpS;
  if (len > INT_MAX - sharp) throw std::bad_array_new_length();
  KepRString* upper = allocate(len + sharp);
  if (upper == nullptr) return KepString();
  unsigned short* out = upper->characters;
  for (int i = 0; i < len; ++i) {
    if (characters[i] == kSharpS) {
      *out++ = 'S';
      *out++ = 'S';
    } else {
      *out++ = KepCharacter::toUpperCase(characters[i]);
    }
  }
  return wrap(upper);
}

KepString KepRString::toLowerCase(KepString const&) const { return toLowerCase(); }

KepString KepRString::toUpperCase(KepString const&) const { return toUpperCase(); }

KEP_REGISTER_LIBRARY_CLASS(String);
