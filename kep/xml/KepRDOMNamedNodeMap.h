// KepRDOMNamedNodeMap: the body of KepDOMNamedNodeMap.
#ifndef KEP_XML_KEPRDOMNAMEDNODEMAP_H
#define KEP_XML_KEPRDOMNAMEDNODEMAP_H

#include <cstddef>
#include <cstdint>

#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMNamedNodeMap.h"

class KepRDOMNode;

// The nodes in the order they were added, each counted; lookups walk the
// array comparing tags (maps are small: an element's attributes). The array
// may start in room that its maker placed right behind the map (the parser
// sizes an element's map for its attributes that way); it moves to the heap
// when it needs more. The owner is
// not counted; it clears itself with ownerGone() before it dies. Derived maps
// decide which nodes they take and what joining and leaving the map does to a
// node (accepts, attached, detached).
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMNamedNodeMap : public KepRObject {
  KEP_BODY_IDENTITY(DOMNamedNodeMap, KepRObject)
  KEP_BODY_CREATE_ANOTHER(DOMNamedNodeMap)

 public:
  KepRDOMNamedNodeMap() noexcept;
  // A map whose array starts in `room`, `roomSize` slots that the caller keeps
  // as long as the map lives.
  KepRDOMNamedNodeMap(KepRDOMNode** room, int roomSize) noexcept;
  ~KepRDOMNamedNodeMap() override;

  KEP_METHODS_DOMNamedNodeMap(KEP_DECLARE_METHOD)

      // --- For the owner (not bridged) ---------------------------------------------

      void setOwner(KepRDOMNode* node) noexcept {
    owner = node;
  }
  KepRDOMNode* ownerBody() const noexcept { return owner; }
  // Called by the owner before it dies: every node is detached from it, and the
  // map keeps its nodes without an owner.
  virtual void ownerGone();

  int size() const noexcept { return static_cast<int>(nodes.size()); }
  KepRDOMNode* at(int index) const noexcept;
  // The position of the node of that node ID (URI and local name), or -1.
  int find(int tag) const;
  int findNS(int uriTag, int localTag) const;
  int indexOfBody(KepRDOMNode const* node) const noexcept;
  // Adds `node`, replacing the node of the same node ID (with `byNS`: of the
  // same URI and local name); a handle on the replaced node. `refused` is set
  // when the map does not take the node (nothing changes then).
  KepDOMNode put(KepRDOMNode* node, bool byNS, bool& refused);
  // Appends `node` without the checks of put(): the caller vouches that the map
  // accepts it, does not hold it and holds no node of the same node ID, nor of
  // the same URI and local name (the parser's attributes, whose names the
  // tokenizer has checked).
  void appendChecked(KepRDOMNode* node);
  // Makes room for `more` nodes.
  void reserve(int more) { nodes.reserve(nodes.size() + static_cast<std::size_t>(more)); }

  // The map's array of nodes.
  class Nodes {
   public:
    Nodes() noexcept = default;
    Nodes(KepRDOMNode** room, int roomSize) noexcept
        : data(room), capacity(roomSize > 0 ? static_cast<uint32_t>(roomSize) : 0) {}
    ~Nodes();
    Nodes(Nodes const&) = delete;
    Nodes& operator=(Nodes const&) = delete;

    std::size_t size() const noexcept { return count; }
    KepRDOMNode*& operator[](std::size_t i) noexcept { return data[i]; }
    KepRDOMNode* operator[](std::size_t i) const noexcept { return data[i]; }
    KepRDOMNode* const* begin() const noexcept { return data; }
    KepRDOMNode* const* end() const noexcept { return data + count; }
    void push_back(KepRDOMNode* node) {
      if (count == capacity) grow(std::size_t{count} + 1);
      data[count++] = node;
    }
    // Removes the node at `index` (< size()).
    void erase(std::size_t index) noexcept;
    void reserve(std::size_t total) {
      if (total > capacity) grow(total);
    }

   private:
    void grow(std::size_t total);

    KepRDOMNode** data = nullptr;
    uint32_t count = 0;
    uint32_t capacity = 0;
    // Whether `data` is a heap block of this array (not the maker's room).
    bool owned = false;
  };
  // Removes the node at `index`; a handle on it, null when out of range.
  KepDOMNode takeAt(int index);

 protected:
  // Whether the map takes `node`: any node but documents, fragments and
  // attributes here.
  virtual bool accepts(KepRDOMNode const& node) const;
  // Called after `node` joined the map, and after it left it.
  virtual void attached(KepRDOMNode& node);
  virtual void detached(KepRDOMNode& node);

  // The positions of a URI and local name given as strings; false when a name is
  // not a known tag (nothing can match it).
  static bool namespaceTags(KepString const& uri, KepString const& localName, int& uriTag,
                            int& localTag);

  Nodes nodes;
  KepRDOMNode* owner;
};

#endif  // KEP_XML_KEPRDOMNAMEDNODEMAP_H
