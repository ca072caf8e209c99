#include "kep/xml/KepDOMWriter.h"

#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMWriter.h"

KEP_METHODS_DOMWriter(KEP_DEFINE_BRIDGE) KEP_METHODS_DOMWriter(KEP_DEFINE_HANDLE_METHOD)

    int KepDOMWriter::normalizedWrite(KepIOStream& stream, KepString const& text) {
  return KepRDOMWriter::normalizedWrite(stream, text);
}

void* KepDOMWriter::compileView(KepDOMDocument& view) { return KepRDOMWriter::compileView(view); }

void KepDOMWriter::freeView(void* view) { KepRDOMWriter::freeView(view); }

void KepDOMWriter::registerView(KepString const& service, KepString const& name, void* view) {
  KepRDOMWriter::registerView(service, name, view);
}
