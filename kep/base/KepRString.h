// KepRString: the body of KepString.
#ifndef KEP_BASE_KEPRSTRING_H
#define KEP_BASE_KEPRSTRING_H

#include <cstddef>

#include "kep/base/KepRObject.h"
#include "kep/base/KepString.h"

// The body and its units are one allocation: the units follow the body object in
// the same block, always with a terminating zero unit. Freeing the string frees
// the block in one step.
//
// Thread safety: immutable after construction.
class KEP_API KepRString : public KepRObject {
  KEP_BODY_IDENTITY(String, KepRObject)

 public:
  // The empty string.
  KepRString() noexcept;

  // A new body holding `n` units copied from `units` (n <= 0 or null units give
  // the empty string). Null when the block cannot be allocated.
  static KepRString* create(unsigned short const* units, int n);
  // A new body holding `n` bytes of 8-bit text widened to units.
  static KepRString* createFromBytes(unsigned char const* bytes, int n);
  // A new body of `n` units left for the caller to fill (the terminator is set).
  static KepRString* allocate(int n);

  // The number of bytes of zero-terminated `text` that the constructors copy from
  // `offset` for `count` (-1: the rest of the text); never reaches past the zero
  // byte. A negative offset is set to 0. 0 for null text.
  static int byteSpan(unsigned char const* text, int& offset, int count);
  // The same for UTF-16 units: `count` itself when it is positive, the rest of
  // the zero-terminated text for -1, else 0.
  static int unitSpan(unsigned short const* units, int& offset, int count);

  // The string body behind a handle, or null when the handle is null or targets
  // another class.
  static KepRString const* of(KepObject const& handle);

  KepObject createAnother() const override;
  unsigned long equals(KepObject const& other) const override;
  KepString toString() const override;

  KEP_METHODS_String(KEP_DECLARE_METHOD);
  using KepRObject::equals;

  // The units (always followed by a zero unit) and their count.
  unsigned short const* units() const noexcept { return characters; }
  unsigned short* mutableUnits() noexcept { return characters; }
  int unitCount() const noexcept { return len; }

  // Bodies live in blocks sized for their units.
  static void* operator new(std::size_t size) noexcept;
  static void* operator new(std::size_t size, int units) noexcept;
  static void operator delete(void* p) noexcept;
  static void operator delete(void* p, int units) noexcept;

 protected:
  explicit KepRString(int n) noexcept;

  unsigned short* characters;
  int len;

 private:
  // A handle on this body.
  KepString self() const;
};

#endif  // KEP_BASE_KEPRSTRING_H
