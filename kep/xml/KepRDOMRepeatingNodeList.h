// KepRDOMRepeatingNodeList: the body of KepDOMRepeatingNodeList.
#ifndef KEP_XML_KEPRDOMREPEATINGNODELIST_H
#define KEP_XML_KEPRDOMREPEATINGNODELIST_H

#include "kep/xml/KepDOMRepeatingNodeList.h"
#include "kep/xml/KepRDOMNodeList.h"

// A node list made live over the occurrences of one named value (see
// KepRDOMNodeList's live lists filtered by node ID).
//
// Thread safety: see KepDOMNodeList.
class KEP_API KepRDOMRepeatingNodeList : public KepRDOMNodeList {
  KEP_BODY_IDENTITY(DOMRepeatingNodeList, KepRDOMNodeList)
  KEP_BODY_CREATE_ANOTHER(DOMRepeatingNodeList)

 public:
  KepRDOMRepeatingNodeList() noexcept = default;

  KEP_METHODS_DOMRepeatingNodeList(KEP_DECLARE_METHOD)
};

#endif  // KEP_XML_KEPRDOMREPEATINGNODELIST_H
