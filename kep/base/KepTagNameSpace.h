// KepTagNameSpace: a set of names with their tags and the tag ranges they use.
#ifndef KEP_BASE_KEPTAGNAMESPACE_H
#define KEP_BASE_KEPTAGNAMESPACE_H

#include "kep/base/KepString.h"
#include "kep/base/KepTagEntry.h"

class KepTagRange;

// The operations of KepTagNameSpace, in the order of the body's virtual
// operations. Bracketed by the body's lock: both add, addRange, nameToTag,
// setRange and tagToName.
//
//  add(name)               the tag of `name`, adding the name when it is new: it
//                          takes the next tag of the current range (a new block
//                          of 2048 tags when there is none or it is full).
//                          0 for a null or empty name, or when the namespace
//                          belongs to no tag manager.
//  add(text, create)       the same for zero-terminated 8-bit text (widened byte
//                          by byte); with `create` 0 an unknown name answers 0
//                          instead of being added. The search builds no string.
//  addRange(range)         enters a range into the namespace's list (ordered by
//                          start), placing an unplaced one first; the namespace
//                          then owns it. 1, or 0 when a range with the same start
//                          is listed already (the caller keeps `range`).
//  getEntry(tag)           the entry of a tag of this namespace, or null
//  getName(), getURL()     the namespace's name and URL (empty strings for the
//                          namespaces the tag manager creates)
//  nameToTag(name)         the tag of a known name, 0 for an unknown one (never
//                          adds)
//  setRange(range)         makes `range` the current range, where new names get
//                          their tags (the caller keeps it listed)
//  tagToName(tag)          the name of a tag of this namespace, or a null string
// clang-format off
#define KEP_METHODS_TagNameSpace(X)                                                     \
  X(TagNameSpace, int, add, (KepString const& name), (name), , 1)                       \
  X(TagNameSpace, int, add, (signed char const* text, unsigned long create),            \
    (text, create), , 1)                                                                \
  X(TagNameSpace, int, addRange, (KepTagRange* range), (range), , 1)                    \
  X(TagNameSpace, KepTagEntry, getEntry, (int tag), (tag), const, 0)                    \
  X(TagNameSpace, KepString, getName, (), (), const, 0)                                 \
  X(TagNameSpace, KepString, getURL, (), (), const, 0)                                  \
  X(TagNameSpace, int, nameToTag, (KepString const& name), (name), , 1)                 \
  X(TagNameSpace, void, setRange, (KepTagRange* range), (range), , 1)                   \
  X(TagNameSpace, KepString, tagToName, (int tag), (tag), const, 1)
// clang-format on

// A handle on a tag namespace (class "TagNameSpace", 0x40031). Names are
// case-sensitive and keep their tags for the life of the namespace. The tag
// manager makes namespaces (setNameSpace); one made by the factory joins the
// process's tag manager when it first adds a name.
//
// Thread safety: every change takes the tag lock, and so do getEntry and
// tagToName; finding a known name takes none. Namespaces may be used from any
// thread.
class KEP_API KepTagNameSpace : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepTagNameSpace, KepObject)

 public:
  KEP_METHODS_TagNameSpace(KEP_DECLARE_METHOD);
};

KEP_METHODS_TagNameSpace(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPTAGNAMESPACE_H
