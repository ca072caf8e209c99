// KepDOMWriter: handle on the DOM writer, which turns a DOM tree into compact
// XML text on a byte stream.
#ifndef KEP_XML_KEPDOMWRITER_H
#define KEP_XML_KEPDOMWRITER_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"
#include "kep/io/KepIOStream.h"

class KepDOMNode;
class KepDOMDocument;

// The operations of KepDOMWriter, in the order of the body's virtual
// operations. All are bracketed by the writer's lock.
//
//  serializeAsXML(node, stream)
//                          makes `stream` the writer's stream and prints `node`
//                          and everything below it; 1 when a node was given, 0
//                          for a null node (nothing is written then). Called
//                          from a hook during a print, it prints `node` to
//                          `stream` as a text of its own (with the namespace
//                          declarations it needs), and the enclosing print goes
//                          on on its own stream.
//  serializeAsXML(node)    the same on the stream set before (a writer without
//                          a stream produces nothing). A node's hook may call
//                          either form again for other nodes: the nested call
//                          writes in place and keeps the namespace bindings.
//  write(text)             raw output: the text's units narrowed to bytes (low
//                          byte each), nothing escaped; answers the byte count
//  write(buffer, offset, length)
//                          raw output of `length` bytes from buffer + offset; a
//                          null buffer or negative offset or length write 0
//  into(source, length, close)
//                          copies up to `length` bytes (negative: all) of
//                          `source` to the writer's output after what was
//                          written so far (the source stream's own into());
//                          answers the count copied; `close` closes the source
//  getState()              the writer state: where the writer is in the node it
//                          prints (constants below); 0 before the first print
//  notifyElementBegin(hasChildren)
//                          ends the current start tag: ">" when hasChildren is
//                          non-zero, "/>" otherwise; remembers the flag, which
//                          decides whether the end tag follows
//  notifyElementEnd(hasChildren)
//                          only remembers the flag
//  normalizedWrite(text)   escaped output: each unit narrowed to its low byte,
//                          then "<" as "&lt;", ">" as "&gt;", "&" as "&amp;",
//                          every other byte (quotes included) as itself;
//                          answers the byte count produced
//  setView(service, name, reserved)
//                          makes the view registered under (service, name) with
//                          registerView() the current view; no view when none is
//                          registered. The third argument is reserved (pass 0).
//  setView(view)           makes a view from compileView() the current one (null:
//                          no view). The writer does not own it.
//
// Output is buffered inside the writer while it prints a node: the stream
// receives large blocks, and everything once the outermost serializeAsXML()
// returns. Raw writes made outside a print reach the stream at once.
// clang-format off
#define KEP_METHODS_DOMWriter(X)                                                                \
  X(DOMWriter, unsigned long, serializeAsXML, (KepDOMNode& node, KepIOStream& stream),          \
    (node, stream), , 1)                                                                        \
  X(DOMWriter, unsigned long, serializeAsXML, (KepDOMNode& node), (node), , 1)                  \
  X(DOMWriter, int, write, (KepString const& text), (text), , 1)                                \
  X(DOMWriter, int, write, (signed char* buffer, int offset, int length),                       \
    (buffer, offset, length), , 1)                                                              \
  X(DOMWriter, int, into, (KepIOStream& source, int length, unsigned long close),               \
    (source, length, close), , 1)                                                               \
  X(DOMWriter, int, getState, (), (), const, 1)                                                 \
  X(DOMWriter, void, notifyElementBegin, (unsigned long hasChildren), (hasChildren), , 1)       \
  X(DOMWriter, void, notifyElementEnd, (unsigned long hasChildren), (hasChildren), , 1)         \
  X(DOMWriter, int, normalizedWrite, (KepString const& text), (text), , 1)                      \
  X(DOMWriter, void, setView, (KepString const& service, KepString const& name, int reserved),  \
    (service, name, reserved), , 1)                                                             \
  X(DOMWriter, void, setView, (void* view), (view), , 1)
// clang-format on

// A handle on a DOM writer (body KepRDOMWriter, class "DomWriter" 0x4011f),
// made by the factory: KepDOMWriter w(KepGetObject(KepClassID::DOMWriter, 0)).
//
// Output rules (no indentation, no line breaks anywhere):
//  document                "<?xml version=\"1.0\"?>" and then its children
//  element                 "<" name, namespace declaration, attributes, then
//                          "/>" without children, or ">" children "</" name ">"
//  attribute               " " name "=\"" value "\"" with the value unescaped
//  typed object            an element whose class is not the plain element class
//                          gets " dt=\"<class name>\"" after its own attributes
//                          (unless it has a dt attribute of its own); a plain
//                          element with a data type 1..8 gets " dt=\"<type>\""
//                          (int, string, date, object, boolean, i8, r4, float)
//                          through its hook, after its attributes; both pass
//                          the attribute filter (views) under the name "dt"
//  service                 an element with a service tag gets " xs=\"<name>\""
//  text                    escaped as normalizedWrite()
//  CDATA section           "<![CDATA[" value "]]>", unescaped
//  comment                 "<!--" value "-->"
//  processing instruction  "<?" target, " " value only when it is not empty, "?>"
//  other nodes             nothing (fragments, document types, entities ...)
// Every string is narrowed unit by unit to its low byte (no UTF-8 encoding).
//
// Hooks: the writer asks a node's serializeAsXML(writer) at fixed states; a
// non-zero answer means the node wrote the output of that state itself. An
// element is first asked at ELEMENT_TRANSFORM: zero there means it is not asked
// again during this print.
//
// Views (compileView): a document whose root element holds
//   <Include><Name/>...</Include>         only the named elements are printed
//   <IncludeAttribute><attr notvalue="..."/>...</IncludeAttribute>
//                                         only the named attributes; one whose
//                                         value occurs in notvalue is left out
//   <Publish><Name/>...</Publish>         elements handed to subscribers before
//                                         printing (not active yet: the named
//                                         elements are printed as they are)
//
// Thread safety: one print at a time per writer (the operations take the
// writer's lock); the tree must not change while it is printed.
class KEP_API KepDOMWriter : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMWriter, KepObject)

 public:
  // The writer states, in the order in which they occur.
  enum : int {
    DOCUMENT_BEGIN = 1,
    DOCUMENT_END = 2,
    DOCUMENT_BEFORE_CHILDREN = 3,
    DOCUMENT_AFTER_CHILDREN = 4,
    ELEMENT_BEFORE_OPEN = 5,
    ELEMENT_BEFORE_NAME = 6,
    ELEMENT_BEFORE_NAMESPACE = 7,
    ELEMENT_BEFORE_ATTRIBUTES = 8,
    ATTRIBUTE_BEFORE = 9,
    ATTRIBUTE_AFTER = 10,
    ELEMENT_BEFORE_CHILDREN = 11,
    ELEMENT_AFTER_CHILDREN = 12,
    CDATA_BEFORE = 13,
    CDATA_AFTER = 14,
    TEXT_BEFORE = 15,
    TEXT_AFTER = 16,
    COMMENT_BEFORE = 17,
    COMMENT_AFTER = 18,
    PI_BEFORE = 19,
    PI_AFTER = 20,
    ELEMENT_BEFORE_END_TAG = 21,
    ELEMENT_TRANSFORM = 22
  };

  KEP_METHODS_DOMWriter(KEP_DECLARE_METHOD)

      // Writes `text` escaped as normalizedWrite(text) straight to `stream`;
      // answers the byte count produced.
      static int normalizedWrite(KepIOStream& stream, KepString const& text);
  // Builds a view from the root element of `view` (see above); null when the
  // document has no root element. The caller frees it with freeView() once no
  // writer uses it any more.
  static void* compileView(KepDOMDocument& view);
  static void freeView(void* view);
  // Registers `view` (a compileView() result, still owned by the caller) under
  // (service, name) for setView(service, name, 0); a null view removes the
  // entry. Process-wide and thread-safe.
  static void registerView(KepString const& service, KepString const& name, void* view);
};

KEP_METHODS_DOMWriter(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMWRITER_H
