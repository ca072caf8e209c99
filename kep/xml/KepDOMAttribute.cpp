#include "kep/xml/KepDOMAttribute.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMAttribute.h"

KEP_METHODS_DOMAttribute(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMAttribute(KEP_DEFINE_HANDLE_METHOD)
