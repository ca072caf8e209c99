#include "kep/xml/KepDOMElement.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMElement.h"

KEP_METHODS_DOMElement(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMElement(KEP_DEFINE_HANDLE_METHOD)
