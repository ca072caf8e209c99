// KepDOM: every handle class of the DOM, for code that walks and builds trees.
// The individual headers only declare the handle classes their operations
// answer; including this one makes them all complete.
#ifndef KEP_XML_KEPDOM_H
#define KEP_XML_KEPDOM_H

#include "kep/base/KepDate.h"
#include "kep/xml/KepDOMAttribute.h"
#include "kep/xml/KepDOMAttributeList.h"
#include "kep/xml/KepDOMCDATASection.h"
#include "kep/xml/KepDOMCharacterData.h"
#include "kep/xml/KepDOMChildNode.h"
#include "kep/xml/KepDOMComment.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMDocumentFragment.h"
#include "kep/xml/KepDOMDocumentType.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepDOMEntity.h"
#include "kep/xml/KepDOMEntityReference.h"
#include "kep/xml/KepDOMExternalID.h"
#include "kep/xml/KepDOMImplementation.h"
#include "kep/xml/KepDOMNamedNodeMap.h"
#include "kep/xml/KepDOMNamespace.h"
#include "kep/xml/KepDOMNode.h"
#include "kep/xml/KepDOMNodeList.h"
#include "kep/xml/KepDOMNotation.h"
#include "kep/xml/KepDOMParentNode.h"
#include "kep/xml/KepDOMProcessingInstruction.h"
#include "kep/xml/KepDOMRepeatingNodeList.h"
#include "kep/xml/KepDOMText.h"
#include "kep/xml/KepDOMWriter.h"
#include "kep/xml/KepVisitor.h"
#include "kep/xml/KepXMLParser.h"
#include "kep/xml/KepXPointer.h"

#endif  // KEP_XML_KEPDOM_H
