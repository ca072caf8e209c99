// KepIntMap: a map from 32-bit integers to 32-bit integers.
#ifndef KEP_CONTAIN_KEPINTMAP_H
#define KEP_CONTAIN_KEPINTMAP_H

#include "kep/base/KepDefs.h"
#include "kep/contain/KepCompareFunction.h"

class _KepOrderedSetImpl;

// One entry of a KepIntMap. The map owns its entries.
struct KEP_API KepIntMapEntry {
  int key;
  int value;
};

// The map's default order: 1 when both entries are given and a's key is below
// b's (signed), else 0.
KEP_API unsigned long KepIntMapComparator(void* a, void* b);

// A map of int keys to int values, ordered by key (KepIntMapComparator) over a
// red-black tree; each key is present at most once. Lookups are logarithmic.
//
// - put(key, value): overwrites the value of a present key, or adds an entry;
//   answers the entry.
// - find(key): the entry of `key`, or null.
// - remove(key): deletes the entry and answers true; false when absent.
// - setComparator(fn): replaces the order (fn receives two KepIntMapEntry*);
//   the present entries are not reordered.
// Entries answered by put() and find() stay valid until their key is removed or
// the map is destroyed. The operations are virtual so that a derived map can
// change them; put() finds through the virtual find().
//
// Thread safety: none; the owner guards a map shared between threads.
class KEP_API KepIntMap {
 public:
  // An empty map.
  KepIntMap();
  // Deletes every entry.
  virtual ~KepIntMap();
  KepIntMap(KepIntMap const&) = delete;
  KepIntMap& operator=(KepIntMap const&) = delete;

  virtual void setComparator(KepCompareFunction compare);
  virtual int size();
  virtual unsigned long remove(int key);
  virtual KepIntMapEntry* find(int key);
  virtual KepIntMapEntry* put(int key, int value);

 protected:
  _KepOrderedSetImpl* set;
};

#endif  // KEP_CONTAIN_KEPINTMAP_H
