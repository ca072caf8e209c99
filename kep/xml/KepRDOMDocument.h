// KepRDOMDocument: the body of KepDOMDocument.
#ifndef KEP_XML_KEPRDOMDOCUMENT_H
#define KEP_XML_KEPRDOMDOCUMENT_H

#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepRDOMDocumentFragment.h"

// A document: type code 5, named "#document". It makes its anchor record
// (_KepDOMDocAnchor) at construction; the nodes it makes or adopts refer to the
// record, and the destructor clears it before the tree is released, so nodes
// that outlive the document see no owner document.
//
// A document takes at most one element and one document type as children,
// besides comments and processing instructions; no text.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMDocument : public KepRDOMDocumentFragment {
  KEP_BODY_IDENTITY(DOMDocument, KepRDOMDocumentFragment)
  KEP_BODY_CREATE_ANOTHER(DOMDocument)

 public:
  KepRDOMDocument();
  ~KepRDOMDocument() override;

  KEP_METHODS_DOMDocument(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  // A document has no owner document.
  KepRDOMDocument* getOwnerRDocument() const override;
  _KepDOMDocAnchor* childAnchor() const noexcept override;
  // Documents do not move to other documents.
  void adoptOne(_KepDOMDocAnchor* anchor) override;

  // The anchor record of this document.
  _KepDOMDocAnchor* anchor() const noexcept { return self; }

 protected:
  int defaultNodeID() const override;
  bool acceptsChild(KepRDOMNode const& child, KepRDOMNode const* replacing) const override;
  bool acceptsFragment(KepRDOMParentNode const& fragment,
                       KepRDOMNode const* replacing) const override;

 private:
  // A handle on a new body that belongs to this document.
  template <class H, class B>
  H made(B* body) const;
  // A handle on a new body named by a namespace-qualified name; null when the
  // name is refused, which `method` records.
  template <class H, class B>
  H madeNS(KepString const& uri, KepString const& qualifiedName, char const* method) const;
  // The child of `type`, or null.
  KepRDOMNode* childOfType(int type) const;

  _KepDOMDocAnchor* self;
};

#endif  // KEP_XML_KEPRDOMDOCUMENT_H
