#include "kep/xml/KepXMLParser.h"

#include "kep/io/KepIOStream.h"
#include "kep/xml/KepRXMLParser.h"

KEP_METHODS_XMLParser(KEP_DEFINE_BRIDGE) KEP_METHODS_XMLParser(KEP_DEFINE_HANDLE_METHOD)
