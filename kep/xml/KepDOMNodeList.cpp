#include "kep/xml/KepDOMNodeList.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMNodeList.h"

KEP_METHODS_DOMNodeList(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMNodeList(KEP_DEFINE_HANDLE_METHOD)
