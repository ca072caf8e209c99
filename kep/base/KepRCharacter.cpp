#include "kep/base/KepRCharacter.h"

#include "kep/base/KepProcess.h"
#include "kep/base/KepString.h"

int KepRCharacter::getStaticClassID() { return KepNameToTag("KepCharacter"); }

int KepRCharacter::getClassID() const { return getStaticClassID(); }

int KepRCharacter::getKepClassID() const { return getStaticClassID(); }

int KepRCharacter::getActualClassID() const { return getStaticClassID(); }

unsigned long KepRCharacter::isOfType(int classId) const {
  int own = getStaticClassID();
  return (own != 0 && classId == own) || KepRObject::isOfType(classId);
}

KepObject KepRCharacter::createAnother() const { return KepObject(new KepRCharacter()); }

unsigned long KepRCharacter::equals(KepObject const& other) const {
  auto const* body = dynamic_cast<KepRCharacter const*>(other.getRealKepObj());
  return body != nullptr && body->value == value;
}

KepString KepRCharacter::toString() const { return KepString::valueOf(value); }
