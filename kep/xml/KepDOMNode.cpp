#include "kep/xml/KepDOMNode.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMNode.h"

KEP_METHODS_DOMNode(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMNode(KEP_DEFINE_HANDLE_METHOD)
