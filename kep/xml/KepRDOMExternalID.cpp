#include "kep/xml/KepRDOMExternalID.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMExternalID);

KepString KepRDOMExternalID::getPublicId() const { return publicId; }

KepString KepRDOMExternalID::getSystemId() const { return systemId; }

void KepRDOMExternalID::setPublicId(KepString const& id) { publicId = id; }

void KepRDOMExternalID::setSystemId(KepString const& id) { systemId = id; }

unsigned long KepRDOMExternalID::isPublic() const { return publicId.isNull() ? 0 : 1; }
