#include "kep/xml/KepDOMEntity.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMEntity.h"

KEP_METHODS_DOMEntity(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMEntity(KEP_DEFINE_HANDLE_METHOD)
