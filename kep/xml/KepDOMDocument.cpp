#include "kep/xml/KepDOMDocument.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMDocument.h"

KEP_METHODS_DOMDocument(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMDocument(KEP_DEFINE_HANDLE_METHOD)
