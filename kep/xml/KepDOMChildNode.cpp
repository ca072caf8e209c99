#include "kep/xml/KepDOMChildNode.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMChildNode.h"

KEP_METHODS_DOMChildNode(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMChildNode(KEP_DEFINE_HANDLE_METHOD)
