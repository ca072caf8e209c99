// KepRDOMDocumentType: the body of KepDOMDocumentType.
#ifndef KEP_XML_KEPRDOMDOCUMENTTYPE_H
#define KEP_XML_KEPRDOMDOCUMENTTYPE_H

#include "kep/xml/KepDOMDocumentType.h"
#include "kep/xml/KepRDOMParentNode.h"

class KepRDOMNamedNodeMap;

// A document type: type code 4, named by the document element it declares,
// with counted maps of entities and notations (made on first use). It takes no
// children.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMDocumentType : public KepRDOMParentNode {
  KEP_BODY_IDENTITY(DOMDocumentType, KepRDOMParentNode)
  KEP_BODY_CREATE_ANOTHER(DOMDocumentType)

 public:
  KepRDOMDocumentType() noexcept;
  ~KepRDOMDocumentType() override;

  KEP_METHODS_DOMDocumentType(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  // The copy shares the declared entity and notation nodes in maps of its own.
  void copyInto(KepRDOMNode& copy) const override;

 protected:
  bool acceptsChild(KepRDOMNode const& child, KepRDOMNode const* replacing) const override;

 private:
  KepRDOMNamedNodeMap* map(KepRDOMNamedNodeMap*& slot) const;

  mutable KepRDOMNamedNodeMap* entities;
  mutable KepRDOMNamedNodeMap* notations;
};

#endif  // KEP_XML_KEPRDOMDOCUMENTTYPE_H
