#include "kep/xml/KepDOMRepeatingNodeList.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMRepeatingNodeList.h"

KEP_METHODS_DOMRepeatingNodeList(KEP_DEFINE_BRIDGE)
    KEP_METHODS_DOMRepeatingNodeList(KEP_DEFINE_HANDLE_METHOD)
