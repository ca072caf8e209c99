// KepTagManager: maps names to integer tags and back.
#ifndef KEP_BASE_KEPTAGMANAGER_H
#define KEP_BASE_KEPTAGMANAGER_H

#include "kep/base/KepString.h"
#include "kep/base/KepTagEntry.h"
#include "kep/base/KepTagNameSpace.h"
#include "kep/base/KepTagRange.h"

// The operations of KepTagManager, in the order of the body's virtual
// operations. All but getEntry and tagToName are bracketed by the body's lock.
//
//  add(name)              add(name) on the current namespace: the name's tag,
//                         adding the name when it is new (0 for a null or empty
//                         name)
//  add(text)              the same for zero-terminated 8-bit text; known names
//                         are found without building a string
//  addRange(range)        enters a range into the manager's list of all ranges,
//                         ordered by start (an unplaced range is placed first).
//                         1, or 0 when a range with that start is listed already.
//                         The list does not own ranges; their namespace does.
//  getEntry(tag)          the entry of a tag, or null
//  getNextRange(size)     answers the next free tag and moves it on by `size`
//                         (0 when the tags would run past the largest int)
//  loadTagTable(start, end, count, table)
//                         loads `count` names of `table` into a new range
//                         start..end of the current namespace: name i gets tag
//                         start + i (a name already known keeps its tag, and the
//                         names after it move up by one). The range stays the
//                         current range, so later names continue in it. Answers
//                         1; 0, loading nothing, when there is no current
//                         namespace, end < start, count < 0, the table or one of
//                         its names is null or empty, or start..end overlaps a
//                         listed range.
//  nameToTag(name)        the tag of a known name in the current namespace, 0 for
//                         an unknown name (never adds)
//  setNameSpace(name, url)
//                         searches the namespaces for `name` and `url`; when none
//                         matches, a new namespace (with empty name and URL: a
//                         namespace keeps no name) becomes the current one, so
//                         later names start afresh there. A matching namespace
//                         does not become current. Answers the current namespace.
//  tagToName(tag)         the name of a tag, or a null string
// clang-format off
#define KEP_METHODS_TagManager(X)                                                          \
  X(TagManager, int, add, (KepString const& name), (name), , 1)                            \
  X(TagManager, int, add, (signed char const* text), (text), , 1)                          \
  X(TagManager, int, addRange, (KepTagRange* range), (range), , 1)                         \
  X(TagManager, KepTagEntry, getEntry, (int tag), (tag), const, 0)                         \
  X(TagManager, int, getNextRange, (int size), (size), , 1)                                \
  X(TagManager, int, loadTagTable, (int start, int end, int count, KepTagTable const* table), \
    (start, end, count, table), , 1)                                                       \
  X(TagManager, int, nameToTag, (KepString const& name), (name), , 1)                      \
  X(TagManager, KepTagNameSpace, setNameSpace, (KepString const& name, KepString const& url), \
    (name, url), , 1)                                                                      \
  X(TagManager, KepString, tagToName, (int tag), (tag), const, 0)
// clang-format on

// A handle on a tag manager (class "TagManager", 0x40030). A tag is a signed
// 32-bit integer standing for a name: the start of the range that holds it plus
// the name's position there. The process has one tag manager, made by Kep::init
// (which loads the built-in vocabulary into it) and reached through KepProcess
// (nameToTag, tagToName) and KepNameToTag; KepGetObject(KepClassID::TagManager)
// makes a separate, empty one. Names are case-sensitive; a name keeps its tag for
// the life of its manager.
//
// Thread safety: every change takes the tag lock (lock 5 of the process
// shared-data store); nameToTag and tagToName read without it, since names and
// tags are only ever added. Managers may be used from any thread.
class KEP_API KepTagManager : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepTagManager, KepObject)

 public:
  KEP_METHODS_TagManager(KEP_DECLARE_METHOD);
};

KEP_METHODS_TagManager(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPTAGMANAGER_H
