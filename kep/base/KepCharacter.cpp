#include "kep/base/KepCharacter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "kep/base/KepRCharacter.h"
#include "kep/base/KepRSharedData.h"

namespace {

struct KepCharacterRun {
  unsigned short first;
  uint32_t word;
};

struct KepCaseException {
  unsigned short unit;
  unsigned short lower;
  unsigned short upper;
};

#include "kep/base/KepCharacterTables.inc"

constexpr uint32_t kTypeMask = 31;
constexpr uint32_t kCaseExceptionBit = 1u << 5;
constexpr uint32_t kSpaceClassMask = 0x70000;
constexpr uint32_t kWhitespaceClass = 0x40000;
constexpr uint32_t kLetterDigitBits = 0xC000;
constexpr uint32_t kUpperBit = 1u << 20;
constexpr uint32_t kLowerBit = 1u << 21;
constexpr int kUnits = 0x10000;
constexpr int kBlockUnits = 64;
constexpr int kBlockPairs = 32;

// The three lookup levels.
struct Tables {
  uint8_t const* x;
  int16_t const* y;
  uint32_t const* a;
};

// The contents of the three levels, before they are placed.
struct TableImage {
  std::vector<uint8_t> x;
  std::vector<int16_t> y;
  std::vector<uint32_t> a;
};

// Expands the runs into one word per unit, then shares equal pairs of words (A)
// and equal blocks of 32 pair indexes (Y); X names each 64-unit block's Y block.
TableImage buildImage() {
  std::vector<uint32_t> words(kUnits);
  size_t const runCount = sizeof kKepCharacterRuns / sizeof kKepCharacterRuns[0];
  for (size_t r = 0; r < runCount; ++r) {
    int end = r + 1 < runCount ? kKepCharacterRuns[r + 1].first : kUnits;
    std::fill(words.begin() + kKepCharacterRuns[r].first, words.begin() + end,
              kKepCharacterRuns[r].word);
  }
  TableImage image;
  image.x.resize(kUnits / kBlockUnits);
  std::unordered_map<uint64_t, int16_t> pairIndex;
  std::map<std::array<int16_t, kBlockPairs>, uint8_t> blockIndex;
  for (int b = 0; b < kUnits / kBlockUnits; ++b) {
    std::array<int16_t, kBlockPairs> block;
    for (int p = 0; p < kBlockPairs; ++p) {
      uint32_t even = words[b * kBlockUnits + 2 * p];
      uint32_t odd = words[b * kBlockUnits + 2 * p + 1];
      auto found =
          pairIndex.emplace(uint64_t{even} << 32 | odd, static_cast<int16_t>(image.a.size()));
      if (found.second) {
        image.a.push_back(even);
        image.a.push_back(odd);
      }
      block[p] = found.first->second;
    }
    auto found = blockIndex.emplace(block, static_cast<uint8_t>(blockIndex.size()));
    if (found.second) image.y.insert(image.y.end(), block.begin(), block.end());
    image.x[b] = found.first->second;
  }
  return image;
}

// The private copy answers before Kep::init and after the last Kep::destroy.
Tables const& privateTables() {
  static TableImage const image = buildImage();
  static Tables const tables{image.x.data(), image.y.data(), image.a.data()};
  return tables;
}

// The shared tables while they exist; null otherwise.
std::atomic<Tables const*> gSharedTables{nullptr};
Tables gSharedStorage;
std::mutex gInitMutex;
int gInitCount = 0;

template <class T>
T* placeShared(std::vector<T> const& values) {
  auto* block =
      static_cast<T*>(KepRSharedData::alloc(KEP_SCOPE_PROCESS, values.size() * sizeof(T)));
  if (block != nullptr) std::copy(values.begin(), values.end(), block);
  return block;
}

void freeSharedTables() {
  for (int slot : {KEP_SLOT_CHAR_TABLE_X, KEP_SLOT_CHAR_TABLE_Y, KEP_SLOT_CHAR_TABLE_A}) {
    KepRSharedData::free(KEP_SCOPE_PROCESS,
                         KepRSharedData::getPointer<void>(KEP_SCOPE_PROCESS, slot));
    KepRSharedData::set(KEP_SCOPE_PROCESS, slot, 0);
  }
}

inline uint32_t property(unsigned short u) {
  Tables const* t = gSharedTables.load(std::memory_order_acquire);
  if (t == nullptr) t = &privateTables();
  return t->a[t->y[t->x[u >> 6] * kBlockPairs + ((u >> 1) & 31)] | (u & 1)];
}

inline int typeOf(unsigned short u) { return static_cast<int>(property(u) & kTypeMask); }

KepCaseException const* caseException(unsigned short u) {
  auto const* end = std::end(kKepCaseExceptions);
  auto const* it = std::lower_bound(
      std::begin(kKepCaseExceptions), end, u,
      [](KepCaseException const& e, unsigned short unit) { return e.unit < unit; });
  return it != end && it->unit == u ? it : nullptr;
}

// The lower-case mapping (u + d) for kLowerBit, the upper-case one (u - d) for
// kUpperBit; d is the signed value of bits 22-31.
unsigned short mapCase(unsigned short u, uint32_t flag) {
  uint32_t word = property(u);
  if ((word & flag) == 0) return u;
  bool lower = flag == kLowerBit;
  if (word & kCaseExceptionBit) {
    KepCaseException const* e = caseException(u);
    return e == nullptr ? u : (lower ? e->lower : e->upper);
  }
  int d = static_cast<int32_t>(word) >> 22;
  return static_cast<unsigned short>(lower ? u + d : u - d);
}

}  // namespace

KepCharacter::KepCharacter(unsigned short unit) : KepObject(new KepRCharacter(unit)) {}

unsigned short KepCharacter::charValue() const {
  auto const* body = dynamic_cast<KepRCharacter const*>(getRealKepObj());
  return body != nullptr ? body->charValue() : 0;
}

void KepCharacter::init() {
  std::lock_guard<std::mutex> guard(gInitMutex);
  if (++gInitCount != 1 || !KepRSharedData::isCreated()) return;
  TableImage image = buildImage();
  auto* x = placeShared(image.x);
  auto* y = placeShared(image.y);
  auto* a = placeShared(image.a);
  KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_X, x);
  KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_Y, y);
  KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_A, a);
  if (x == nullptr || y == nullptr || a == nullptr) {
    freeSharedTables();
    return;
  }
  gSharedStorage = Tables{x, y, a};
  gSharedTables.store(&gSharedStorage, std::memory_order_release);
}

void KepCharacter::destroy() {
  std::lock_guard<std::mutex> guard(gInitMutex);
  if (gInitCount == 0 || --gInitCount != 0) return;
  gSharedTables.store(nullptr, std::memory_order_release);
  if (KepRSharedData::isCreated()) freeSharedTables();
}

unsigned int KepCharacter::getProperties(unsigned short u) { return property(u); }

int KepCharacter::getType(unsigned short u) { return typeOf(u); }

unsigned long KepCharacter::isUpperCase(unsigned short u) {
  return typeOf(u) == UPPERCASE_LETTER();
}

unsigned long KepCharacter::isLowerCase(unsigned short u) {
  return typeOf(u) == LOWERCASE_LETTER();
}

unsigned long KepCharacter::isTitleCase(unsigned short u) {
  return typeOf(u) == TITLECASE_LETTER();
}

unsigned long KepCharacter::isDigit(unsigned short u) {
  return typeOf(u) == DECIMAL_DIGIT_NUMBER();
}

unsigned long KepCharacter::isSpace(unsigned short u) {
  return u == 9 || u == 10 || u == 12 || u == 13 || u == 32;
}

unsigned long KepCharacter::isSpaceChar(unsigned short u) {
  int type = typeOf(u);
  return type == SPACE_SEPARATOR() || type == LINE_SEPARATOR() || type == PARAGRAPH_SEPARATOR();
}

unsigned long KepCharacter::isWhitespace(unsigned short u) {
  return (property(u) & kSpaceClassMask) == kWhitespaceClass;
}

unsigned long KepCharacter::isDefined(unsigned short u) { return typeOf(u) != UNASSIGNED(); }

unsigned long KepCharacter::isLetter(unsigned short u) {
  int type = typeOf(u);
  return type >= UPPERCASE_LETTER() && type <= OTHER_LETTER();
}

unsigned long KepCharacter::isLetterOrDigit(unsigned short u) {
  return isLetter(u) || typeOf(u) == DECIMAL_DIGIT_NUMBER();
}

unsigned short KepCharacter::toLowerCase(unsigned short u) { return mapCase(u, kLowerBit); }

unsigned short KepCharacter::toUpperCase(unsigned short u) { return mapCase(u, kUpperBit); }

int KepCharacter::digit(unsigned short u, int radix) {
  if (radix < MIN_RADIX() || radix > MAX_RADIX()) return -1;
  uint32_t word = property(u);
  // The offset is read from bit 9 up; only its value modulo 32 matters.
  int offset = static_cast<int32_t>(word) >> 9;
  int value;
  if (static_cast<int>(word & kTypeMask) == DECIMAL_DIGIT_NUMBER()) {
    value = (u + offset) & 31;
  } else if ((word & kLetterDigitBits) == kLetterDigitBits) {
    value = ((u + offset) & 31) + 10;
  } else {
    return -1;
  }
  return value < radix ? value : -1;
}

unsigned short KepCharacter::forDigit(int digit, int radix) {
  if (radix < MIN_RADIX() || radix > MAX_RADIX() || digit < 0 || digit >= radix) return 0;
  return static_cast<unsigned short>(digit <= 9 ? '0' + digit : 'a' + digit - 10);
}
