#include "kep/xml/KepRXMLParser.h"

#include <expat.h>

#include <cstdio>
#include <memory>

#include "kep/base/KepFactory.h"
#include "kep/base/KepLogger.h"
#include "kep/io/KepIOStream.h"
#include "kep/xml/KepRDOMDocument.h"
#include "kep/xml/KepRDOMElement.h"
#include "kep/xml/_KepXMLParserData.h"

KEP_REGISTER_LIBRARY_CLASS(XMLParser);

namespace {

// Switches the tokenizer's reparse deferral off where it has one. The parse
// never sets the final flag, so a deferred piece at the end of a document
// would never be looked at again. Some distributions carry the switch in
// releases older than the one that introduced it, so its presence is
// detected rather than read from the version number: the first overload
// exists only when the tokenizer declares the function.
template <class Parser>
auto disableDeferral(Parser parser, int)
    -> decltype(XML_SetReparseDeferralEnabled(parser, XML_FALSE), void()) {
  XML_SetReparseDeferralEnabled(parser, XML_FALSE);
}

template <class Parser>
void disableDeferral(Parser, long) {}

// What the tokenizer reported about a failed parse.
struct ParseFailure {
  char const* text;
  int code;
  int line;
  int column;
  int byte;
};

ParseFailure failureOf(XML_Parser parser) {
  XML_Error code = XML_GetErrorCode(parser);
  char const* text = XML_ErrorString(code);
  return ParseFailure{text != nullptr ? text : "unknown error", static_cast<int>(code),
                      static_cast<int>(XML_GetCurrentLineNumber(parser)),
                      static_cast<int>(XML_GetCurrentColumnNumber(parser)),
                      static_cast<int>(XML_GetCurrentByteIndex(parser))};
}

// Records a failed parse for the calling thread: the error "XMLParserError"
// with the parameters "String", "Code", "Line", "Column" and "Byte". The
// failure goes to the log at error level in the simple parser's form.
void recordFailure(ParseFailure const& f) {
  char line[1000];
  std::snprintf(line, sizeof line, "XMLParserError: %s (code %d) at line %d, column %d, byte %d.",
                f.text, f.code, f.line, f.column, f.byte);
  KepLogger::logText(KepLogger::kError, line);
}

}  // namespace

KepRXMLParser::KepRXMLParser() noexcept : mode(0), handler(nullptr) {}

void KepRXMLParser::setStandardDOM() {
  int m = mode.load(std::memory_order_relaxed);
  while (!mode.compare_exchange_weak(m, (m | kStandardDOM) & ~kKepDOM)) {
  }
}

void KepRXMLParser::setKepDOM() {
  int m = mode.load(std::memory_order_relaxed);
  while (!mode.compare_exchange_weak(m, (m | kKepDOM) & ~kStandardDOM)) {
  }
}

void KepRXMLParser::setSubscribe() { mode.fetch_or(kSubscribe); }

void KepRXMLParser::setKepActions() { mode.fetch_or(kKepActions); }

KepDOMNode KepRXMLParser::buildObjects(KepIOStream& stream) {
  return buildObjects(stream, KepXPointer());
}

KepDOMNode KepRXMLParser::buildObjects(KepIOStream& stream, KepXPointer const& xpointer) {
  if (stream.isNull()) return KepDOMNode();
  auto* documentBody = new KepRDOMDocument();
  KepDOMNode document(static_cast<KepBridgeToObject*>(documentBody));
  KepXMLParser self(static_cast<KepBridgeToObject*>(this));
  _KepXMLParserData data(documentBody, xpointer, getMode(), getEventHandler(), self);

  XML_Memory_Handling_Suite const* defaultMemory = nullptr;
  XML_Char const separator[] = {':', 0};
  XML_Parser parser = XML_ParserCreate_MM(nullptr, defaultMemory, separator);
  if (parser == nullptr) return KepDOMNode();
  std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> owner(parser, XML_ParserFree);
  disableDeferral(parser, 0);
  data.install(parser);

  bool parsed = true;
  for (;;) {
    // The block is read straight into the tokenizer's own buffer.
    void* block = XML_GetBuffer(parser, kReadBlock);
    if (block == nullptr) {
      parsed = false;
      break;
    }
    int count = stream.read(static_cast<signed char*>(block), 0, kReadBlock);
    if (count < 0) break;
    if (count > kReadBlock) count = kReadBlock;
    if (XML_ParseBuffer(parser, count, XML_FALSE) == XML_STATUS_ERROR) {
      parsed = false;
      break;
    }
    if (count < kReadBlock) break;
  }
  if (!parsed) {
    recordFailure(failureOf(parser));
    return KepDOMNode();
  }
  if (data.failed()) return KepDOMNode();
  if (!data.wantsXPointer()) return document;
  return _KepDOMHandle<KepDOMNode>(data.rootFound());
}
