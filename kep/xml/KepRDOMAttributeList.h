// KepRDOMAttributeList: the body of KepDOMAttributeList, an element's attribute
// map.
#ifndef KEP_XML_KEPRDOMATTRIBUTELIST_H
#define KEP_XML_KEPRDOMATTRIBUTELIST_H

#include "kep/xml/KepDOMAttributeList.h"
#include "kep/xml/KepRDOMNamedNodeMap.h"

class KepRDOMElement;

// A named node map that takes only attributes, and only those that no other
// element holds. An attribute joining the map is linked to the map's element and
// moved to the element's document; leaving it, the link is cleared. Joining and
// leaving are noted as attribute changes of the element.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMAttributeList : public KepRDOMNamedNodeMap {
  KEP_BODY_IDENTITY(DOMAttributeList, KepRDOMNamedNodeMap)
  KEP_BODY_CREATE_ANOTHER(DOMAttributeList)

 public:
  KepRDOMAttributeList() noexcept = default;
  // A map whose array starts in `room` (see KepRDOMNamedNodeMap).
  KepRDOMAttributeList(KepRDOMNode** room, int roomSize) noexcept
      : KepRDOMNamedNodeMap(room, roomSize) {}

  KEP_METHODS_DOMAttributeList(KEP_DECLARE_METHOD)

      // The element, or null.
      KepRDOMElement* element() const noexcept;
  // The attributes lose their element, without change notes (it is dying).
  void ownerGone() override;

 protected:
  bool accepts(KepRDOMNode const& node) const override;
  void attached(KepRDOMNode& node) override;
  void detached(KepRDOMNode& node) override;
};

#endif  // KEP_XML_KEPRDOMATTRIBUTELIST_H
