// KepTagEntry: one name of the tag manager together with its tag.
#ifndef KEP_BASE_KEPTAGENTRY_H
#define KEP_BASE_KEPTAGENTRY_H

#include "kep/base/KepString.h"

// The operations of KepTagEntry, in the order of the body's virtual operations.
// Reading the name and both setters are bracketed by the body's lock.
//
//  getName()          the name; for an entry in 8-bit form (kind 99) a new string
//                     widened from its text. A null string when no name was set.
//  getTag()           the tag, 0 until one is set
//  set(name, kind)    holds `name` (a shared reference) in string form; the
//                     previous name is released. `kind` is recorded as given
//                     (0 is the string form); 99 is not accepted here and
//                     is recorded as 0, since only the 8-bit form uses it.
//  setTag(tag)        sets the tag
//
// Entries handed out by the tag manager (getEntry) are the manager's own: read
// them, never rename or retag them, or the manager's lookups go wrong.
// clang-format off
#define KEP_METHODS_TagEntry(X)                                                  \
  X(TagEntry, KepString, getName, (), (), const, 1)                              \
  X(TagEntry, int, getTag, (), (), const, 0)                                     \
  X(TagEntry, void, set, (KepString const& name, int kind), (name, kind), , 1)   \
  X(TagEntry, void, setTag, (int tag), (tag), , 1)
// clang-format on

// A handle on a name/tag pair (class "TagEntry", 0x4002f). Make one with
// KepGetObject(KepClassID::TagEntry, 0) or receive one from getEntry() of the
// tag manager or a namespace. A null handle answers a null name and tag 0.
//
// Thread safety: the bracketed operations take the entry's lock; an entry that
// several threads change needs no more than that.
class KEP_API KepTagEntry : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepTagEntry, KepObject)

 public:
  KEP_METHODS_TagEntry(KEP_DECLARE_METHOD);
};

KEP_METHODS_TagEntry(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPTAGENTRY_H
