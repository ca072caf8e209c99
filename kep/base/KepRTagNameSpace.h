// KepRTagNameSpace: the body of KepTagNameSpace.
#ifndef KEP_BASE_KEPRTAGNAMESPACE_H
#define KEP_BASE_KEPRTAGNAMESPACE_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagNameSpace.h"
#include "kep/base/KepTagRange.h"
#include "kep/contain/_KepArrayImpl.h"
#include "kep/contain/_KepOrderedSetImpl.h"

class KepRString;
class KepRTagEntry;
class KepRTagManager;

// Holds its name and URL, its ranges (owned, ordered by start), its entries in
// an ordered set by name (one reference on each), a probe entry reused for
// searches, the current range and the tag manager it belongs to (not counted:
// the manager keeps its namespaces alive and detaches them when it goes).
//
// Thread safety: every operation takes the tag lock.
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
  // not found). The 8-bit search uses the probe entry and builds no string.
  KepRTagEntry* find(signed char const* text, int& tag);
  KepRTagEntry* find(KepString const& name, int& tag);
  // find() by a string body (null finds nothing); the caller holds the tag lock.
  KepRTagEntry* findName(KepRString const* name, int& tag);

  // add(text, 1) that tells failure (false) from a name whose tag is 0.
  bool addName(signed char const* text, int& tag);

  // The manager this namespace belongs to. A namespace made on its own joins the
  // process's tag manager here (and is kept by it); null when there is none or
  // the manager has gone.
  KepRTagManager* getManager();
  // Called by the manager as it goes: the namespace keeps its names but can
  // place no more ranges.
  void detach() noexcept;

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
  // The entry equal to the probe, or null.
  KepRTagEntry* findProbe(int& tag);

  KepString name;
  KepString url;
  _KepArrayImpl<KepTagRange*> ranges;
  _KepOrderedSetImpl entries;
  KepRTagEntry* probe;
  KepTagRange* current;
  KepRTagManager* manager;
  bool detached;
};

#endif  // KEP_BASE_KEPRTAGNAMESPACE_H
