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

  // What the text constructors take of zero-terminated text from `offset` for
  // `count`: a string of `length` units whose first `readable` units come from the
  // text at `offset` and whose others are zero units.
  struct Span {
    int length;
    int readable;
  };
  // For 8-bit text. A count of -1 takes the length of the whole text measured from
  // its start, so with an offset the string runs past the text's terminating zero
  // by up to `offset` units; those read as zero, the bytes there are never read.
  // A positive count stops at the zero byte. A negative offset is set to 0; null
  // text gives nothing.
  static Span byteSpan(unsigned char const* text, int& offset, int count);
  // The same for UTF-16 units, except that a positive count is taken as given
  // (zero units inside it are kept).
  static Span unitSpan(unsigned short const* units, int& offset, int count);
  // A new body of span.length units: span.readable units copied (or bytes widened)
  // from `text`, then zero units. Null when the block cannot be allocated.
  static KepRString* createSpan(unsigned short const* text, Span span);
  static KepRString* createSpan(unsigned char const* text, Span span);

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
  explicit KepRString(int n) noexcept
      : characters(reinterpret_cast<unsigned short*>(this + 1)), len(n < 0 ? 0 : n) {
    characters[len] = 0;
  }

  unsigned short* characters;
  int len;

 private:
  // A handle on this body.
  KepString self() const;
};

#endif  // KEP_BASE_KEPRSTRING_H
