#include "kep/xml/KepXMLSimpleParser.h"

#include <expat.h>

#include <cstdio>

#include "kep/base/KepLogger.h"

namespace {

// The caller's callbacks, handed to the tokenizer as its user data.
struct SimpleCallbacks {
  void* user;
  KepXMLSimpleStart start;
  KepXMLSimpleEnd end;
  KepXMLSimpleChars chars;
};

void XMLCALL onStart(void* data, XML_Char const* name, XML_Char const** attributes) {
  auto* c = static_cast<SimpleCallbacks*>(data);
  c->start(c->user, name, attributes);
}

void XMLCALL onEnd(void* data, XML_Char const* name) {
  auto* c = static_cast<SimpleCallbacks*>(data);
  c->end(c->user, name);
}

void XMLCALL onChars(void* data, XML_Char const* text, int length) {
  auto* c = static_cast<SimpleCallbacks*>(data);
  c->chars(c->user, text, length);
}

void logParseError(XML_Parser parser) {
  char line[1000];
  std::snprintf(line, sizeof line, "XML Parser Error: %s at line %d, column %d, byte %d.\n",
                XML_ErrorString(XML_GetErrorCode(parser)),
                static_cast<int>(XML_GetCurrentLineNumber(parser)),
                static_cast<int>(XML_GetCurrentColumnNumber(parser)),
                static_cast<int>(XML_GetCurrentByteIndex(parser)));
  KepLogger::logText(KepLogger::kError, line);
}

}  // namespace

bool KepRXMLSimpleParserExecute(void* user, KepXMLSimpleRead read, KepXMLSimpleStart start,
                                KepXMLSimpleEnd end, KepXMLSimpleChars chars) {
  if (read == nullptr) return false;
  XML_Parser parser = XML_ParserCreate(nullptr);
  if (parser == nullptr) return false;
  SimpleCallbacks callbacks{user, start, end, chars};
  XML_SetUserData(parser, &callbacks);
  XML_SetElementHandler(parser, start != nullptr ? onStart : nullptr,
                        end != nullptr ? onEnd : nullptr);
  if (chars != nullptr) XML_SetCharacterDataHandler(parser, onChars);

  bool ok = true;
  for (bool last = false; ok && !last;) {
    // The block is read straight into the tokenizer's own buffer.
    auto* block = static_cast<char*>(XML_GetBuffer(parser, KEP_XML_SIMPLE_BLOCK));
    if (block == nullptr) {
      ok = false;
      break;
    }
    int count = read(user, block, 0, KEP_XML_SIMPLE_BLOCK);
    if (count < 0 || count > KEP_XML_SIMPLE_BLOCK) count = -1;
    last = count < KEP_XML_SIMPLE_BLOCK;
    if (XML_ParseBuffer(parser, count < 0 ? 0 : count, last ? 1 : 0) == XML_STATUS_ERROR) {
      logParseError(parser);
      ok = false;
    }
  }
  XML_ParserFree(parser);
  return ok;
}
