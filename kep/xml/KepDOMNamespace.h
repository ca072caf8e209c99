// KepDOMNamespace: handle on a namespace binding, a prefix and a URI.
#ifndef KEP_XML_KEPDOMNAMESPACE_H
#define KEP_XML_KEPDOMNAMESPACE_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// The operations of KepDOMNamespace. Both parts are held as tags.
//
//  getPrefix(), getURI()           the names of the tags; null strings while 0
//  getPrefixID(), getURIID()       the tags
//  setPrefix(s), setURI(s)         set a tag from a name (added to the tag
//                                  manager; null or empty sets 0)
// clang-format off
#define KEP_METHODS_DOMNamespace(X)                                           \
  X(DOMNamespace, KepString, getPrefix, (), (), const, 0)                     \
  X(DOMNamespace, KepString, getURI, (), (), const, 0)                        \
  X(DOMNamespace, int, getPrefixID, (), (), const, 0)                         \
  X(DOMNamespace, int, getURIID, (), (), const, 0)                            \
  X(DOMNamespace, void, setPrefix, (KepString const& prefix), (prefix), , 1)  \
  X(DOMNamespace, void, setURI, (KepString const& uri), (uri), , 1)
// clang-format on

// A handle on a namespace binding (body KepRDOMNamespace, class 0x40017), made
// by the factory.
//
// Thread safety: the setters are bracketed by the body's lock.
class KEP_API KepDOMNamespace : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNamespace, KepObject)

 public:
  KEP_METHODS_DOMNamespace(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMNamespace(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMNAMESPACE_H
