#include "kep/xml/KepRXMLParser.h"

#include <expat.h>

#include <memory>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepThread.h"
#include "kep/base/KepThreadError.h"
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

// Records a failed parse on the calling thread's error stack: the error
// "XMLParserError" with the parameters "String", "Code", "Line", "Column" and
// "Byte".
void recordFailure(ParseFailure const& f) {
  KepDOMElement error =
      KepSetThreadError(KepString("XMLParserError"), "xml/KepRXMLParser", __LINE__);
  error.set(KepString("String"), KepString(f.text));
  error.set(KepString("Code"), f.code);
  error.set(KepString("Line"), f.line);
  error.set(KepString("Column"), f.column);
  error.set(KepString("Byte"), f.byte);
}

// The calling thread's newest error, to tell errors recorded during a parse
// (by the stream, for example) from those that were there before.
KepObject newestError() {
  KepThread* thread = KepProcess::getCurrThread();
  return thread != nullptr ? KepObject(thread->getErrorObject()) : KepObject();
}

bool errorSince(KepObject const& before) {
  KepThread* thread = KepProcess::getCurrThread();
  return thread != nullptr && thread->errorOK() == 0 &&
         thread->getErrorObject().getRealKepObj() != before.getRealKepObj();
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

  KepObject errorBefore = newestError();
  bool parsed = true;
  bool streamFailed = false;
  for (;;) {
    // The block is read straight into the tokenizer's own buffer.
    void* block = XML_GetBuffer(parser, kReadBlock);
    if (block == nullptr) {
      parsed = false;
      break;
    }
    int count = stream.read(static_cast<signed char*>(block), 0, kReadBlock);
    if (errorSince(errorBefore)) {
      streamFailed = true;
      break;
    }
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
  if (streamFailed || data.failed() || errorSince(errorBefore)) return KepDOMNode();
  if (!data.wantsXPointer()) return document;
  return _KepDOMHandle<KepDOMNode>(data.rootFound());
}
