// KepRDOMNode: the body of KepDOMNode, and the root of the node bodies.
#ifndef KEP_XML_KEPRDOMNODE_H
#define KEP_XML_KEPRDOMNODE_H

#include <cstdint>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMNode.h"

class KepRDOMParentNode;
class KepRDOMElement;
class KepXMLParser;
struct _KepDOMDocAnchor;

// A node body holds the links of the tree and the four name tags. The parent
// link, the sibling links and the owner-document link are not counted: the
// parent counts its children (KepRDOMParentNode), and the owner link goes
// through the document's anchor record (_KepDOMDocAnchor), so no node keeps its
// parent or its document alive. A node without a parent has null sibling links.
//
// Node bodies are not owned by a thread: a new node has no owner thread in its
// lock word, so the thread-safe bridge calls take no lock (and make none) until
// somebody makes the node's semaphore with lock(). Creating and linking nodes
// therefore allocates no locks.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMNode : public KepRObject {
  KEP_BODY_IDENTITY(DOMNode, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMNode)

 public:
  // A node without name, parent or document (it belongs to the default document
  // until adopted).
  KepRDOMNode() noexcept;
  // Leaves the owner anchor and the change log; a node is never freed while a
  // parent holds it.
  ~KepRDOMNode() override;

  KEP_METHODS_DOMNode(KEP_DECLARE_METHOD)

      // True when `other` is a handle on this very node.
      unsigned long equals(KepObject const& other) const override;
  // The node value, or the node name when there is none.
  KepString toString() const override;

  // Called by the XML parser when it starts the node and when the node's
  // content is complete, with the parser's mode flags. They call
  // beginFromXML() and endFromXML(mode). Body operations only (no bridge): the
  // parser works on the bodies it builds.
  virtual void _beginFromXML(KepXMLParser& parser);
  virtual void _endFromXML(int mode, KepXMLParser& parser);

  // --- The node classes' shared interface (not bridged) ----------------------

  // The node body behind a handle, or null (a null handle, or another class).
  static KepRDOMNode* of(KepObject const& handle);
  // This node as a parent or an element, or null.
  virtual KepRDOMParentNode* asParent() const noexcept;
  virtual KepRDOMElement* asElement() const noexcept;

  KepRDOMNode* parentBody() const noexcept { return parent; }
  KepRDOMNode* nextBody() const noexcept { return next; }
  KepRDOMNode* previousBody() const noexcept { return previous; }

  // The node ID (the default name's tag while none is set), and the other tags.
  int nodeTag() const;
  int prefixTag() const noexcept { return prefixID; }
  int localTag() const noexcept { return localID; }
  int uriTag() const noexcept { return uriID; }
  // The local-name tag, or the node ID for a node named without namespace: the
  // name that namespace lookups compare.
  int localOrNodeTag() const { return localID != 0 ? localID : nodeTag(); }
  // The node ID as set: 0 while none was set (nodeTag() then answers the
  // default name's tag).
  int ownNodeID() const noexcept { return nodeID; }
  // Sets all four tags at once (a new node's names).
  void setNames(int id, int prefix, int local, int uri) noexcept;

  // The anchor of the owner document (null: the default document).
  _KepDOMDocAnchor* ownerAnchor() const noexcept { return owner; }
  // The anchor that this node's children are to have: the document's own for a
  // document, else this node's.
  virtual _KepDOMDocAnchor* childAnchor() const noexcept;
  // Moves the node (not its children) to the document of `anchor`; an element
  // moves its attributes with it.
  virtual void adoptOne(_KepDOMDocAnchor* anchor);
  // Moves the node and its whole subtree to the document of `anchor`.
  void adoptSubtree(_KepDOMDocAnchor* anchor);
  // Puts a new node, which has no owner and nothing that moves with it yet, in
  // the document of `anchor`, with a reference on `anchor` that the caller
  // took for it.
  void takeOwner(_KepDOMDocAnchor* anchor) noexcept { owner = anchor; }

  // Whether this node is `node` or one of its ancestors.
  bool isAncestorOf(KepRDOMNode const* node) const noexcept;
  // The node after `node` in document order that is still inside the subtree of
  // `root`, or null.
  static KepRDOMNode* nextInSubtree(KepRDOMNode const* node, KepRDOMNode const* root);

  // A copy of this node of the same class, without parent and children, in the
  // same document: what cloneNode(0) answers. Null when the class makes no node.
  KepObject shallowCopy() const;
  // Copies this node's own state (names, flags, values) into `copy`, a new
  // body of the same class. Classes with state of their own extend it.
  virtual void copyInto(KepRDOMNode& copy) const;

  bool isPersistent() const noexcept { return (nodeFlags & kPersistent) != 0; }

  // The change kinds of the change log.
  enum ChangeKind { kChildInserted, kChildRemoved, kValueChanged, kNameChanged, kAttributeChanged };
  // Records a change of this node (`involved`: the child or attribute concerned,
  // or this node) in the logs of this node and its ancestors that capture
  // changes. Costs one load while no node in the process captures.
  void noteChange(ChangeKind kind, KepRDOMNode const* involved) const;
  // The names of the elements from below `from` down to this node, joined by
  // "."; see getXPointer. `found` tells whether `from` (when not null) lies
  // above this node.
  KepString pathFrom(KepRDOMNode const* from, bool& found) const;

  // Answers the tag of a name, adding it to the tag manager; 0 for a null or
  // empty name.
  static int tagOf(KepString const& name);
  // W3C DOM exception codes of the errors the node operations record.
  static constexpr int kHierarchyRequestErr = 3;
  static constexpr int kInvalidCharacterErr = 5;
  static constexpr int kNotFoundErr = 8;
  static constexpr int kNotSupportedErr = 9;
  static constexpr int kInUseAttributeErr = 10;
  static constexpr int kNamespaceErr = 14;
  // Records on the calling thread the error "DOMError" with the values "Code"
  // (`code`) and "Method" (`method`), recorded at `source` and `line`.
  static void recordError(int code, char const* method, char const* source, int line);
  // Answers the tag of a name without adding it; 0 when unknown.
  static int knownTagOf(KepString const& name);
  // Answers the name of a tag; a null string for 0.
  static KepString nameOf(int tag);
  // The four tags of a namespace-qualified name: the node ID (the whole name),
  // prefix, local name and URI (0 for a null or empty URI), adding the names to
  // the tag manager. False, with nothing set, for the names W3C DOM refuses: an
  // empty name or part, two colons, a prefix without URI, the prefix "xml" with
  // another URI than the XML namespace, "xmlns" (as prefix or as the name) with
  // another URI than the xmlns namespace.
  static bool qualifiedTags(KepString const& uri, KepString const& qualifiedName, int& id,
                            int& prefix, int& local, int& uriTag);

 protected:
  friend class KepRDOMParentNode;

  // The name a node has while no node ID was set: the class's tag here.
  virtual int defaultNodeID() const;
  // Called after this node's own value changed: its parent element's cached
  // value becomes stale, and the change is noted.
  void valueChanged();
  // Called after one of the four tags changed.
  void nameChanged();

  static constexpr uint32_t kPersistent = 1;
  // The node has a change log (made by captureChangesON; the logs are kept
  // apart from the nodes, which seldom have one).
  static constexpr uint32_t kHasCapture = 2;

  KepRDOMNode* parent;
  KepRDOMNode* previous;
  KepRDOMNode* next;
  _KepDOMDocAnchor* owner;
  int32_t nodeID;
  int32_t prefixID;
  int32_t localID;
  int32_t uriID;
  uint32_t nodeFlags;
};

// A handle of class H on `body`: on its outer object when one is registered,
// so that calls reach the caller's overrides. A null handle for a null body.
template <class H>
H _KepDOMHandle(KepRObject const* body) {
  if (body == nullptr) return H();
  auto* b = const_cast<KepRObject*>(body);
  KepObject* outer = b->getRealOuterObj();
  return H(outer != nullptr ? static_cast<KepBridgeToObject*>(outer)
                            : static_cast<KepBridgeToObject*>(b));
}

// Makes `slot` hold a counted reference on the body of `text` (null for a null
// handle), releasing the body it held before. Holding the same body is a no-op.
inline void _KepDOMHoldBody(KepRObject*& slot, KepString const& text) {
  KepRObject* body = text.getRealKepObj();
  if (body == slot) return;
  if (body != nullptr) body->addRef();
  KepRObject* old = slot;
  slot = body;
  if (old != nullptr) old->release();
}

#endif  // KEP_XML_KEPRDOMNODE_H
