// Basic definitions shared by every class of the library: export macro, the
// opaque bridge target type, the body marker and forward declarations.
#ifndef KEP_BASE_KEPDEFS_H
#define KEP_BASE_KEPDEFS_H

#include <cstdint>
#include <cstring>

// Marks a declaration as part of the exported interface of libKep11.
#define KEP_API __attribute__((visibility("default")))

// The marker word that every live body carries right behind its virtual table
// pointer. A handle never carries it, which is how the bridge tells the two apart.
constexpr uint32_t kKepBodyMagic = 0xa1059aafu;

// KepBridgeToObject is anything a handle can point at: a body (`KepRObject` and
// its descendants) or an outer object (a caller's class derived from a handle).
// Both start with a virtual table pointer followed by this 32-bit word; the word
// equals kKepBodyMagic exactly for bodies.
//
// Thread safety: the word is written once by the constructor and only read after.
class KEP_API KepBridgeToObject {
 public:
  virtual ~KepBridgeToObject() = default;

  // The word after the virtual table pointer: kKepBodyMagic in a live body,
  // anything else (0 for outer objects) in a handle.
  uint32_t kepWord;

 protected:
  explicit KepBridgeToObject(uint32_t word) noexcept : kepWord(word) {}
  KepBridgeToObject(KepBridgeToObject const&) = delete;
  KepBridgeToObject& operator=(KepBridgeToObject const&) = delete;
};

// Answers true exactly when `p` points at a body, that is when the 32-bit word
// behind its virtual table pointer equals kKepBodyMagic. `p` must not be null
// and must point at a body or a handle of this library; no other test is made.
inline bool KEP_IS_REAL_OBJ(KepBridgeToObject const* p) noexcept {
  return p->kepWord == kKepBodyMagic;
}

// The same test on an untyped pointer, reading the word by its position.
inline bool KEP_IS_REAL_OBJ(void const* p) noexcept {
  uint32_t word;
  std::memcpy(&word, static_cast<char const*>(p) + sizeof(void*), sizeof word);
  return word == kKepBodyMagic;
}

// Empty marker type. `KepObject(KepDummy*, KepDummy* classId)` is the outer-object
// constructor; the second argument carries a class id cast to a pointer.
struct KepDummy {};

// Converts a class id to the pointer form the outer-object constructors take.
inline KepDummy* KepClassIdArg(int classId) noexcept {
  return reinterpret_cast<KepDummy*>(static_cast<intptr_t>(classId));
}

// Forward declarations of the classes that appear in the root interfaces.
class KepObject;
class KepRObject;
class KepString;
class KepRString;
class KepDOMElement;
class KepDOMNode;
class KepDOMDocument;
class KepEvent;
class KepIOStream;

#endif  // KEP_BASE_KEPDEFS_H
