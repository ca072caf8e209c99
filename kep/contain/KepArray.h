// KepArray: handle on an index-addressed array of objects.
#ifndef KEP_CONTAIN_KEPARRAY_H
#define KEP_CONTAIN_KEPARRAY_H

#include "kep/base/KepObject.h"

class KepArray;

// The operations of KepArray, in the order of the body's virtual operations. The
// last row overrides the root's equals and is split off so that the body can
// declare it as an override.
// clang-format off
#define KEP_METHODS_ArrayOwn(X)                                                           \
  X(Array, KepArray, clone, (), (), const, 0)                                             \
  X(Array, unsigned long, equals, (KepArray const& other), (other), const, 0)             \
  X(Array, int, hashCode, (), (), const, 0)                                               \
  X(Array, void, copy, (KepArray const& other), (other), , 0)                             \
  X(Array, unsigned long, isEmpty, (), (), const, 0)                                      \
  X(Array, int, size, (), (), const, 0)                                                   \
  X(Array, KepObject, at, (int index), (index), const, 0)                                 \
  X(Array, void, put, (int index, KepObject const& object), (index, object), , 0)         \
  X(Array, void, clear, (), (), , 0)                                                      \
  X(Array, KepObject, remove, (int index), (index), , 0)                                  \
  X(Array, void, addElement, (KepObject const& object), (object), , 0)                    \
  X(Array, void, insert, (int index, KepObject const& object), (index, object), , 0)      \
  X(Array, int, indexOf, (KepObject const& object), (object), const, 0)                   \
  X(Array, void, setSize, (int n), (n), , 0)
#define KEP_METHODS_ArrayOverride(X)                                                      \
  X(Array, unsigned long, equals, (KepObject const& other), (other), const, 0)
#define KEP_METHODS_Array(X) KEP_METHODS_ArrayOwn(X) KEP_METHODS_ArrayOverride(X)
// clang-format on

// An array of objects addressed by index 0 ... size() - 1. Every position holds
// its own handle on the element (so the array keeps the element alive) or is
// empty; an empty position reads as a null object. Copies are shallow: the array
// shares the elements' bodies, it never copies them.
//
// Up to four elements live inside the array's body; sizing it above four once
// moves the elements into a chained store of groups of 32, where they stay even
// when the array shrinks again.
//
// Out-of-range indexes are silent: at() and remove() answer a null object, put()
// does nothing, and the array never grows except through setSize(), addElement()
// and insert(). insert() with an index below 0 or above size() changes nothing
// and records the error "Index<0" or "Index > size()" on the calling thread
// (see KepThread), with the values "Index" and "Size".
//
// - clone(): a new array holding the same elements.
// - equals(other): true when `other` is an array of the same size whose elements
//   are pairwise equal by the elements' own equals() (a null element equals
//   nothing). equals(KepObject) answers false for anything but an array.
// - hashCode(): always 0. toString(): the empty string.
// - copy(other): replaces the contents with `other`'s elements (nothing when
//   `other` is null or this same array).
// - put(i, object): replaces element i (a null object empties the position).
// - remove(i): answers element i and closes the gap.
// - addElement(object): appends. insert(i, object): opens a gap at i; i ==
//   size() appends.
// - indexOf(object): the first index whose element equals `object`; -1 when
//   there is none or `object` is null.
// - setSize(n): truncates (releasing the dropped elements) or pads with empty
//   positions; a negative n counts as 0.
//
// Thread safety: none of the operations lock; share an array between threads
// only under the owner's lock.
class KEP_API KepArray : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepArray, KepObject)

 public:
  KEP_METHODS_Array(KEP_DECLARE_METHOD)
};

KEP_METHODS_Array(KEP_DECLARE_BRIDGE)

#endif  // KEP_CONTAIN_KEPARRAY_H
