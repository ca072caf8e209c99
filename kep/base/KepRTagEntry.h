// KepRTagEntry: the body of KepTagEntry.
#ifndef KEP_BASE_KEPRTAGENTRY_H
#define KEP_BASE_KEPRTAGENTRY_H

#include <atomic>

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagEntry.h"

class KepRString;

// An entry has one of two forms:
//  - string form (kind 0): it holds a reference on a KepString name;
//  - 8-bit form (kind 99): it points at zero-terminated 8-bit text that it does
//    not own. Namespaces use one such entry as a probe to search their names by
//    8-bit text without building a string; the text must outlive the search.
// Entries order by name (see compare()), which is how a namespace keeps them in
// its ordered set.
//
// Thread safety: see KepTagEntry. The tag is an atomic word; the name is guarded
// by the entry's lock (bracketed bridges) or, for the manager's own entries, by
// the tag lock.
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
  // The name as the string form holds it: the body of getName() without a new
  // reference, or null (no name, or 8-bit form).
  KepRString const* nameBody() const noexcept { return units; }

  // For searches: makes this string-form entry order like `name` without taking
  // a reference on it (`name` must outlive the search); borrow(nullptr) drops it.
  void borrow(KepRString const* name) noexcept;

  // Negative, 0 or positive as `a`'s name orders before, equal to or after `b`'s:
  // unit by unit as unsigned 16-bit values, a shorter name before its longer
  // continuations; 8-bit text compares byte by byte (bytes unsigned) against the
  // units. Names are case-sensitive.
  static int compare(KepRTagEntry const* a, KepRTagEntry const* b) noexcept;

  // Borrows `name` (as borrow()) given as its units and their count.
  void borrow(unsigned short const* units, int count) noexcept;

 private:
  // What the order compares, first so that a search touches one cache line of
  // the entry: the units of the name (string form) or the text (8-bit form),
  // and their count.
  unsigned short const* chars;
  signed char const* text;
  int length;
  int kind;
  std::atomic<int> tag;
  // The body of `name` or a borrowed string; null otherwise.
  KepRString const* units;
  KepString name;
};

// The comparison function of a namespace's ordered set (both arguments are
// KepRTagEntry*): 1 when a's name orders strictly before b's, else 0.
KEP_API unsigned long _KepTagEntryComparator(void* a, void* b);

#endif  // KEP_BASE_KEPRTAGENTRY_H
