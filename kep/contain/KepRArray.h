// KepRArray: the body of KepArray.
#ifndef KEP_CONTAIN_KEPRARRAY_H
#define KEP_CONTAIN_KEPRARRAY_H

#include "kep/base/KepRObject.h"
#include "kep/contain/KepArray.h"
#include "kep/contain/_KepArrayImpl.h"

// Elements live in four inline slots until the array is first sized above four;
// from then on they live in a chained _KepArrayImpl and the inline slots stay
// unused (the switch is one-way). Each used position holds a heap handle made by
// the element's newBridge() and freed with freeBridge(); a null slot is an empty
// position. The destructor releases every element.
//
// Thread safety: none; see KepArray.
class KEP_API KepRArray : public KepRObject {
  KEP_BODY_IDENTITY(Array, KepRObject)

 public:
  // An empty array using its inline slots.
  KepRArray() noexcept;
  // Releases every element and the chained store.
  ~KepRArray() override;

  // True when `other` is an array equal to this one (see KepArray::equals).
  unsigned long equals(KepObject const& other) const override;
  // The empty string.
  KepString toString() const override;

  // True once the elements have moved to the chained store.
  bool isSpilled() const noexcept { return spill != nullptr; }

 private:
  static constexpr int kInlineSlots = 4;

  // The slot of position i, or null when i is out of range.
  KepObject** slotAt(int i) const;
  // Frees the handles in positions [from, to) of the chained store and empties
  // those positions.
  void releaseSpilled(int from, int to);

  // Number of elements while the inline slots are in use.
  int inlineCount;
  // Inline slots; only the first four ever hold elements.
  KepObject* inlineItems[kInlineSlots + 1];
  // The chained store, null until the array is first sized above four.
  _KepArrayImpl<KepObject*>* spill;

 public:
  // createAnother() and the operations of the table (see the handle class).
  KEP_BODY_CREATE_ANOTHER(Array)
  KEP_METHODS_ArrayOwn(KEP_DECLARE_METHOD)
};

#endif  // KEP_CONTAIN_KEPRARRAY_H
