// KepDOMCharacterData: handle on a node that holds text (text, CDATA section,
// comment).
#ifndef KEP_XML_KEPDOMCHARACTERDATA_H
#define KEP_XML_KEPDOMCHARACTERDATA_H

#include "kep/xml/KepDOMChildNode.h"

// The operations KepDOMCharacterData adds to KepDOMChildNode (W3C CharacterData).
// Offsets and counts are UTF-16 units. An offset outside 0..getLength() is
// refused: the getter answers a null string, the changer changes nothing. A
// count reaching past the end stops at the end; a negative count is refused.
//
//  getData(), setData(s)   the text (getNodeValue/setNodeValue)
//  getLength()             the number of units
//  substringData(o, n)     n units from o
//  appendData(s)           adds s at the end
//  insertData(o, s)        inserts s at o
//  deleteData(o, n)        removes n units from o
//  replaceData(o, n, s)    replaces n units from o by s
//  isIgnorableWhitespace() 1 when the text is empty or holds only spaces, tabs,
//                          carriage returns and line feeds
// clang-format off
#define KEP_METHODS_DOMCharacterData(X)                                                       \
  X(DOMCharacterData, KepString, getData, (), (), const, 1)                                   \
  X(DOMCharacterData, void, setData, (KepString const& data), (data), , 1)                    \
  X(DOMCharacterData, int, getLength, (), (), const, 0)                                       \
  X(DOMCharacterData, KepString, substringData, (int offset, int count), (offset, count),     \
    const, 1)                                                                                 \
  X(DOMCharacterData, void, appendData, (KepString const& data), (data), , 1)                 \
  X(DOMCharacterData, void, insertData, (int offset, KepString const& data), (offset, data),  \
    , 1)                                                                                      \
  X(DOMCharacterData, void, deleteData, (int offset, int count), (offset, count), , 1)        \
  X(DOMCharacterData, void, replaceData, (int offset, int count, KepString const& data),      \
    (offset, count, data), , 1)                                                               \
  X(DOMCharacterData, unsigned long, isIgnorableWhitespace, (), (), const, 0)
// clang-format on

// A handle on a node holding text.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMCharacterData : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMCharacterData, KepDOMChildNode)

 public:
  KEP_METHODS_DOMCharacterData(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMCharacterData(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMCHARACTERDATA_H
