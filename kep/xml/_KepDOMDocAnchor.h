// _KepDOMDocAnchor: the link from DOM nodes to the document they belong to.
#ifndef KEP_XML_KEPDOMDOCANCHOR_H
#define KEP_XML_KEPDOMDOCANCHOR_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepDefs.h"

class KepRDOMDocument;

// A small counted record that a document makes for itself and every node it owns
// refers to. The nodes count the record, not the document, so a document is not
// kept alive by its own nodes; when the document dies it clears `document`, and
// the nodes that outlive it see no owner. The record lives as long as the
// document or any of its nodes.
//
// Thread safety: the count and the document pointer are atomic.
struct KEP_API _KepDOMDocAnchor {
  explicit _KepDOMDocAnchor(KepRDOMDocument* doc) noexcept : refs(1), document(doc) {}
  _KepDOMDocAnchor(_KepDOMDocAnchor const&) = delete;
  _KepDOMDocAnchor& operator=(_KepDOMDocAnchor const&) = delete;

  void addRef(int64_t n = 1) noexcept { refs.fetch_add(n, std::memory_order_relaxed); }
  void release(int64_t n = 1) noexcept {
    if (refs.fetch_sub(n, std::memory_order_acq_rel) == n) delete this;
  }
  // The document, or null once it has been freed.
  KepRDOMDocument* get() const noexcept { return document.load(std::memory_order_acquire); }
  // Called by the document's destructor.
  void clear() noexcept { document.store(nullptr, std::memory_order_release); }

 private:
  ~_KepDOMDocAnchor() = default;

  std::atomic<int64_t> refs;
  std::atomic<KepRDOMDocument*> document;
};

#endif  // KEP_XML_KEPDOMDOCANCHOR_H
