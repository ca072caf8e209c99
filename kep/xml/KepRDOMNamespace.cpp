#include "kep/xml/KepRDOMNamespace.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepRDOMNode.h"

KEP_REGISTER_LIBRARY_CLASS(DOMNamespace);

KepString KepRDOMNamespace::getPrefix() const { return KepRDOMNode::nameOf(prefixID.load()); }

KepString KepRDOMNamespace::getURI() const { return KepRDOMNode::nameOf(uriID.load()); }

int KepRDOMNamespace::getPrefixID() const { return prefixID.load(); }

int KepRDOMNamespace::getURIID() const { return uriID.load(); }

void KepRDOMNamespace::setPrefix(KepString const& prefix) {
  prefixID.store(KepRDOMNode::tagOf(prefix));
}

void KepRDOMNamespace::setURI(KepString const& uri) { uriID.store(KepRDOMNode::tagOf(uri)); }
