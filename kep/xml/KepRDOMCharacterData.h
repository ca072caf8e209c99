// KepRDOMCharacterData: the body of KepDOMCharacterData.
#ifndef KEP_XML_KEPRDOMCHARACTERDATA_H
#define KEP_XML_KEPRDOMCHARACTERDATA_H

#include "kep/xml/KepDOMCharacterData.h"
#include "kep/xml/KepRDOMChildNode.h"

// Holds the text as one counted string body (none while empty), a pointer
// rather than a handle to keep text nodes small. Every change builds a new
// string, tells the parent (an element drops its cached value) and is noted for
// change capture.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMCharacterData : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMCharacterData, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMCharacterData)

 public:
  KepRDOMCharacterData() noexcept = default;
  // Releases the text.
  ~KepRDOMCharacterData() override;

  KEP_METHODS_DOMCharacterData(KEP_DECLARE_METHOD)

      KepString getNodeValue() const override;
  void setNodeValue(KepString const& value) override;
  void copyInto(KepRDOMNode& copy) const override;

  // The text (null while empty) and its length, for the library's own readers.
  KepString text() const;
  int textLength() const noexcept;
  // The text's body itself (null while empty), for readers that need no handle.
  KepRObject const* textBody() const noexcept { return data; }
  // Sets the text of a node nobody has seen yet, without notes.
  void initData(KepString const& text) { assign(text); }
  // The same with a string body, whose reference (the caller's) the node takes
  // over.
  void adoptData(KepRObject* body) noexcept {
    KepRObject* old = data;
    data = body;
    if (old != nullptr) old->release();
  }

 protected:
  // Replaces units [from, to) by `insert` (offsets checked by the caller).
  void splice(int from, int to, KepString const& insert);
  // Makes the body of `text` (none for a null handle) the text, counted.
  void assign(KepString const& text);

 private:
  // The text's body, or null while empty.
  KepRObject* data = nullptr;
};

#endif  // KEP_XML_KEPRDOMCHARACTERDATA_H
