// The bridge machinery. Every public method of a handle class `KepX` is one line
// that calls the exported function `bridgeKepRX_<method>`; that function sends the
// call to the body's virtual operation (bracketed by the body's soft lock where the
// method is thread-safe) or, for a caller's outer object, to the handle-side virtual.
//
// A class lists its methods once, in a table macro of rows
//
//   X(Stem, ReturnType, name, (parameters), (arguments), qualifier, bracketed)
//
// where Stem is the class name without `Kep` (`String` for KepString/KepRString),
// the qualifier is `const` or empty, and bracketed is 1 when the real-body call is
// wrapped in threadSafeMethodBegin()/threadSafeMethodEnd(). The same table then
// declares the handle methods, the body's virtual operations and the bridge
// functions, and defines the bridges and the one-line handle methods:
//
//   // KepString.h
//   #define KEP_METHODS_String(X) X(String, int, length, (), (), const, 0) ...
//   class KepString : public KepObject {
//     KEP_HANDLE_CONSTRUCTORS(KepString, KepObject)
//     KEP_METHODS_String(KEP_DECLARE_METHOD)
//   };
//   KEP_METHODS_String(KEP_DECLARE_BRIDGE)
//
//   // KepRString.h (the body)
//   class KepRString : public KepRObject { ... KEP_METHODS_String(KEP_DECLARE_METHOD) };
//
//   // KepString.cpp
//   KEP_METHODS_String(KEP_DEFINE_BRIDGE)
//   KEP_METHODS_String(KEP_DEFINE_HANDLE_METHOD)
//
// Bodies that override a method already declared by a base body declare the
// override themselves; the table only lists the methods the class adds.
#ifndef KEP_BASE_KEPBRIDGE_H
#define KEP_BASE_KEPBRIDGE_H

#include "kep/base/KepDefs.h"

// The neutral result of a bridge called on a null target: 0 or false for numbers,
// nothing for void, a null handle for handle types.
template <class R>
inline R kepNeutralResult() {
  return R();
}

// Brackets a real-body call in the body's soft lock when `kBracket` is 1.
// Specialised in KepRObject.h, where the body's lock operations are known.
template <int kBracket>
struct KepBridgeBracket;

#define KEP_BRIDGE_PARAMS_(...) (KepBridgeToObject * kepTarget __VA_OPT__(, ) __VA_ARGS__)
#define KEP_BRIDGE_ARGS_(...) (this->target __VA_OPT__(, ) __VA_ARGS__)

// Calls from a host into the bridge functions and the handle methods go
// straight through the host's GOT entry instead of a lazy-binding PLT stub: one
// jump less on every call. (GCC only; other compilers keep the stub.)
#if defined(__GNUC__) && !defined(__clang__)
#define KEP_BRIDGE_LINKAGE __attribute__((noplt))
#else
#define KEP_BRIDGE_LINKAGE
#endif

// Bridges and handle methods start on a 32-byte boundary, so that the short
// path of every call (null test, body test, jump to the virtual) is fetched in
// one block wherever the linker happens to place it.
#define KEP_BRIDGE_ALIGN __attribute__((aligned(32)))

// Declares one table row as a virtual member (handle or body side).
#define KEP_DECLARE_METHOD(S, R, N, P, A, Q, B) virtual R N P Q;

// Declares one table row as an exported bridge function.
#define KEP_DECLARE_BRIDGE(S, R, N, P, A, Q, B) \
  KEP_API KEP_BRIDGE_LINKAGE R bridgeKepR##S##_##N KEP_BRIDGE_PARAMS_ P;

// Defines one bridge: null target -> neutral result; body -> body virtual
// (bracketed when B is 1); outer object -> handle-side virtual, unbracketed.
#define KEP_DEFINE_BRIDGE(S, R, N, P, A, Q, B)                  \
  KEP_BRIDGE_ALIGN R bridgeKepR##S##_##N KEP_BRIDGE_PARAMS_ P { \
    if (kepTarget == nullptr) return kepNeutralResult<R>();     \
    if (KEP_IS_REAL_OBJ(kepTarget)) {                           \
      KepR##S* kepBody = static_cast<KepR##S*>(kepTarget);      \
      KepBridgeBracket<B> kepBracket(kepBody);                  \
      return kepBody->N A;                                      \
    }                                                           \
    return static_cast<Kep##S*>(kepTarget)->N A;                \
  }

// Defines one handle method as the call of its bridge with the handle's target.
#define KEP_DEFINE_HANDLE_METHOD(S, R, N, P, A, Q, B) \
  KEP_BRIDGE_ALIGN R Kep##S::N P Q { return bridgeKepR##S##_##N KEP_BRIDGE_ARGS_ A; }

// Counts the rows of a table (used by tests to check the size of a family).
#define KEP_COUNT_METHOD(S, R, N, P, A, Q, B) +1
#define KEP_COUNT_BRACKETED(S, R, N, P, A, Q, B) +(B)

// The constructors, assignments every handle class has. `H` is the handle class,
// `Base` its direct base handle class.
//  - H(): a null handle.
//  - H(H const&), H(KepObject const&): share the source's target (an outer object
//    is shared by targeting the outer object itself). No type check is made: a
//    typed handle built from any handle targets the same body.
//  - H(H&&), H(KepObject&&): take the source's reference; the source becomes
//    null (an outer-object source is shared instead).
//  - H(KepBridgeToObject*): a handle on a body, or sharing a handle's target.
//  - H(KepDummy*, KepDummy* classId): the outer-object constructor for a caller's
//    class derived from H; with a non-null class id it makes a body of that class
//    through the factory and registers the new object as its outer object.
//  - Assignment releases the old target and shares the new one.
#define KEP_HANDLE_CONSTRUCTORS(H, Base) \
 public:                                 \
  H() noexcept : Base() {}               \
  KEP_HANDLE_SHARING_CONSTRUCTORS(H, Base)

// The constructors and assignments of KEP_HANDLE_CONSTRUCTORS without the default
// constructor, for a handle class whose default constructor makes a new body.
#define KEP_HANDLE_SHARING_CONSTRUCTORS(H, Base)                                                 \
 public:                                                                                         \
  H(H const& src) : Base(static_cast<KepDummy*>(nullptr), static_cast<KepDummy*>(nullptr)) {     \
    KepBridgeCopyCtor(this, src);                                                                \
  }                                                                                              \
  H(H&& src) noexcept : Base(static_cast<KepDummy*>(nullptr), static_cast<KepDummy*>(nullptr)) { \
    KepBridgeMoveCtor(this, src);                                                                \
  }                                                                                              \
  H(KepObject const& src)                                                                        \
      : Base(static_cast<KepDummy*>(nullptr), static_cast<KepDummy*>(nullptr)) {                 \
    KepBridgeCopyCtor(this, src);                                                                \
  }                                                                                              \
  H(KepObject&& src)                                                                             \
  noexcept : Base(static_cast<KepDummy*>(nullptr), static_cast<KepDummy*>(nullptr)) {            \
    KepBridgeMoveCtor(this, src);                                                                \
  }                                                                                              \
  H(KepBridgeToObject* p) : Base(p) {}                                                           \
  H(KepDummy* dummy, KepDummy* classId) : Base(dummy, classId) {}                                \
  H& operator=(H const& src) {                                                                   \
    KepBridgeOperatorAssign(this, src);                                                          \
    return *this;                                                                                \
  }                                                                                              \
  H& operator=(KepObject const& src) {                                                           \
    KepBridgeOperatorAssign(this, src);                                                          \
    return *this;                                                                                \
  }

#endif  // KEP_BASE_KEPBRIDGE_H
