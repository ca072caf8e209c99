// KepRXPointer: the body of KepXPointer.
#ifndef KEP_XML_KEPRXPOINTER_H
#define KEP_XML_KEPRXPOINTER_H

#include "kep/base/KepRString.h"
#include "kep/xml/KepXPointer.h"

// A string body under the XPointer class. It adds no state: its units live in
// the same block behind the body, exactly as for KepRString, and every string
// operation is the string's.
//
// Thread safety: immutable after construction.
class KEP_API KepRXPointer : public KepRString {
  KEP_BODY_IDENTITY(XPointer, KepRString)

 public:
  // The empty XPointer.
  KepRXPointer() noexcept;

  // A new body holding `n` units copied from `units` (the empty path for n <= 0
  // or null units); null when the block cannot be allocated.
  static KepRXPointer* create(unsigned short const* units, int n);
  // A new body holding `n` bytes widened to units.
  static KepRXPointer* createFromBytes(unsigned char const* bytes, int n);
  // A new body holding the units of `path`; null for a null string.
  static KepRXPointer* copyOf(KepString const& path);

  KepObject createAnother() const override;

 private:
  explicit KepRXPointer(int n) noexcept;
};

#endif  // KEP_XML_KEPRXPOINTER_H
