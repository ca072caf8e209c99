// KepRTagNameSpace: the body of KepTagNameSpace.
#ifndef KEP_BASE_KEPRTAGNAMESPACE_H
#define KEP_BASE_KEPRTAGNAMESPACE_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagNameSpace.h"
#include "kep/base/KepTagRange.h"
#include "kep/base/_KepTagIndex.h"
#include "kep/contain/_KepArrayImpl.h"
#include "kep/contain/_KepOrderedSetImpl.h"

class KepRString;
class KepRTagEntry;
class KepRTagManager;

// Holds its name and URL, its ranges (owned, ordered by start), its entries in
// an ordered set by name (one reference on each) and in an index by name, the
// current range and the tag manager it belongs to (not counted: the manager keeps
// its namespaces alive and detaches them when it goes).
//
// Thread safety: every change takes the tag lock; finding a name by its text
// reads the name index and takes no lock.
class KEP_API KepRTagNameSpace : public KepRObject {
  KEP_BODY_IDENTITY(TagNameSpace, KepRObject)
  KEP_BODY_CREATE_ANOTHER(TagNameSpace)

 public:
  // A namespace with empty name and URL, belonging to no manager yet.
  KepRTagNameSpace();
  // A namespace of `manager` (may be null).
  KepRTagNameSpace(KepString const& name, KepString const& url, KepRTagManager* manager);
  // Deletes the ranges and releases the entries.
  ~KepRTagNameSpace() override;

  KEP_METHODS_TagNameSpace(KEP_DECLARE_METHOD);

  // The entry named by `text` / `name`, or null; `tag` receives its tag (0 when
  // not found). The 8-bit search builds no string.
  KepRTagEntry* find(signed char const* text, int& tag) const;
  KepRTagEntry* find(KepString const& name, int& tag) const;
  // find() by a string body (null finds nothing).
  KepRTagEntry* findName(KepRString const* name, int& tag) const;

  // add(text, 1) that tells failure (false) from a name whose tag is 0.
  bool addName(signed char const* text, int& tag);

  // The manager this namespace belongs to. A namespace made on its own joins the
  // process's tag manager here (and is kept by it); null when there is none or
  // the manager has gone.
  KepRTagManager* getManager();
  // The manager this namespace has joined, or null; unlike getManager() it does
  // not join one. The caller holds the tag lock.
  KepRTagManager* joinedManager() const noexcept { return manager; }
  // Called by the manager as it goes: the namespace keeps its names but can
  // place no more ranges.
  void detach() noexcept;
  // Enters `range` into this namespace's range list as addRange() does, for the
  // tag manager's own ranges.
  int listRange(KepTagRange* range);
  // True when a caller entered a range with addRange() before the namespace
  // joined a manager.
  bool hasOutsideRanges() const noexcept { return outside; }

  // The entry of `tag` among this namespace's ranges, or null. The caller holds
  // the tag lock.
  KepRTagEntry* entryOf(int tag);
  // The current range (null before the first name or table).
  KepTagRange* getRange() const noexcept { return current; }
  // The number of names and of ranges.
  int nameCount() const;
  int rangeCount() const { return ranges.size(); }

 private:
  // Gives a new entry named `name` (known to be absent) its tag; false when no
  // tag can be given.
  bool addNew(KepString const& name, int& tag);

  KepString name;
  KepString url;
  _KepArrayImpl<KepTagRange*> ranges;
  _KepOrderedSetImpl entries;
  _KepTagNameIndex index;
  KepTagRange* current;
  KepRTagManager* manager;
  bool detached;
  bool outside;
};

#endif  // KEP_BASE_KEPRTAGNAMESPACE_H
