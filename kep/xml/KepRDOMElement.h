// KepRDOMElement: the body of KepDOMElement.
#ifndef KEP_XML_KEPRDOMELEMENT_H
#define KEP_XML_KEPRDOMELEMENT_H

#include <cstdint>

#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMParentNode.h"
#include "kep/xml/_KepDOMValue.h"

class KepRDOMAttribute;
class KepRDOMAttributeList;
class KepRDOMNodeList;

// An element holds, besides its children, its attribute map (made on first
// use, counted), its data type code and its value cached in native form
// (_KepDOMValue, made when a value is first cached: most elements never have
// one). The cache is dropped whenever the children change; the value setters
// write the text child first and the cache after it.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMElement : public KepRDOMParentNode {
  KEP_BODY_IDENTITY(DOMElement, KepRDOMParentNode)
  KEP_BODY_CREATE_ANOTHER(DOMElement)

 public:
  KepRDOMElement() noexcept;
  // Releases the attribute map; the attributes lose their element.
  ~KepRDOMElement() override;

  // The element's operations in their slots: the three parts of the handle's
  // table (the bridged operations), with the unbridged ones between them.
  // clang-format off
  KEP_METHODS_DOMElementValues(KEP_DECLARE_METHOD)
  // A hook for the classes that take part in event dispatch; does nothing here.
  virtual void registerKnownInterest();
  KEP_METHODS_DOMElementPaths(KEP_DECLARE_METHOD)
  // The name of a data type code: 1 "int", 2 "string", 3 "date", 4 "object",
  // 5 "boolean", 6 "i8", 7 "r4", 8 "float"; a null string for any other code.
  virtual KepString _getDataTypeStr(int type) const;
  KEP_METHODS_DOMElementNames(KEP_DECLARE_METHOD)
  // Appends to `into` the elements below this one whose node ID is `tag` (0:
  // every element), in document order, down to `depth` levels (<= 0: no limit).
  virtual void buildElementsByTagName(KepRDOMNodeList& into, int tag, int depth) const;
  // Appends to `into` the elements of this subtree, this one included, whose
  // attribute "id" has the value `id`, in document order.
  virtual void buildElementsByID(KepRDOMNodeList& into, KepString const& id) const;
  // clang-format on

  // The element's value text (getString()).
  KepString toString() const override;
  int getNodeType() const override;
  KepDOMNamedNodeMap getAttributes() override;
  unsigned long hasAttributes() const override;
  int transferAttribs(KepDOMNode& to) override;
  KepRDOMElement* asElement() const noexcept override;
  // The writer's hook: a plain element whose data type has a name (1..8) and
  // that has no attribute "dt" writes " dt=\"<type name>\"" after its
  // attributes, when the writer's attribute filter lets "dt" through; answers
  // 0 at every state but the transform check.
  unsigned long serializeAsXML(KepDOMWriter& writer) override;
  void adoptOne(_KepDOMDocAnchor* anchor) override;
  void copyInto(KepRDOMNode& copy) const override;
  void childrenChanged() override;

  // --- Element operations without a bridge -------------------------------------

  // What _getDataTypeStr() answers.
  static KepString dataTypeName(int type);

  // The attribute map, made on first use; or null when none was made yet.
  KepRDOMAttributeList* attributeList();
  // Makes `list` (new, empty, not counted yet) the attribute map of this
  // element, which has none yet.
  void adoptAttributeList(KepRDOMAttributeList* list);
  KepRDOMAttributeList* existingAttributes() const noexcept { return attributes; }
  // The attribute named `tag`, or of that URI and local name; null when none.
  KepRDOMAttribute* findAttribute(int tag) const;
  KepRDOMAttribute* findAttributeNS(int uriTag, int localTag) const;
  // Occurrence `n` of the named value `tag`, or null.
  KepRDOMElement* occurrence(int tag, int n) const;
  // Appends a new empty plain element named `tag` and answers it.
  KepRDOMElement* appendNewElement(int tag);
  // Makes `value` this element's content and cached value, with data type
  // `type`.
  void storeValue(_KepDOMValue const& value, int type);
  // The cached value; an empty one when nothing is cached.
  _KepDOMValue const& cachedValue() const noexcept {
    return value != nullptr ? *value : _KepDOMValue::none();
  }
  bool preservesSpace() const noexcept { return preserveSpace; }
  // The value as GMT seconds since 1970, when it is numeric (a cached number or
  // date, or text that starts like a number); false otherwise.
  bool dateSeconds(uint32_t& seconds) const;

 private:
  // setAttributeNode(NS): puts the attribute in the map, recording a refusal
  // as `method`.
  KepDOMAttribute putAttributeNode(KepDOMAttribute const& newAttr, bool byNS, char const* method);
  // The common path of the typed setters.
  KepDOMElement store(int tag, int occurrence, _KepDOMValue const& value, int type);
  // The text of the text children, joined.
  KepString childText() const;
  // Makes `cached` the cached value.
  void cache(_KepDOMValue const& cached);

  KepRDOMAttributeList* attributes;
  int32_t dataType;
  bool preserveSpace;
  // The cached value, or null.
  _KepDOMValue* value;
};

#endif  // KEP_XML_KEPRDOMELEMENT_H
