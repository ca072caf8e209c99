#include "kep/xml/KepDOMCharacterData.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMCharacterData.h"

KEP_METHODS_DOMCharacterData(KEP_DEFINE_BRIDGE)
    KEP_METHODS_DOMCharacterData(KEP_DEFINE_HANDLE_METHOD)
