#include "kep/xml/KepDOMDocumentType.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMDocumentType.h"

KEP_METHODS_DOMDocumentType(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMDocumentType(KEP_DEFINE_HANDLE_METHOD)
