// KepRDOMAttribute: the body of KepDOMAttribute.
#ifndef KEP_XML_KEPRDOMATTRIBUTE_H
#define KEP_XML_KEPRDOMATTRIBUTE_H

#include "kep/xml/KepDOMAttribute.h"
#include "kep/xml/KepRDOMChildNode.h"

class KepRDOMElement;

// An attribute: type code 1, its value one string. Its element is linked
// without a count (the element's attribute map counts the attribute) and is
// cleared when the attribute leaves the map or the element dies.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMAttribute : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMAttribute, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMAttribute)

 public:
  KepRDOMAttribute() noexcept;

  KEP_METHODS_DOMAttribute(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  KepString getNodeValue() const override;
  void setNodeValue(KepString const& value) override;
  // Takes the attribute out of its element.
  unsigned long remove() override;
  void copyInto(KepRDOMNode& copy) const override;

  KepRDOMElement* ownerElementBody() const noexcept { return element; }
  void setOwnerElement(KepRDOMElement* owner) noexcept { element = owner; }
  // The value itself, for readers that only look at it.
  KepString const& valueRef() const noexcept { return value; }
  // Sets the value of an attribute nobody has seen yet, without notes.
  void initValue(KepString const& text) { value = text; }

 private:
  KepString value;
  KepRDOMElement* element;
};

#endif  // KEP_XML_KEPRDOMATTRIBUTE_H
