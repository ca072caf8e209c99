#include "kep/xml/KepDOMExternalID.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMExternalID.h"

KEP_METHODS_DOMExternalID(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMExternalID(KEP_DEFINE_HANDLE_METHOD)
