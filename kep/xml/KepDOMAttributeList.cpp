#include "kep/xml/KepDOMAttributeList.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMAttributeList.h"

KEP_METHODS_DOMAttributeList(KEP_DEFINE_BRIDGE)
    KEP_METHODS_DOMAttributeList(KEP_DEFINE_HANDLE_METHOD)
