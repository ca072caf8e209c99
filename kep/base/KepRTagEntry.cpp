#include "kep/base/KepRTagEntry.h"

#include <cstdint>
#include <cstring>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"
#include "kep/base/_KepTagIndex.h"

namespace {

// The first index below n where the units differ, or n; four units at a time.
int firstDifference(unsigned short const* a, unsigned short const* b, int n) noexcept {
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    uint64_t wa = _KepTagNameIndex::wordOf(a + i);
    uint64_t wb = _KepTagNameIndex::wordOf(b + i);
    if (wa != wb) return i + __builtin_ctzll(wa ^ wb) / 16;
  }
  while (i < n && a[i] == b[i]) ++i;
  return i;
}

// Units against units: the first difference decides, then the length.
int compareUnits(unsigned short const* a, int na, unsigned short const* b, int nb) noexcept {
  int n = na < nb ? na : nb;
  int i = firstDifference(a, b, n);
  if (i < n) return static_cast<int>(a[i]) - static_cast<int>(b[i]);
  return na - nb;
}

// Units against bytes, the same way: each byte stands for the unit of its value.
int compareUnitsText(unsigned short const* a, int na, unsigned char const* t, int nt) noexcept {
  int n = na < nt ? na : nt;
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    uint64_t wa = _KepTagNameIndex::wordOf(a + i);
    uint64_t wb = _KepTagNameIndex::wordOf(t + i);
    if (wa != wb) {
      i += __builtin_ctzll(wa ^ wb) / 16;
      return static_cast<int>(a[i]) - static_cast<int>(t[i]);
    }
  }
  for (; i < n; ++i) {
    if (a[i] != t[i]) return static_cast<int>(a[i]) - static_cast<int>(t[i]);
  }
  return na - nt;
}

int compareTexts(unsigned char const* a, unsigned char const* b) noexcept {
  for (int i = 0;; ++i) {
    if (a[i] != b[i] || a[i] == 0) return static_cast<int>(a[i]) - static_cast<int>(b[i]);
  }
}

unsigned short const kNoUnits[1] = {0};
signed char const kNoText[1] = {0};

unsigned char const* bytesOf(signed char const* text) {
  return reinterpret_cast<unsigned char const*>(text);
}

}  // namespace

KepRTagEntry::KepRTagEntry() noexcept
    : chars(kNoUnits),
      text(kNoText),
      length(0),
      kind(kKindString),
      tag(0),
      inRange(false),
      units(nullptr) {}

KepRTagEntry::~KepRTagEntry() = default;

KepString KepRTagEntry::getName() const {
  if (kind == kKindText) {
    return text != kNoText ? KepString(reinterpret_cast<char const*>(text)) : KepString();
  }
  // A name held on a string body answers a handle on that body: the same as a
  // copy of the name, made without the copy's virtual calls.
  if (KepRString* body = plainName()) return KepString(static_cast<KepBridgeToObject*>(body));
  return name;
}

KepRString* KepRTagEntry::plainName() const noexcept {
  if (kind == kKindText || units == nullptr || name.getTarget() != units) return nullptr;
  return const_cast<KepRString*>(units);
}

int KepRTagEntry::getTag() const { return tag.load(std::memory_order_relaxed); }

void KepRTagEntry::set(KepString const& newName, int newKind) {
  if (inRange.load(std::memory_order_acquire)) _KepTagDirectory::entryRenamed();
  name = newName;
  units = KepRString::of(name);
  chars = units != nullptr ? units->units() : kNoUnits;
  length = units != nullptr ? units->unitCount() : 0;
  text = kNoText;
  kind = newKind == kKindText ? kKindString : newKind;
}

void KepRTagEntry::setTag(int newTag) { tag.store(newTag, std::memory_order_relaxed); }

void KepRTagEntry::set(signed char const* newText) {
  if (inRange.load(std::memory_order_acquire)) _KepTagDirectory::entryRenamed();
  name = KepString();
  units = nullptr;
  chars = kNoUnits;
  text = newText != nullptr ? newText : kNoText;
  length = static_cast<int>(std::strlen(reinterpret_cast<char const*>(text)));
  kind = kKindText;
}

bool KepRTagEntry::isNamed(unsigned short const* other, int count) const noexcept {
  if (kind == kKindText) return compareUnitsText(other, count, bytesOf(text), length) == 0;
  return length == count && std::memcmp(chars, other, sizeof(unsigned short) * count) == 0;
}

bool KepRTagEntry::isNamed(unsigned char const* bytes, int count) const noexcept {
  if (kind == kKindText) return length == count && std::memcmp(text, bytes, count) == 0;
  return compareUnitsText(chars, length, bytes, count) == 0;
}

uint64_t KepRTagEntry::nameHash() const noexcept {
  if (kind == kKindText) return _KepTagNameIndex::hash(bytesOf(text), length);
  return _KepTagNameIndex::hash(chars, length);
}

int KepRTagEntry::compare(KepRTagEntry const* a, KepRTagEntry const* b) noexcept {
  if (a->kind != kKindText) {
    if (b->kind != kKindText) return compareUnits(a->chars, a->length, b->chars, b->length);
    return compareUnitsText(a->chars, a->length, bytesOf(b->text), b->length);
  }
  if (b->kind != kKindText) {
    return -compareUnitsText(b->chars, b->length, bytesOf(a->text), a->length);
  }
  return compareTexts(bytesOf(a->text), bytesOf(b->text));
}

unsigned long _KepTagEntryComparator(void* a, void* b) {
  return KepRTagEntry::compare(static_cast<KepRTagEntry const*>(a),
                               static_cast<KepRTagEntry const*>(b)) < 0
             ? 1
             : 0;
}

KEP_REGISTER_LIBRARY_CLASS(TagEntry);
