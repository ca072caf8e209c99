// KepDOMExternalID: handle on the public and system identifiers of a
// declaration.
#ifndef KEP_XML_KEPDOMEXTERNALID_H
#define KEP_XML_KEPDOMEXTERNALID_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// The operations of KepDOMExternalID.
//
//  getPublicId(), getSystemId()        the identifiers; null strings when unset
//  setPublicId(s), setSystemId(s)      replace them (a null string unsets)
//  isPublic()                          1 when a public identifier is set (a
//                                      PUBLIC rather than a SYSTEM identifier)
// clang-format off
#define KEP_METHODS_DOMExternalID(X)                                                 \
  X(DOMExternalID, KepString, getPublicId, (), (), const, 0)                         \
  X(DOMExternalID, KepString, getSystemId, (), (), const, 0)                         \
  X(DOMExternalID, void, setPublicId, (KepString const& publicId), (publicId), , 1)  \
  X(DOMExternalID, void, setSystemId, (KepString const& systemId), (systemId), , 1)  \
  X(DOMExternalID, unsigned long, isPublic, (), (), const, 0)
// clang-format on

// A handle on an external identifier (body KepRDOMExternalID, class 0x40013),
// made by the factory.
//
// Thread safety: the setters are bracketed by the body's lock.
class KEP_API KepDOMExternalID : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMExternalID, KepObject)

 public:
  KEP_METHODS_DOMExternalID(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMExternalID(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMEXTERNALID_H
