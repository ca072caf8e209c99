// KepRDOMNamespace: the body of KepDOMNamespace.
#ifndef KEP_XML_KEPRDOMNAMESPACE_H
#define KEP_XML_KEPRDOMNAMESPACE_H

#include <atomic>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMNamespace.h"

// A prefix tag and a URI tag.
//
// Thread safety: the tags are atomic words.
class KEP_API KepRDOMNamespace : public KepRObject {
  KEP_BODY_IDENTITY(DOMNamespace, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMNamespace)

 public:
  KepRDOMNamespace() noexcept : prefixID(0), uriID(0) {}

  KEP_METHODS_DOMNamespace(KEP_DECLARE_METHOD)

      private : std::atomic<int> prefixID;
  std::atomic<int> uriID;
};

#endif  // KEP_XML_KEPRDOMNAMESPACE_H
