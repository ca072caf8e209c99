// Helpers of the writer tests: a stream that captures every write, and short
// ways to serialise a node into bytes.
#ifndef KEP_TESTS_XML_WRITERTESTSUPPORT_H
#define KEP_TESTS_XML_WRITERTESTSUPPORT_H

#include <string>
#include <vector>

#include "DOMTestSupport.h"

namespace writertest {

// A caller's stream that keeps the bytes and the size of every write call.
class CaptureStream : public KepIOStream {
 public:
  CaptureStream() : KepIOStream(nullptr, KepClassIdArg(KepClassID::IOStream)) {}
  unsigned long isBridge() const override { return 0; }
  using KepIOStream::write;
  int write(signed char* buffer, int offset, int length) override {
    bytes.append(reinterpret_cast<char const*>(buffer) + offset, static_cast<size_t>(length));
    calls.push_back(length);
    return length;
  }
  std::string bytes;
  std::vector<int> calls;
};

inline KepDOMWriter newWriter() { return KepDOMWriter(KepGetObject(KepClassID::DOMWriter, 0)); }

// The bytes `writer` (a fresh one by default) produces for `node`.
inline std::string xml(KepDOMNode node, KepDOMWriter writer = newWriter()) {
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  writer.serializeAsXML(node, stream);
  return capture->bytes;
}

// A string of UTF-16 units.
inline KepString units(std::u16string const& text) {
  std::vector<unsigned short> buffer(text.begin(), text.end());
  buffer.push_back(0);
  return KepString(buffer.data(), 0, static_cast<int>(text.size()));
}

}  // namespace writertest

#endif  // KEP_TESTS_XML_WRITERTESTSUPPORT_H
