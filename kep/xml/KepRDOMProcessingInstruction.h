// KepRDOMProcessingInstruction: the body of KepDOMProcessingInstruction.
#ifndef KEP_XML_KEPRDOMPROCESSINGINSTRUCTION_H
#define KEP_XML_KEPRDOMPROCESSINGINSTRUCTION_H

#include "kep/xml/KepDOMProcessingInstruction.h"
#include "kep/xml/KepRDOMChildNode.h"

// A processing instruction: type code 11, named by its target, its data one
// string.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMProcessingInstruction : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMProcessingInstruction, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMProcessingInstruction)

 public:
  KepRDOMProcessingInstruction() noexcept = default;

  KEP_METHODS_DOMProcessingInstruction(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  KepString getNodeValue() const override;
  void setNodeValue(KepString const& value) override;
  void copyInto(KepRDOMNode& copy) const override;
  // Sets the data of an instruction nobody has seen yet, without notes.
  void initData(KepString const& text) { data = text; }

 private:
  KepString data;
};

#endif  // KEP_XML_KEPRDOMPROCESSINGINSTRUCTION_H
