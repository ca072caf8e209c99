#include "kep/xml/KepRDOMImplementation.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMDocumentType.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMDocument.h"

KEP_REGISTER_LIBRARY_CLASS(DOMImplementation);

KepDOMDocument KepRDOMImplementation::createDocument(KepString const& uri,
                                                     KepString const& qualifiedName,
                                                     KepDOMDocumentType const& doctype) {
  KepRDOMNode* type = KepRDOMNode::of(doctype);
  if (!doctype.isNull() &&
      (type == nullptr || type->getNodeType() != KepDOMNode::DOCUMENT_TYPE_NODE ||
       type->parentBody() != nullptr)) {
    return KepDOMDocument();  // WRONG_DOCUMENT_ERR
  }
  auto* document = new KepRDOMDocument();
  KepDOMDocument holder(static_cast<KepBridgeToObject*>(document));
  KepDOMElement root;
  if (!qualifiedName.isNull() && qualifiedName.length() > 0) {
    root = document->createElementNS(uri, qualifiedName);
    if (root.isNull()) return KepDOMDocument();  // NAMESPACE_ERR
  }
  if (type != nullptr) document->insertNode(type, nullptr);
  if (!root.isNull()) document->insertNode(KepRDOMNode::of(root), nullptr);
  return holder;
}
