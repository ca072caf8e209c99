// KepRStringTokenizer: the body of KepStringTokenizer.
#ifndef KEP_BASE_KEPRSTRINGTOKENIZER_H
#define KEP_BASE_KEPRSTRINGTOKENIZER_H

#include <cstdint>

#include "kep/base/KepRObject.h"
#include "kep/base/KepStringTokenizer.h"

// Holds the text, the delimiters, the position of the next unit to look at and
// the return-delimiters flag.
//
// Thread safety: see KepStringTokenizer.
class KEP_API KepRStringTokenizer : public KepRObject {
  KEP_BODY_IDENTITY(StringTokenizer, KepRObject)
  KEP_BODY_CREATE_ANOTHER(StringTokenizer)

 public:
  // A tokenizer over a null text (no tokens).
  KepRStringTokenizer();
  KepRStringTokenizer(KepString const& text, KepString const& delims, unsigned long returnDelims);

  KEP_METHODS_StringTokenizer(KEP_DECLARE_METHOD);

 private:
  void setDelimiters(KepString const& delims);
  bool isDelimiter(unsigned short unit) const;
  // The first position at or after `from` that is not a delimiter.
  int skipDelimiters(int from) const;
  // The end of the token starting at `from` (the first delimiter after it).
  int scanToken(int from) const;

  KepString text;
  KepString delimiters;
  int position;
  int length;
  unsigned long returnDelims;
  unsigned short const* units;
  // Delimiters below 128, one bit each; the others are searched in `delimiters`.
  uint64_t asciiDelims[2];
  bool otherDelims;
};

#endif  // KEP_BASE_KEPRSTRINGTOKENIZER_H
