#include "kep/xml/KepDOMNamedNodeMap.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMNamedNodeMap.h"

KEP_METHODS_DOMNamedNodeMap(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMNamedNodeMap(KEP_DEFINE_HANDLE_METHOD)
