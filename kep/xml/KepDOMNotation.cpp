#include "kep/xml/KepDOMNotation.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMNotation.h"

KEP_METHODS_DOMNotation(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMNotation(KEP_DEFINE_HANDLE_METHOD)
