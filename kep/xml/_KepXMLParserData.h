// _KepXMLParserData: the state of one buildObjects call, handed to the XML
// tokenizer as its user data.
#ifndef KEP_XML_KEPXMLPARSERDATA_H
#define KEP_XML_KEPXMLPARSERDATA_H

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "kep/base/KepRObject.h"
#include "kep/base/KepString.h"
#include "kep/base/KepStringBuffer.h"
#include "kep/base/_KepBodyArena.h"
#include "kep/xml/KepXMLParser.h"
#include "kep/xml/KepXMLParserEventHandler.h"

class KepRDOMAttributeList;
class KepRDOMDocument;
class KepRDOMElement;
class KepRDOMNode;
class KepRDOMParentNode;
struct _KepDOMDocAnchor;

// Builds the tree of one document from the tokenizer's callbacks. Nothing here
// recurses on the depth of the document: the open elements are a heap stack.
//
// With a requested XPointer only the first element at that path and its subtree
// are built (the element goes straight under the document); the elements around
// it are followed for the path and their namespace declarations only.
//
// Not thread-safe: one object serves one parse on one thread.
class _KepXMLParserData {
 public:
  // The tags of one element or attribute name: its node ID (the qualified name),
  // prefix, local name and namespace URI (0 when absent).
  struct Names {
    int id = 0;
    int prefix = 0;
    int local = 0;
    int uri = 0;
  };

  // A parse that builds into `document` (which the caller keeps alive) with the
  // parser's `mode` flags and event `handler` (may be null); `parser` is the
  // handle handed to the nodes' hooks. A null or empty `xpointer` builds the
  // whole document.
  _KepXMLParserData(KepRDOMDocument* document, KepXPointer const& xpointer, int mode,
                    KepXMLParserEventHandler* handler, KepXMLParser const& parser);
  // Releases the elements still open (input that ended early).
  ~_KepXMLParserData();
  _KepXMLParserData(_KepXMLParserData const&) = delete;
  _KepXMLParserData& operator=(_KepXMLParserData const&) = delete;

  // Installs every callback on `tokenizer` (an XML_Parser), with this object
  // as its user data.
  void install(void* tokenizer);

  // The element found at the requested XPointer, or null (not counted; the
  // document holds it).
  KepRDOMElement* rootFound() const noexcept { return found; }
  // Whether the XPointer's element was found.
  bool wantsXPointer() const noexcept { return !target.empty(); }
  // Set when a callback could not complete (no memory): the parse was stopped.
  bool failed() const noexcept { return failure; }

  // --- The callbacks' work (called through the tokenizer's C callbacks) -------
  void startElement(char const* name, char const** attributes);
  void endElement();
  void characters(char const* text, int length);
  void startNamespace(char const* prefix, char const* uri);
  void startCData();
  void endCData();
  // Comments, processing instructions and notation declarations add no nodes:
  // they only end the pending text.
  void flushOnly();
  // Stops the tokenizer after a failure inside a callback.
  void stop();

 private:
  // One namespace declaration in scope.
  struct Binding {
    std::string prefix;  // empty for the default namespace
    std::string uri;     // empty when the default namespace is undeclared
    int shadowed;        // the binding of the same prefix this one hides, or -1
    bool added = false;  // its "xmlns" attribute is on its element already
  };
  // One entry of the name table.
  struct Slot {
    uint64_t hash = 0;
    uint32_t offset = 0;
    uint32_t length = 0;
    bool used = false;
    Names names;
  };
  // One entry of the table of recent names (see resolve()).
  struct Recent {
    uint64_t epoch = 0;
    uint32_t length = 0;
    uint32_t offset = 0;
    Names names;
  };

  // Whether elements are built at the current position.
  bool building() const noexcept { return target.empty() || matchDepth != 0; }
  // The tags of a name as the tokenizer delivers it: "name", "uri:name" or
  // "uri:name:prefix", where the URI may hold colons itself.
  //
  // A name met under the same declarations as a moment ago is found in the
  // table of recent names by its length and its first and last bytes, and
  // compared; otherwise the decision whether the last part is a prefix is taken
  // and the name looked up in the name table by a hash of all its bytes.
  Names resolve(char const* raw);
  Slot const& resolveSlot(char const* raw, size_t length);
  Names makeNames(std::string const& prefix, std::string const& local, std::string const& uri);
  // The innermost binding of `prefix`, or null.
  Binding const* lookupPrefix(char const* prefix, size_t length) const;
  // Brings a declaration into scope, and takes the last `count` out again.
  void pushBinding(char const* prefix, char const* uri);
  void popBindings(size_t count);
  // One counted reference on a new body, dropped when the hold ends (which
  // frees a body that nothing else took): cheaper than a handle.
  class Hold {
   public:
    Hold() noexcept = default;
    explicit Hold(KepRObject* b) { reset(b); }
    ~Hold() {
      if (body != nullptr) body->release();
    }
    Hold(Hold const&) = delete;
    Hold& operator=(Hold const&) = delete;
    void reset(KepRObject* b) {
      if (b != nullptr) b->addRef();
      if (body != nullptr) body->release();
      body = b;
    }

   private:
    KepRObject* body = nullptr;
  };
  // Makes the element's body: an object of the class named by "dt" or
  // "ElementId" (unless in standard-DOM mode), held by `holder`, else a plain
  // element, held by `hold`.
  KepRDOMElement* makeElement(char const** attributes, KepObject& holder, Hold& hold);
  // Whether an attribute "dt" or "ElementId" may make the element an object
  // (they do not in standard-DOM mode).
  bool namesClass(char const** attributes) const;
  // Puts a new node in the document. The references on the document's anchor
  // are taken in batches: one locked instruction per batch, not per node.
  void own(KepRDOMNode* node);
  // Makes a new element, placed in the tree, the current parent; `plain`: a
  // plain element the parser made and placed itself (see Open).
  void enter(KepRDOMElement* element, bool plain);
  // Sets the attributes (all but "xs", which names the service) and the
  // namespace declarations this element made, as "xmlns" attributes.
  void setAttributes(KepRDOMElement* element, char const* name, char const** attributes);
  // The prefix of a name as the tokenizer delivers it, when the name is taken
  // for a prefixed one: its last part; else empty.
  std::string ownPrefix(char const* raw);
  // Adds the declaration of `prefix` as an "xmlns" attribute, when this
  // element (whose declarations start at bindings[first]) made it and it is
  // not added yet.
  void addDeclaration(size_t first, std::string const& prefix);
  // Adds an attribute with the tags `names` and the value `bytes` to the
  // element's attribute map; `byNS`: a namespaced name (compared by URI and
  // local name).
  void addAttribute(Names const& names, char const* bytes, size_t length, bool byNS);
  // The attribute map of the element being started, with room for the
  // attributes to come; notes how many it held before.
  KepRDOMAttributeList* attributeMap();
  // Whether one of the attributes the element had before (the first `preset`
  // of its map) has the same name.
  bool clashesWithPreset(Names const& names, bool byNS) const;
  // Appends the pending text to the current parent as a text node (a CDATA
  // section inside CDATA; `force` makes an empty section too).
  void flushText(bool force = false);
  // Follows the path of element names while the XPointer is not reached.
  void enterPath(char const* name);

  _KepDOMDocAnchor* anchor;
  // References on `anchor` taken for nodes still to come.
  int64_t anchorRefs = 0;
  static constexpr int64_t kAnchorBatch = 256;
  KepXMLParser parserHandle;
  int mode;
  KepXMLParserEventHandler* handler;
  void* tokenizer = nullptr;

  // An open parent, holding one reference. A plain element that the parser
  // made and put in the tree itself has hooks that do nothing, no cached
  // value and keeps no white space.
  struct Open {
    KepRDOMParentNode* node;
    bool plain;
  };
  // The open parents, innermost last; the document first.
  std::vector<Open> parents;
  KepRDOMElement* found = nullptr;

  // XPointer tracking: the requested path, the path of the current position
  // (followed until the path is reached), the length of that path at each
  // depth, the current depth and the depth of the found element while inside
  // it.
  std::vector<unsigned short> target;
  std::vector<unsigned short> path;
  std::vector<size_t> pathLengths;
  bool reached = false;
  int depth = 0;
  int matchDepth = 0;

  // Namespace declarations in scope, innermost last, and how many each open
  // element made; declarations reported before an element starts wait in
  // `pendingDeclarations`. `innermost` finds the binding of a prefix,
  // `prefixBits` tells at a glance that most names' last parts are no bound
  // prefix (a bit per length and first byte, set for every prefix ever
  // bound), and `epoch` changes with every declaration that comes or goes.
  std::vector<Binding> bindings;
  std::unordered_map<std::string, int> innermost;
  uint64_t prefixBits = 0;
  uint64_t epoch = 1;
  std::vector<int> declarationsPerLevel;
  int pendingDeclarations = 0;

  // While an element's attributes are set: the element, its map (made at the
  // first attribute), the room it is to have and how many attributes it held
  // before.
  KepRDOMElement* attributeOwner = nullptr;
  KepRDOMAttributeList* map = nullptr;
  int mapRoom = 0;
  int preset = 0;
  // The tags of "xmlns" and of the namespace of declarations, once needed.
  int xmlnsTag = 0;
  int xmlnsUriTag = 0;

  // Pending character data: up to 1024 bytes here, then everything in
  // `overflow`.
  static constexpr int kPendingSize = 1024;
  char pending[kPendingSize];
  int pendingLength = 0;
  bool textPending = false;
  bool overflowing = false;
  KepStringBuffer overflow;
  bool inCData = false;

  // The names met so far, by their bytes as delivered (plus one byte telling
  // whether the last part was taken for a prefix).
  std::vector<Slot> slots;
  // The key of this parse's hashes.
  uint64_t seed = 0;
  std::string nameBytes;
  size_t slotsUsed = 0;
  static constexpr size_t kRecentSlots = 64;
  Recent recent[kRecentSlots];

  // The string body of `length` bytes widened, with one reference for the
  // caller; throws std::bad_alloc when it could not be allocated. Short texts and attribute
  // values met before are shared by the nodes that hold the same bytes
  // (strings never change): direct-mapped by a hash of the bytes, a collision
  // replaces the older entry.
  KepRObject* textBody(char const* bytes, size_t length, bool attributeValue);
  // A new string body of `length` bytes widened, not counted yet; null when
  // it could not be allocated (textBody then throws std::bad_alloc, which
  // stops the parse).
  KepRObject* makeString(char const* bytes, size_t length);
  // Texts shorter than this are placed in the arena.
  static constexpr size_t kPlacedText = 512;
  static constexpr size_t kShortText = 24;
  static constexpr size_t kShortSlots = 512;
  struct ShortSlot {
    uint8_t length = 0;
    char bytes[kShortText];
    KepRObject* text = nullptr;  // counted
  };
  std::vector<ShortSlot> shortTexts;

  bool failure = false;

  // Where the nodes and the strings of the document are made.
  _KepBodyArena arena;
};

#endif  // KEP_XML_KEPXMLPARSERDATA_H
