// KepRTagEntry: the body of KepTagEntry.
#ifndef KEP_BASE_KEPRTAGENTRY_H
#define KEP_BASE_KEPRTAGENTRY_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagEntry.h"

class KepRString;

// An entry has one of two forms:
//  - string form (kind 0): it holds a reference on a KepString name;
//  - 8-bit form (kind 99): it points at zero-terminated 8-bit text that it does
//    not own: a probe that compares with names by 8-bit text without building a
//    string; the text must outlive its use.
// Entries order by name (see compare()), which is how a namespace keeps them in
// its ordered set.
//
// Thread safety: see KepTagEntry. The tag is an atomic word; the name is guarded
// by the entry's lock (bracketed bridges). The manager's own entries are named
// once, before any other thread can reach them, and are read without a lock.
class KEP_API KepRTagEntry : public KepRObject {
  KEP_BODY_IDENTITY(TagEntry, KepRObject)
  KEP_BODY_CREATE_ANOTHER(TagEntry)

 public:
  static constexpr int kKindString = 0;
  static constexpr int kKindText = 99;

  // An entry without a name, tag 0, string form.
  KepRTagEntry() noexcept;
  ~KepRTagEntry() override;

  KEP_METHODS_TagEntry(KEP_DECLARE_METHOD);

  // Switches to the 8-bit form over `text` (not copied, not owned); the string
  // name, if any, is released. Null text leaves an entry that orders like the
  // empty name.
  void set(signed char const* text);
  // 0 (string form) or 99 (8-bit form).
  int getKind() const noexcept { return kind; }
  // True when the name is the `count` units given, or the `count` bytes given
  // (each byte standing for the unit of its value).
  bool isNamed(unsigned short const* units, int count) const noexcept;
  bool isNamed(unsigned char const* bytes, int count) const noexcept;
  // The hash of the name (_KepTagNameIndex::hash).
  uint64_t nameHash() const noexcept;
  // The string body that the name handle holds, or null when the name is not a
  // string body of its own (no name, 8-bit form, a string object of a caller).
  KepRString* plainName() const noexcept;
  // Called as a range gives the entry its tag: renaming the entry from then on
  // tells the tag directories that their bodies may be stale.
  void placed() noexcept { inRange.store(true, std::memory_order_release); }

  // Negative, 0 or positive as `a`'s name orders before, equal to or after `b`'s:
  // unit by unit as unsigned 16-bit values, a shorter name before its longer
  // continuations; 8-bit text compares byte by byte (bytes unsigned) against the
  // units. Names are case-sensitive.
  static int compare(KepRTagEntry const* a, KepRTagEntry const* b) noexcept;

 private:
  // What the order compares, first so that a search touches one cache line of
  // the entry: the units of the name (string form) or the text (8-bit form),
  // and their count.
  unsigned short const* chars;
  signed char const* text;
  int length;
  int kind;
  std::atomic<int> tag;
  std::atomic<bool> inRange;
  // The body of `name` when it is a string; null otherwise.
  KepRString const* units;
  KepString name;
};

// The comparison function of a namespace's ordered set (both arguments are
// KepRTagEntry*): 1 when a's name orders strictly before b's, else 0.
KEP_API unsigned long _KepTagEntryComparator(void* a, void* b);

#endif  // KEP_BASE_KEPRTAGENTRY_H
