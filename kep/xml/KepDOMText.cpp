#include "kep/xml/KepDOMText.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMText.h"

KEP_METHODS_DOMText(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMText(KEP_DEFINE_HANDLE_METHOD)
