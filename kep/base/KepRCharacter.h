// KepRCharacter: the body of a KepCharacter object, one UTF-16 unit.
#ifndef KEP_BASE_KEPRCHARACTER_H
#define KEP_BASE_KEPRCHARACTER_H

#include "kep/base/KepCharacter.h"
#include "kep/base/KepRObject.h"

// The class id is the tag of the name "KepCharacter" (KepNameToTag); it is 0 while
// the process has no tag manager, and the class is then not of any type but the
// root. The class is not registered with the factory.
//
// Thread safety: immutable after construction.
class KEP_API KepRCharacter : public KepRObject {
 public:
  explicit KepRCharacter(unsigned short unit = 0) noexcept : value(unit) {}

  static int getStaticClassID();
  int getClassID() const override;
  int getKepClassID() const override;
  int getActualClassID() const override;
  unsigned long isOfType(int classId) const override;

  KepObject createAnother() const override;
  // True for another character object holding the same unit.
  unsigned long equals(KepObject const& other) const override;
  // The one-unit string.
  KepString toString() const override;

  unsigned short charValue() const noexcept { return value; }

 private:
  unsigned short const value;
};

#endif  // KEP_BASE_KEPRCHARACTER_H
