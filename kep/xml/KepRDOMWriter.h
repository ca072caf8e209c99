// KepRDOMWriter: the body of KepDOMWriter.
#ifndef KEP_XML_KEPRDOMWRITER_H
#define KEP_XML_KEPRDOMWRITER_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMWriter.h"

class KepDOMElement;
class KepDOMText;
class KepDOMAttribute;
class KepRDOMNode;
class KepRDOMElement;
class KepRString;
struct _KepDOMWriterView;

// The writer keeps its stream, its state, the has-children flag, the current
// view (not owned), the namespace stack and an output buffer of 64 KiB that is
// handed to the stream whenever it fills and when the outermost print ends.
//
// A derived body changes the output by overriding the operations below; the
// writer reaches every node, element, text and attribute through them:
// print() for each node, _shouldPrintElement()/_printElement() for elements
// (which run _transformNode() and _doPrintElement()), _shouldPrintText()/
// _printText() for text, _shouldPrintAttribute()/_printAttribute() for each
// attribute, and the namespace operations for declarations.
//
// Thread safety: see KepDOMWriter. The body operations below have no bridge
// and take no lock: they are meant for the writer's own print and for hooks
// running inside it.
class KEP_API KepRDOMWriter : public KepRObject {
  KEP_BODY_IDENTITY(DOMWriter, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMWriter)

 public:
  KepRDOMWriter();
  ~KepRDOMWriter() override;

  KEP_METHODS_DOMWriter(KEP_DECLARE_METHOD)

      // --- Body operations (no bridge) ------------------------------------------

      // Prints one node by its type code: document, element, text, CDATA
      // section, comment, processing instruction; anything else writes nothing.
      virtual void print(KepDOMNode& node);
  // Writes " xmlns:<prefix>=\"<uri>\"" (" xmlns=\"<uri>\"" for an empty prefix)
  // for the node's prefix and namespace URI and binds them in the top frame.
  virtual void printNamespaceDecl(KepDOMNode& node);
  // The same for `node` (an attribute) declared on `element`.
  virtual void printNamespaceDecl(KepDOMElement& element, KepDOMNode& node);
  // The URI bound to `prefix` (empty: the default namespace), searching the
  // frames from the top down; a null string when it is not bound.
  virtual KepString lookupNS(KepString const& prefix) const;
  // Binds `prefix` to `uri` in the top frame (a frame is opened when none is).
  virtual void registerNS(KepString const& prefix, KepString const& uri);
  // Opens and closes a namespace frame; a pop without frame does nothing.
  virtual void nsStackPush();
  virtual void nsStackPop();
  // View filter for elements: 1 when the element named `tag` is printed.
  virtual unsigned long _shouldPrintElement(KepDOMElement& element, int tag);
  // _transformNode(), then, unless that handled the element, _doPrintElement()
  // with the element's tag fetched again.
  virtual void _printElement(KepDOMElement& element, int tag);
  // Always 1.
  virtual unsigned long _shouldPrintText(KepDOMText& text, KepString& value);
  // The text's hooks and normalizedWrite(value).
  virtual void _printText(KepDOMText& text, KepString& value);
  // View filter for attributes (`attribute` is null for the dt pseudo-attribute).
  virtual unsigned long _shouldPrintAttribute(KepDOMElement& element, KepDOMAttribute& attribute,
                                              KepString& name, KepString& value);
  // " name=\"value\"" and, when the attribute's prefix is not bound to its URI
  // yet, its namespace declaration; with the element's hooks at states 9 and 10.
  virtual void _printAttribute(KepDOMElement& element, KepDOMAttribute& attribute, KepString& name,
                               KepString& value);
  // View-driven replacement of an element; 1 when it printed the element's
  // replacement. Answers 0: replacements come from subscribers of a published
  // event, which this writer does not publish yet.
  virtual unsigned long _transformNode(KepDOMElement& element, int tag);
  // The element itself: start tag, attributes, children, end tag, with hooks.
  virtual void _doPrintElement(KepDOMElement& element, int tag);

  // See KepDOMWriter.
  static int normalizedWrite(KepIOStream& stream, KepString const& text);
  static void* compileView(KepDOMDocument& view);
  static void freeView(void* view);
  static void registerView(KepString const& service, KepString const& name, void* view);

  // The output buffer: bytes go to `stream` in blocks of up to `capacity`.
  class Output {
   public:
    explicit Output(size_t capacity);
    // Hands the buffered bytes to the stream (a null stream drops them).
    void flush();
    void put(char byte) {
      if (used == capacity) flush();
      data[used++] = byte;
    }
    void put(char const* bytes, size_t count) {
      if (count <= capacity - used) {
        std::memcpy(data.get() + used, bytes, count);
        used += count;
      } else {
        putLarge(bytes, count);
      }
    }
    // Units narrowed to their low byte, as they are.
    void putNarrow(unsigned short const* units, size_t count) {
      if (count <= capacity - used) {
        char* to = data.get() + used;
        for (size_t i = 0; i < count; ++i) to[i] = static_cast<char>(units[i]);
        used += count;
      } else {
        putNarrowLarge(units, count);
      }
    }
    // Units narrowed and "<", ">", "&" escaped; answers the bytes produced.
    size_t putEscaped(unsigned short const* units, size_t count);
    void setStream(KepIOStream const& target) { stream = target; }
    KepIOStream& target() { return stream; }
    size_t pending() const noexcept { return used; }

   private:
    void putLarge(char const* bytes, size_t count);
    void putNarrowLarge(unsigned short const* units, size_t count);

    KepIOStream stream;
    std::unique_ptr<char[]> data;
    size_t used;
    size_t capacity;
  };

 protected:
  // Asks the node's hook at state `s`: sets the state, calls the node's
  // serializeAsXML (on its outer object when one is registered) and answers
  // whether the node handled the state.
  unsigned long askHook(KepRDOMNode* node, int s);
  // Sets the state and asks the current element's hook when it takes hooks.
  unsigned long elementStep(int s);
  // A tag's name as a string and narrowed to bytes, cached for the writer's
  // lifetime (tags keep their names while the library is up).
  struct TagName {
    std::string bytes;
    KepString name;
    // "xmlns" or "xmlns:...": the name of a namespace declaration.
    bool declaration = false;
  };
  TagName const& tagName(int tag) {
    RecentName const& recent = recentNames[static_cast<unsigned>(tag) % kRecentNames];
    return recent.entry != nullptr && recent.tag == tag ? *recent.entry : lookupTagName(tag);
  }
  TagName const& lookupTagName(int tag);
  // Writes a string narrowed / escaped into the buffer.
  void putString(KepString const& text);

  Output out;
  int state;
  unsigned long hasChildren;
  _KepDOMWriterView* view;

 private:
  // What runs around every print: the outermost call sets up the writer's
  // handle for hooks and the tags it compares, and flushes at the end.
  class PrintScope;
  // Registers the namespace declarations the element carries as attributes.
  void registerDeclaredNamespaces(KepRDOMElement* element);
  // Whether a node's (prefix, uri) still needs a declaration here.
  bool needsDeclaration(int prefixTag, int uriTag);
  void writeDeclaration(int prefixTag, int uriTag);
  void printChildren(KepRDOMNode* parent);
  // Prints one node body (see print()).
  void printBody(KepRDOMNode* body);
  // The element, attribute and text output on bodies. `handle` is the element's
  // handle when the derived writer's operations are to be called, else null.
  void emitElement(KepRDOMElement* body, int tag, KepDOMElement* handle);
  void offerAttribute(KepRDOMElement* body, KepDOMElement* handle, KepRDOMNode* attribute,
                      int nameTag, KepString const& value);
  void emitAttribute(KepRDOMElement* element, KepRDOMNode* attribute, KepString const& name,
                     KepString const& value);
  // The same two on the value's string body (null writes no value).
  void emitAttribute(KepRDOMElement* element, KepRDOMNode* attribute, KepString const& name,
                     KepRString const* value);
  void emitText(KepRDOMNode* node, KepString const& value);
  void emitText(KepRDOMNode* node, KepRString const* value);
  // A CDATA section or comment: hook at `before`, `open`, the value, `close`,
  // hook at the state after `before`.
  void emitDelimited(KepRDOMNode* node, int before, char const* open, char const* close);
  // The view's filters.
  bool elementAllowed(int tag) const;
  bool attributeAllowed(int nameTag, KepString const& value) const;

  // The namespace stack: bindings tagged with the frame that made them.
  struct Binding {
    KepString prefix;
    KepString uri;
    int frame;
  };
  std::vector<Binding> bindings;
  int frameDepth;
  std::unordered_map<int, TagName> names;
  // The handle passed to hooks while a print runs (null otherwise).
  KepDOMWriter* self;
  int depth;
  // The element whose hooks are asked at the element states, and whether it
  // takes them.
  KepRDOMElement* hookElement;
  bool hookOn;
  // Tags looked up once per outermost print.
  int tagDt;
  int tagXs;
  // True while the writer is a KepRDOMWriter itself, whose per-node operations
  // nobody overrode: bodies are then printed without handles.
  bool direct;
  struct RecentName {
    int tag;
    TagName const* entry;
  };
  static constexpr unsigned kRecentNames = 256;
  RecentName recentNames[kRecentNames];
};

#endif  // KEP_XML_KEPRDOMWRITER_H
