// KepRDOMImplementation: the body of KepDOMImplementation.
#ifndef KEP_XML_KEPRDOMIMPLEMENTATION_H
#define KEP_XML_KEPRDOMIMPLEMENTATION_H

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMImplementation.h"

// Stateless; makes documents.
//
// Thread safety: any thread.
class KEP_API KepRDOMImplementation : public KepRObject {
  KEP_BODY_IDENTITY(DOMImplementation, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMImplementation)

 public:
  KepRDOMImplementation() noexcept = default;

  KEP_METHODS_DOMImplementation(KEP_DECLARE_METHOD)
};

#endif  // KEP_XML_KEPRDOMIMPLEMENTATION_H
