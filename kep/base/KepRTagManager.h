// KepRTagManager: the body of KepTagManager.
#ifndef KEP_BASE_KEPRTAGMANAGER_H
#define KEP_BASE_KEPRTAGMANAGER_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagManager.h"
#include "kep/contain/_KepArrayImpl.h"

class KepRTagEntry;
class KepRTagNameSpace;

// Holds its namespaces (heap handles, in the order made), the ranges of all of
// them ordered by start, the current namespace (one reference) and the next free
// tag, from which unplaced ranges take their blocks (0x40000 at construction).
// Construction makes the first namespace, with empty name and URL, current.
//
// Thread safety: every operation takes the tag lock.
class KEP_API KepRTagManager : public KepRObject {
  KEP_BODY_IDENTITY(TagManager, KepRObject)
  KEP_BODY_CREATE_ANOTHER(TagManager)

 public:
  // The next free tag of a new manager.
  static constexpr int kFirstFreeTag = 0x40000;

  KepRTagManager();
  // Detaches and frees its namespaces (last first), forgets the ranges and
  // releases the current namespace.
  ~KepRTagManager() override;

  KEP_METHODS_TagManager(KEP_DECLARE_METHOD);

  // The process's tag manager (kept in slot 21 of the process store), or null
  // outside Kep::init ... Kep::destroy.
  static KepRTagManager* process() noexcept;
  // Makes the process's tag manager unless it exists; answers it. Called once
  // by the first Kep::init.
  static KepRTagManager* createProcessManager();
  // Empties slot 21 and drops the reference it held. Called by the last
  // Kep::destroy.
  static void destroyProcessManager();

  // The namespace with `name` and `url` by binary search over the namespaces
  // (names first, then URLs, by compareTo), or null; `index` receives the last
  // position probed (-1 when there is no namespace).
  KepRTagNameSpace* find(KepString const& name, KepString const& url, int& index);
  // The current namespace (not counted).
  KepRTagNameSpace* getNameSpace() const noexcept { return current; }
  // The entry of `tag` among all ranges, or null.
  KepRTagEntry* entryOf(int tag);
  // Takes in a namespace made elsewhere, keeping it alive with this manager.
  void adopt(KepRTagNameSpace* ns);

  // Observers: the next free tag, the number of namespaces and of ranges.
  int getNextTag() const;
  int nameSpaceCount() const;
  int rangeCount() const;

 private:
  // True when start..end shares a tag with a listed range.
  bool overlaps(int start, int end);
  void appendNameSpace(KepRTagNameSpace* ns);

  _KepArrayImpl<KepTagNameSpace*> namespaces;
  _KepArrayImpl<KepTagRange*> ranges;
  KepRTagNameSpace* current;
  int nextTag;
};

#endif  // KEP_BASE_KEPRTAGMANAGER_H
