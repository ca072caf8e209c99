#include "kep/xml/KepDOMImplementation.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMImplementation.h"

KEP_METHODS_DOMImplementation(KEP_DEFINE_BRIDGE)
    KEP_METHODS_DOMImplementation(KEP_DEFINE_HANDLE_METHOD)
