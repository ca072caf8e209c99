// KepRDOMNodeList: the body of KepDOMNodeList.
#ifndef KEP_XML_KEPRDOMNODELIST_H
#define KEP_XML_KEPRDOMNODELIST_H

#include <cstdint>
#include <vector>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMNodeList.h"

class KepRDOMNode;
class KepRDOMParentNode;

// A taken list holds its nodes in an array of counted references. A live list
// holds a counted reference on its parent node and reads the parent's children,
// optionally only the child elements of one node ID. It remembers the last
// position it found, valid while the parent's change stamp stays the same, so
// that walking it in order costs constant time per step.
//
// Thread safety: see KepDOMNodeList.
class KEP_API KepRDOMNodeList : public KepRObject {
  KEP_BODY_IDENTITY(DOMNodeList, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMNodeList)

 public:
  KepRDOMNodeList() noexcept;
  ~KepRDOMNodeList() override;

  KEP_METHODS_DOMNodeList(KEP_DECLARE_METHOD)

      // Makes the list live over the children of `parent`, only the child elements
      // of node ID `tag` when it is not 0. A null parent makes it an empty taken
      // list. The taken nodes are dropped.
      void showChildren(KepRDOMParentNode* parent, int tag);
  // Appends a node to a taken list (no checks).
  void add(KepRDOMNode* node);

  KepRDOMParentNode* liveParent() const noexcept { return live; }
  int liveTag() const noexcept { return filterTag; }
  KepRDOMNode* at(int index) const;
  int size() const;

 protected:
  // Where a node joining the live list at its end goes: before the node
  // answered (null: at the end of the parent's children).
  KepRDOMNode* endPlace() const;
  // Whether `node` may be shown by this list (the name filter).
  bool fits(KepRDOMNode const* node) const;

 private:
  // The first node at or after `node` that the list shows.
  KepRDOMNode* firstShown(KepRDOMNode* node) const;
  void dropAll();

  KepRDOMParentNode* live;
  int filterTag;
  std::vector<KepRDOMNode*> nodes;
  // The last position found in a live list, and the parent's stamp then.
  mutable uint32_t cacheStamp;
  mutable int cacheIndex;
  mutable KepRDOMNode* cacheNode;
  mutable int cacheLength;
};

#endif  // KEP_XML_KEPRDOMNODELIST_H
