// KepDOMRepeatingNodeList: handle on the live list of one repeated value of an
// element.
#ifndef KEP_XML_KEPDOMREPEATINGNODELIST_H
#define KEP_XML_KEPDOMREPEATINGNODELIST_H

#include "kep/xml/KepDOMNodeList.h"

class KepDOMElement;

// The operations KepDOMRepeatingNodeList adds to KepDOMNodeList. Once attached,
// the list is live and shows the occurrences of one named value of an element:
// its child elements of one node ID, in order (item(n) is get(tag, n)). The
// list's own changers act on the element's children as for a live child list,
// but append() places the node after the last occurrence.
//
//  attach(element, tag)    makes the list show `tag` under `element`; a null
//                          element or tag 0 detaches it (an empty, taken list)
//  getParentElement()      the element, or null
//  getTag(), setTag(tag)   the node ID shown
//  addOccurrence()         a new empty child element of the tag, placed after
//                          the last occurrence (at the end when there is none);
//                          null when detached
//  removeOccurrence(n)     removes and answers occurrence n; null when there is
//                          no such occurrence
//  clearOccurrences()      removes every occurrence; answers how many
// clang-format off
#define KEP_METHODS_DOMRepeatingNodeList(X)                                                    \
  X(DOMRepeatingNodeList, void, attach, (KepDOMElement const& element, int tag),             \
    (element, tag), , 1)                                                                        \
  X(DOMRepeatingNodeList, KepDOMElement, getParentElement, (), (), const, 0)                   \
  X(DOMRepeatingNodeList, int, getTag, (), (), const, 0)                                       \
  X(DOMRepeatingNodeList, void, setTag, (int tag), (tag), , 1)                                 \
  X(DOMRepeatingNodeList, KepDOMElement, addOccurrence, (), (), , 1)                           \
  X(DOMRepeatingNodeList, KepDOMElement, removeOccurrence, (int occurrence), (occurrence), , 1) \
  X(DOMRepeatingNodeList, int, clearOccurrences, (), (), , 1)
// clang-format on

// A handle on a repeating node list (body KepRDOMRepeatingNodeList, class
// 0x400d4), made by the factory and then attached.
//
// Thread safety: see KepDOMNodeList.
class KEP_API KepDOMRepeatingNodeList : public KepDOMNodeList {
  KEP_HANDLE_CONSTRUCTORS(KepDOMRepeatingNodeList, KepDOMNodeList)

 public:
  KEP_METHODS_DOMRepeatingNodeList(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMRepeatingNodeList(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMREPEATINGNODELIST_H
