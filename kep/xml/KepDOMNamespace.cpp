#include "kep/xml/KepDOMNamespace.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMNamespace.h"

KEP_METHODS_DOMNamespace(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMNamespace(KEP_DEFINE_HANDLE_METHOD)
