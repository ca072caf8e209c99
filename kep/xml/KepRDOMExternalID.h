// KepRDOMExternalID: the body of KepDOMExternalID.
#ifndef KEP_XML_KEPRDOMEXTERNALID_H
#define KEP_XML_KEPRDOMEXTERNALID_H

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMExternalID.h"

// Two strings, the public and the system identifier.
//
// Thread safety: the setters are bracketed; reading while another thread sets
// needs the caller's lock().
class KEP_API KepRDOMExternalID : public KepRObject {
  KEP_BODY_IDENTITY(DOMExternalID, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMExternalID)

 public:
  KepRDOMExternalID() noexcept = default;

  KEP_METHODS_DOMExternalID(KEP_DECLARE_METHOD)

      private : KepString publicId;
  KepString systemId;
};

#endif  // KEP_XML_KEPRDOMEXTERNALID_H
