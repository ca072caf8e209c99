// KepXMLParser: handle on the XML parser that builds DOM documents and objects.
#ifndef KEP_XML_KEPXMLPARSER_H
#define KEP_XML_KEPXMLPARSER_H

#include "kep/base/KepObject.h"
#include "kep/xml/KepDOMNode.h"
#include "kep/xml/KepXPointer.h"

class KepIOStream;

// The operations of KepXMLParser, in the order of the body's virtual operations.
//
//  buildObjects(stream)    buildObjects(stream, a null XPointer)
//  buildObjects(stream, xpointer)
//                          reads the XML text of `stream` to its end and answers
//                          the document built from it; with a non-empty
//                          `xpointer`, only the first element at that path
//                          ("Settings.Mail", element names from the document
//                          element down) is built, with everything below it, and
//                          that element is answered, or a null node when the
//                          document has none there. The element answered has no
//                          parent, and its document is gone (its owner document
//                          is null). Names in the path are qualified names
//                          ("p:item"), compared exactly. An element carrying an
//                          attribute "dt" or "ElementId" that names a class is
//                          built as an object of that class (see the modes); a
//                          "dt" naming a value type ("int", "string", "date",
//                          "object", "boolean", "i8", "r4", "float") gives a
//                          plain element of that data type; an attribute "xs"
//                          names the element's service (and is not kept).
//                          A malformed document answers a null node, and the
//                          error "XMLParserError" with the parameters "String"
//                          (the tokenizer's message), "Code", "Line" (from 1),
//                          "Column" (from 0) and "Byte" (the offset) of the
//                          first fault is pushed on the calling thread's error
//                          stack. An error recorded on that stack during the
//                          call (by the stream, or by a built object) also ends
//                          the parse with a null node; errors that were on the
//                          stack before the call do not count. A document that
//                          simply ends early (an element left open) is not a
//                          failure: what was read so far is answered.
//  setStandardDOM()        from now on every element is a plain element: "dt"
//                          and "ElementId" make no objects (they stay attributes)
//  setKepDOM()             from now on such elements are built as objects again
//                          (the default); clears the standard-DOM mode
//  setSubscribe(), setKepActions()
//                          set mode flags that the built objects receive when
//                          their content is complete (_endFromXML); the parser
//                          itself builds the same tree with or without them
// clang-format off
#define KEP_METHODS_XMLParser(X)                                                                \
  X(XMLParser, KepDOMNode, buildObjects, (KepIOStream& stream), (stream), , 0)                  \
  X(XMLParser, KepDOMNode, buildObjects, (KepIOStream& stream, KepXPointer const& xpointer),    \
    (stream, xpointer), , 0)                                                                    \
  X(XMLParser, void, setStandardDOM, (), (), , 1)                                               \
  X(XMLParser, void, setSubscribe, (), (), , 1)                                                 \
  X(XMLParser, void, setKepActions, (), (), , 1)                                                \
  X(XMLParser, void, setKepDOM, (), (), , 1)
// clang-format on

// A handle on an XML parser (body KepRXMLParser, class "XMLParser" 0x40035),
// made through the factory: KepXMLParser parser(KepGetObject(0x40035, 0)).
// Nodes receive it in their _beginFromXML()/_endFromXML() hooks.
//
// The text is read as 8-bit bytes: element text and attribute values become
// one code unit per byte of the document (UTF-8 sequences are not decoded), the
// counterpart of the DOM writer's 8-bit output. Every element and attribute name
// met becomes a tag of the process's tag manager.
//
// Hostile input: entity references defined in a document's DTD are not expanded
// in element content, external entities are never loaded, the tokenizer's
// protection against entity expansion in attribute values stays on, nesting
// of any depth is handled without recursion, and namespace declarations cost
// the same however many are in scope.
//
// Memory: the nodes and short strings of a document (past its first few KiB)
// are placed in chunks of up to 32 KiB rather than one heap block each (see
// _KepBodyArena). They are ordinary counted bodies; a chunk goes when the last
// body in it goes, so a node kept from a freed document keeps its chunk. The
// chunks of freed documents are kept for the next parses, up to as many as the
// recent parses needed.
//
// Thread safety: one parser may serve several threads; each buildObjects call
// keeps its state to itself. The mode setters take the parser's lock.
class KEP_API KepXMLParser : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepXMLParser, KepObject)

 public:
  KEP_METHODS_XMLParser(KEP_DECLARE_METHOD)
};

KEP_METHODS_XMLParser(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPXMLPARSER_H
