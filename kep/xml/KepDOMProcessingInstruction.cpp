#include "kep/xml/KepDOMProcessingInstruction.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMProcessingInstruction.h"

KEP_METHODS_DOMProcessingInstruction(KEP_DEFINE_BRIDGE)
    KEP_METHODS_DOMProcessingInstruction(KEP_DEFINE_HANDLE_METHOD)
