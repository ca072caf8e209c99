// Helpers of the XML parser tests: parsing text, a stream that records its
// reads, and an element class the factory makes for "dt" attributes.
#ifndef KEP_TESTS_XML_PARSERTESTSUPPORT_H
#define KEP_TESTS_XML_PARSERTESTSUPPORT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DOMTestSupport.h"
#include "kep/Kep.h"

namespace parsetest {

inline KepXMLParser newParser() { return KepXMLParser(KepGetObject(KepClassID::XMLParser, 0)); }

// The bytes of `xml` as a stream (each byte one unit, narrowed back on reading).
inline KepStringBufferIOStream streamOf(std::string const& xml) {
  return KepStringBufferIOStream(KepString(xml.data(), 0, static_cast<int>(xml.size())));
}

inline KepDOMNode parse(std::string const& xml, KepXMLParser parser = newParser()) {
  KepStringBufferIOStream stream = streamOf(xml);
  return parser.buildObjects(stream);
}

inline KepDOMElement root(std::string const& xml, KepXMLParser parser = newParser()) {
  return KepDOMDocument(parse(xml, parser)).getDocumentElement();
}

// A memory stream that records the count each read answered.
class RecordingStream : public KepRStringBufferIOStream {
 public:
  std::vector<int> reads;
  int read(signed char* buffer, int offset, int length) override {
    int n = KepRStringBufferIOStream::read(buffer, offset, length);
    reads.push_back(n);
    return n;
  }
  using KepRStringBufferIOStream::read;
};

// An element class registered with the factory under the name "ParserWidget",
// which records what the parser hands it when its content is complete.
class Widget : public KepRDOMElement {
 public:
  static int classId() { return KepNameToTag("ParserWidget"); }
  int getClassID() const override { return classId(); }
  int getActualClassID() const override { return classId(); }
  unsigned long isOfType(int id) const override {
    return id == classId() || KepRDOMElement::isOfType(id);
  }
  KepObject createAnother() const override { return KepObject(new Widget()); }
  void _endFromXML(int mode, KepXMLParser& parser) override {
    endMode = mode;
    childrenAtEnd = childTotal();
    parserAtEnd = parser.getRealKepObj();
  }
  int endMode = -1;
  int childrenAtEnd = -1;
  KepRObject* parserAtEnd = nullptr;

  // Registers the class once per process.
  static void registerOnce() {
    static bool done = [] {
      KepFactory::registerInternalClass(classId(), new KepObject(), new Widget());
      return true;
    }();
    (void)done;
  }
};

}  // namespace parsetest

#endif  // KEP_TESTS_XML_PARSERTESTSUPPORT_H
