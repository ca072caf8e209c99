// KepStringTokenizer: splits a KepString into tokens at delimiter units.
#ifndef KEP_BASE_KEPSTRINGTOKENIZER_H
#define KEP_BASE_KEPSTRINGTOKENIZER_H

#include "kep/base/KepString.h"

// The operations of KepStringTokenizer, in the order of the body's virtual
// operations. The three that hand out tokens are bracketed by the body's lock.
//
//  countTokens()        tokens left from the current position, without moving;
//                       with return-delimiters every delimiter unit counts too
//  hasMoreElements(), hasMoreTokens()
//                       skips delimiters (unless they are returned), then true
//                       while units are left
//  nextElement()        nextToken() as an object
//  nextToken()          the next run of non-delimiter units; with return-
//                       delimiters a delimiter unit standing at the position is a
//                       token of its own. A null string when nothing is left.
//  nextToken(delims)    replaces the delimiters (a null string restores the
//                       default " \t\n\r"), then nextToken()
// clang-format off
#define KEP_METHODS_StringTokenizer(X)                                               \
  X(StringTokenizer, int, countTokens, (), (), const, 0)                             \
  X(StringTokenizer, unsigned long, hasMoreElements, (), (), , 0)                    \
  X(StringTokenizer, unsigned long, hasMoreTokens, (), (), , 0)                      \
  X(StringTokenizer, KepObject, nextElement, (), (), , 1)                            \
  X(StringTokenizer, KepString, nextToken, (), (), , 1)                              \
  X(StringTokenizer, KepString, nextToken, (KepString const& delims), (delims), , 1)
// clang-format on

// Each unit of the delimiter string is a delimiter; the default is " \t\n\r"
// (also for a null delimiter string; an empty one means no delimiters). A null
// text has no tokens.
//
// Thread safety: the handing-out operations take the body's lock; a tokenizer is
// meant to be walked by one thread.
class KEP_API KepStringTokenizer : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepStringTokenizer, KepObject)

 public:
  // A new tokenizer over `text` with the default delimiters.
  KepStringTokenizer(KepString const& text);
  // A new tokenizer over `text` with the given delimiters.
  KepStringTokenizer(KepString const& text, KepString const& delims);
  // As above; with `returnDelims` set each delimiter unit is a token too.
  KepStringTokenizer(KepString const& text, KepString const& delims, unsigned long returnDelims);

  KEP_METHODS_StringTokenizer(KEP_DECLARE_METHOD);
};

KEP_METHODS_StringTokenizer(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPSTRINGTOKENIZER_H
