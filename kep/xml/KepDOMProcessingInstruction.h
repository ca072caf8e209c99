// KepDOMProcessingInstruction: handle on a processing instruction node.
#ifndef KEP_XML_KEPDOMPROCESSINGINSTRUCTION_H
#define KEP_XML_KEPDOMPROCESSINGINSTRUCTION_H

#include "kep/xml/KepDOMChildNode.h"

// The operations KepDOMProcessingInstruction adds to KepDOMChildNode.
//
//  getTarget()         the target: the node name
//  getData(), setData(s)
//                      the data (getNodeValue/setNodeValue)
// clang-format off
#define KEP_METHODS_DOMProcessingInstruction(X)                                      \
  X(DOMProcessingInstruction, KepString, getTarget, (), (), const, 0)                \
  X(DOMProcessingInstruction, KepString, getData, (), (), const, 0)                  \
  X(DOMProcessingInstruction, void, setData, (KepString const& data), (data), , 1)
// clang-format on

// A handle on a processing instruction (body KepRDOMProcessingInstruction, type
// code 11).
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMProcessingInstruction : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMProcessingInstruction, KepDOMChildNode)

 public:
  KEP_METHODS_DOMProcessingInstruction(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMProcessingInstruction(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMPROCESSINGINSTRUCTION_H
