// KepRTagManager: the body of KepTagManager.
#ifndef KEP_BASE_KEPRTAGMANAGER_H
#define KEP_BASE_KEPRTAGMANAGER_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepTagManager.h"
#include "kep/base/_KepTagIndex.h"
#include "kep/contain/_KepArrayImpl.h"

class KepRTagEntry;
class KepRTagNameSpace;

// Holds its namespaces (heap handles, in the order made), the ranges of all of
// them ordered by start, the current namespace (one reference) and the next free
// tag, from which unplaced ranges take their blocks (0x40000 at construction).
// Construction makes the first namespace, with empty name and URL, current.
//
// Besides the range lists, the manager keeps a directory of the names by tag,
// filled as its own ranges take names. tagToName reads it without a lock for as
// long as the lists hold only ranges that the manager and its namespaces made
// themselves (where one range per tag is certain) and no entry holding a tag was
// renamed; after a caller enters a range of its own, or moves a listed one, it
// searches the lists under the tag lock.
//
// Thread safety: every change takes the tag lock; nameToTag and tagToName read
// without it.
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
  KepRTagNameSpace* getNameSpace() const noexcept {
    return current.load(std::memory_order_acquire);
  }
  // The entry of `tag` among all ranges by searching the lists, or null. The
  // caller holds the tag lock.
  KepRTagEntry* entryOf(int tag);
  // Takes in a namespace made elsewhere, keeping it alive with this manager.
  void adopt(KepRTagNameSpace* ns);
  // Enters `range` into the list of all ranges as addRange() does, for the
  // manager's and its namespaces' own ranges.
  int listRange(KepTagRange* range);
  // Lists the name of `entry` in the directory under `tag`. The caller holds the
  // tag lock.
  void indexEntry(int tag, KepRTagEntry* entry);
  // From now on tagToName searches the range lists.
  void stopIndexing() noexcept;

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
  std::atomic<KepRTagNameSpace*> current;
  int nextTag;
  // False once the directory may disagree with a search of the lists.
  std::atomic<bool> indexing;
  _KepTagDirectory directory;
};

#endif  // KEP_BASE_KEPRTAGMANAGER_H
