// KepRXMLParser: the body of KepXMLParser.
#ifndef KEP_XML_KEPRXMLPARSER_H
#define KEP_XML_KEPRXMLPARSER_H

#include <atomic>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepXMLParser.h"
#include "kep/xml/KepXMLParserEventHandler.h"

// The parser body holds only its mode flags and the event handler; everything
// one parse needs lives in a _KepXMLParserData made for that call, so calls on
// several threads do not share state.
//
// Mode flags, handed to every built node's _endFromXML(mode, parser):
//  kStandardDOM (1)   no object building
//  kSubscribe (2), kKepActions (4), kKepDOM (8)
//                     set by setSubscribe(), setKepActions(), setKepDOM()
// setStandardDOM() and setKepDOM() clear each other's flag.
//
// Thread safety: the flags and the handler pointer are atomic words.
class KEP_API KepRXMLParser : public KepRObject {
  KEP_BODY_IDENTITY(XMLParser, KepRObject)
  KEP_BODY_CREATE_ANOTHER(XMLParser)

 public:
  static constexpr int kStandardDOM = 1;
  static constexpr int kSubscribe = 2;
  static constexpr int kKepActions = 4;
  static constexpr int kKepDOM = 8;
  // The size of the blocks read from the stream.
  static constexpr int kReadBlock = 32767;

  KepRXMLParser() noexcept;

  KEP_METHODS_XMLParser(KEP_DECLARE_METHOD)

      // The mode flags.
      int getMode() const noexcept {
    return mode.load(std::memory_order_acquire);
  }
  // The handler offered every new element, or null (the default). The parser
  // does not own it; it must outlive the parses that use it.
  KepXMLParserEventHandler* getEventHandler() const noexcept {
    return handler.load(std::memory_order_acquire);
  }
  void setEventHandler(KepXMLParserEventHandler* eventHandler) noexcept {
    handler.store(eventHandler, std::memory_order_release);
  }

 private:
  std::atomic<int> mode;
  std::atomic<KepXMLParserEventHandler*> handler;
};

#endif  // KEP_XML_KEPRXMLPARSER_H
