#include "kep/xml/KepDOMParentNode.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMParentNode.h"

KEP_METHODS_DOMParentNode(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMParentNode(KEP_DEFINE_HANDLE_METHOD)
