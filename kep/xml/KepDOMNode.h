// KepDOMNode: handle on a node of a DOM tree.
#ifndef KEP_XML_KEPDOMNODE_H
#define KEP_XML_KEPDOMNODE_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

class KepDOMNodeList;
class KepDOMNamedNodeMap;
class KepDOMDocument;
class KepDOMElement;
class KepDOMWriter;
class KepVisitor;
class KepXPointer;
class KepRDOMDocument;

// The operations of every DOM node, in the order of the body's virtual
// operations. Nodes are passed and answered as handles; a null handle stands
// for "no node". Names are tags (see KepDOMNode below).
//
// Tree
//  appendChild(n)          insertBefore(n, null)
//  cloneNode(deep)         a copy of the node without parent, in the same owner
//                          document; an element's attributes are always copied,
//                          its children only when `deep` is non-zero. Cached
//                          element values are copied; captured changes are not.
//  getAttributes()         an element's attribute map (made on first use); a null
//                          map for every other node
//  getChildNodes()         a live list of the children (an empty list for nodes
//                          that cannot have children)
//  getFirstChild(), getLastChild(), getNextSibling(), getPreviousSibling(),
//  getParentNode()         the neighbouring nodes, or null
//  getFirstChild(type), getNextSibling(type)
//                          the same, skipping nodes whose type code is not `type`
//  hasChildNodes()         whether there is a first child
//  insertBefore(n, ref)    moves `n` (leaving its old parent) in front of the child
//                          `ref`, or to the end when `ref` is null, and answers
//                          `n`. A node of another document is adopted, with its
//                          whole subtree. A document fragment gives up all its
//                          children in order (the fragment is answered). Refused,
//                          answering null and changing nothing: a null `n`; a
//                          `ref` that is not a child of this node; `n` being this
//                          node or one of its ancestors; a node this node may not
//                          hold (attributes and documents never; a document holds
//                          at most one element and one document type and no text;
//                          character data, attributes, processing instructions,
//                          entities and notations hold nothing).
//  removeChild(n)          takes the child `n` out and answers it; a node that is
//                          not a child is refused (null, nothing changes)
//  replaceChild(n, old)    puts `n` where the child `old` was and answers `old`;
//                          refused (null) as for insertBefore or when `old` is not
//                          a child. Replacing a node by itself answers it.
//                          Every refusal of these three also records the
//                          error "DOMError" on the calling thread (see
//                          KepThread) with the values "Code" and "Method". The
//                          code is the W3C one: 8 (not found) when the child,
//                          the reference or `old` is not a child of this node,
//                          or a node was expected and none (or a handle on
//                          something that is no node) was given; 3 (hierarchy
//                          request) when this node may not hold the new node
//                          (also when it holds no children at all).
//  transferChildren(to)    moves every child, in order, to the end of `to`'s
//                          children; answers how many moved (refused ones stay)
//  transferAttribs(to)     moves every attribute of this element to the element
//                          `to` (replacing attributes of the same name); answers
//                          how many moved
//
// Names (tags of the tag manager; a tag of 0 means "none")
//  getNodeName()           the name of the node ID; text nodes are "#text",
//                          comments "#comment", CDATA sections "#cdata-section",
//                          documents "#document", fragments "#document-fragment";
//                          an element made without a name is named by its class
//                          ("DomElement"), a processing instruction by its target
//  getLocalName(), getNamespaceURI(), getPrefix()
//                          the names of the local-name, namespace-URI and prefix
//                          tags; a null string while the tag is 0
//  getNamespaceURIID(), getPrefixID(), getNodeID()
//                          the tags themselves
//  setNodeName(s), setLocalName(s), setNamespaceURI(s), setPrefix(s)
//                          set one tag from a name (the name is added to the tag
//                          manager; a null or empty name sets 0). Each tag is set
//                          by itself: renaming does not touch the other three.
//  setNodeID(t), setNodePrefix(t), setNodeLocalID(t), setNodeNamespaceURI(t)
//                          the same from tags
//
// Content
//  getNodeType()           the type code (constants below)
//  getNodeValue()          character data, attribute value or processing-
//                          instruction data; a null string for other nodes
//  setNodeValue(s)         sets that value; no effect on other nodes
//  hasAttributes()         whether the node is an element with attributes
//  getOwnerDocument()      the document the node belongs to: the one that made
//                          it or adopted it; a node made by the factory belongs
//                          to the process's default document until adopted. A
//                          document answers null, as does a node whose document
//                          has been freed.
//  getOwnerRDocument()     the body of that document (not counted), or null
//  getXPointer(from)       the path of element names joined by "." from below the
//                          element `from` down to this node (or, for a non-element,
//                          to its nearest element ancestor); with a null `from`
//                          the path starts at the topmost element. A null XPointer
//                          when this node is `from` itself or `from` is not above
//                          it.
//
// Hooks for the XML writer, the XML parser and visitors
//  serializeAsXML(writer)  asked by the writer at each of its states; non-zero
//                          means "this node wrote the output for the state
//                          itself". Answers 0 here.
//  traverse(visitor)       a node walks itself for a visitor; answers 0 ("not
//                          handled") here
//  beginFromXML(), endFromXML(mode)
//                          called when the parser starts and completes the node;
//                          do nothing here
//
// Change capture
//  captureChangesON()      starts a fresh change log on this node: from now on
//                          every change of this node or of a node below it (child
//                          inserted or removed, value, name or attribute changed)
//                          appends a record to the log
//  captureChangesOFF()     stops recording; the log is kept
//  getChanges()            the log: an element "Changes" whose children are the
//                          records "ChildInserted", "ChildRemoved", "ValueChanged",
//                          "NameChanged", "AttributeChanged", each with the values
//                          "Path" (the changed node's XPointer from this node, empty
//                          for this node itself) and "Node" (the name of the child
//                          or attribute concerned, or of the node itself); a null
//                          element before the first captureChangesON()
//  capturingChanges()      1 while recording
//  setNodePersistence(b)   marks the node as one that is to be kept (stored) or
//                          not; copied by cloneNode
// clang-format off
#define KEP_METHODS_DOMNode(X)                                                                  \
  X(DOMNode, KepDOMNode, appendChild, (KepDOMNode const& newChild), (newChild), , 1)            \
  X(DOMNode, KepDOMNode, cloneNode, (unsigned long deep), (deep), const, 1)                     \
  X(DOMNode, KepDOMNamedNodeMap, getAttributes, (), (), , 1)                                    \
  X(DOMNode, KepDOMNodeList, getChildNodes, (), (), const, 1)                                   \
  X(DOMNode, KepDOMNode, getFirstChild, (), (), const, 0)                                       \
  X(DOMNode, KepDOMNode, getFirstChild, (int nodeType), (nodeType), const, 0)                   \
  X(DOMNode, KepDOMNode, getLastChild, (), (), const, 0)                                        \
  X(DOMNode, KepDOMNode, getNextSibling, (), (), const, 0)                                      \
  X(DOMNode, KepDOMNode, getNextSibling, (int nodeType), (nodeType), const, 0)                  \
  X(DOMNode, KepString, getNodeName, (), (), const, 0)                                          \
  X(DOMNode, KepString, getLocalName, (), (), const, 0)                                         \
  X(DOMNode, KepString, getNamespaceURI, (), (), const, 0)                                      \
  X(DOMNode, int, getNamespaceURIID, (), (), const, 0)                                          \
  X(DOMNode, KepString, getPrefix, (), (), const, 0)                                            \
  X(DOMNode, int, getPrefixID, (), (), const, 0)                                                \
  X(DOMNode, int, getNodeType, (), (), const, 0)                                                \
  X(DOMNode, KepString, getNodeValue, (), (), const, 0)                                         \
  X(DOMNode, KepDOMDocument, getOwnerDocument, (), (), const, 0)                                \
  X(DOMNode, KepDOMNode, getParentNode, (), (), const, 0)                                       \
  X(DOMNode, KepDOMNode, getPreviousSibling, (), (), const, 0)                                  \
  X(DOMNode, unsigned long, hasChildNodes, (), (), const, 0)                                    \
  X(DOMNode, KepDOMNode, insertBefore, (KepDOMNode const& newChild, KepDOMNode const& refChild), \
    (newChild, refChild), , 1)                                                                  \
  X(DOMNode, KepDOMNode, removeChild, (KepDOMNode const& oldChild), (oldChild), , 1)             \
  X(DOMNode, KepDOMNode, replaceChild, (KepDOMNode const& newChild, KepDOMNode const& oldChild), \
    (newChild, oldChild), , 1)                                                                  \
  X(DOMNode, void, setNodeValue, (KepString const& value), (value), , 1)                        \
  X(DOMNode, unsigned long, hasAttributes, (), (), const, 0)                                    \
  X(DOMNode, unsigned long, serializeAsXML, (KepDOMWriter& writer), (writer), , 1)              \
  X(DOMNode, unsigned long, traverse, (KepVisitor& visitor), (visitor), , 1)                    \
  X(DOMNode, int, transferChildren, (KepDOMNode& to), (to), , 1)                                \
  X(DOMNode, int, transferAttribs, (KepDOMNode& to), (to), , 1)                                 \
  X(DOMNode, void, setNodeName, (KepString const& name), (name), , 1)                           \
  X(DOMNode, void, setLocalName, (KepString const& name), (name), , 1)                          \
  X(DOMNode, void, setNamespaceURI, (KepString const& uri), (uri), , 1)                         \
  X(DOMNode, void, setPrefix, (KepString const& prefix), (prefix), , 1)                         \
  X(DOMNode, void, beginFromXML, (), (), , 1)                                                   \
  X(DOMNode, void, endFromXML, (int mode), (mode), , 1)                                         \
  X(DOMNode, int, getNodeID, (), (), const, 0)                                                  \
  X(DOMNode, void, setNodeID, (int tag), (tag), , 1)                                            \
  X(DOMNode, void, setNodePrefix, (int tag), (tag), , 1)                                        \
  X(DOMNode, void, setNodeLocalID, (int tag), (tag), , 1)                                       \
  X(DOMNode, void, setNodeNamespaceURI, (int tag), (tag), , 1)                                  \
  X(DOMNode, void, captureChangesON, (), (), , 1)                                               \
  X(DOMNode, void, captureChangesOFF, (), (), , 1)                                              \
  X(DOMNode, KepDOMElement, getChanges, (), (), const, 1)                                       \
  X(DOMNode, unsigned long, capturingChanges, (), (), const, 0)                                 \
  X(DOMNode, void, setNodePersistence, (unsigned long persistent), (persistent), , 1)           \
  X(DOMNode, KepXPointer, getXPointer, (KepDOMElement const& from), (from), const, 0)           \
  X(DOMNode, KepRDOMDocument*, getOwnerRDocument, (), (), const, 0)
// clang-format on

// A handle on a DOM node (body KepRDOMNode and its descendants). Nodes are made
// by a document (KepDOMDocument::createElement and its companions) or by the
// factory from a class id.
//
// Every node name is held as tags: the node ID (the tag of the qualified name),
// and the prefix, local-name and namespace-URI tags. Comparing names is
// comparing tags; the string getters answer the names of the tags.
//
// Ownership: a parent holds a counted reference to each of its children, an
// element to its attribute map and the map to its attributes. The links back
// (parent, siblings, owner document, an attribute's element) are not counted,
// so a tree lives exactly as long as something outside holds its root or one
// of its nodes: dropping the last handle on a document frees the whole tree, and
// a node held elsewhere survives it, detached.
//
// Thread safety: a tree is meant for one thread at a time. Node bodies make no
// lock of their own; a caller that shares a tree between threads makes one with
// lock() on the node it guards and holds it around its calls (once made, the
// thread-safe bridge calls on that node take it too).
class KEP_API KepDOMNode : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNode, KepObject)

 public:
  // Node type codes answered by getNodeType() and used as type filters.
  enum : int {
    ATTRIBUTE_NODE = 1,
    CDATA_SECTION_NODE = 2,
    COMMENT_NODE = 3,
    DOCUMENT_TYPE_NODE = 4,
    DOCUMENT_NODE = 5,
    DOCUMENT_FRAGMENT_NODE = 6,
    ELEMENT_NODE = 7,
    ENTITY_NODE = 8,
    ENTITY_REFERENCE_NODE = 9,
    NOTATION_NODE = 10,
    PROCESSING_INSTRUCTION_NODE = 11,
    TEXT_NODE = 12
  };

  KEP_METHODS_DOMNode(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMNode(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMNODE_H
