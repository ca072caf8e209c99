// KepRDOMAttribute: the body of KepDOMAttribute.
#ifndef KEP_XML_KEPRDOMATTRIBUTE_H
#define KEP_XML_KEPRDOMATTRIBUTE_H

#include "kep/xml/KepDOMAttribute.h"
#include "kep/xml/KepRDOMChildNode.h"

class KepRDOMElement;

// An attribute: type code 1, its value one string (held as a counted string
// body, none while empty: smaller than a handle). Its element is linked
// without a count (the element's attribute map counts the attribute) and is
// cleared when the attribute leaves the map or the element dies.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMAttribute : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMAttribute, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMAttribute)

 public:
  KepRDOMAttribute() noexcept : value(nullptr), element(nullptr) {}
  // Releases the value.
  ~KepRDOMAttribute() override;

  KEP_METHODS_DOMAttribute(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  KepString getNodeValue() const override;
  void setNodeValue(KepString const& value) override;
  // Takes the attribute out of its element.
  unsigned long remove() override;
  void copyInto(KepRDOMNode& copy) const override;

  KepRDOMElement* ownerElementBody() const noexcept { return element; }
  void setOwnerElement(KepRDOMElement* owner) noexcept { element = owner; }
  // The value itself (null while none was set), for readers that only look
  // at it.
  KepString valueRef() const;
  // The value's body itself (null while none was set), for readers that need
  // no handle.
  KepRObject const* valueBody() const noexcept { return value; }
  // Sets the value of an attribute nobody has seen yet, without notes.
  void initValue(KepString const& text) { assign(text); }
  // The same with a string body, whose reference (the caller's) the attribute
  // takes over.
  void adoptValue(KepRObject* body) noexcept {
    KepRObject* old = value;
    value = body;
    if (old != nullptr) old->release();
  }

 private:
  // Makes the body of `text` (none for a null handle) the value, counted.
  void assign(KepString const& text);

  KepRObject* value;
  KepRDOMElement* element;
};

#endif  // KEP_XML_KEPRDOMATTRIBUTE_H
