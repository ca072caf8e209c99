#include "kep/base/KepRStringTokenizer.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"

KepRStringTokenizer::KepRStringTokenizer() : KepRStringTokenizer(KepString(), KepString(), 0) {}

KepRStringTokenizer::KepRStringTokenizer(KepString const& source, KepString const& delims,
                                         unsigned long returnDelimiters)
    : text(source),
      position(0),
      length(0),
      returnDelims(returnDelimiters),
      units(nullptr),
      asciiDelims{0, 0},
      otherDelims(false) {
  if (KepRString const* s = KepRString::of(text)) {
    units = s->units();
    length = s->unitCount();
  }
  setDelimiters(delims);
}

void KepRStringTokenizer::setDelimiters(KepString const& delims) {
  delimiters = KepRString::of(delims) != nullptr ? delims : KepString(" \t\n\r");
  KepRString const* d = KepRString::of(delimiters);
  asciiDelims[0] = asciiDelims[1] = 0;
  otherDelims = false;
  for (int i = 0; d != nullptr && i < d->unitCount(); ++i) {
    unsigned short u = d->units()[i];
    if (u < 128) {
      asciiDelims[u >> 6] |= uint64_t{1} << (u & 63);
    } else {
      otherDelims = true;
    }
  }
}

bool KepRStringTokenizer::isDelimiter(unsigned short unit) const {
  if (unit < 128) return (asciiDelims[unit >> 6] >> (unit & 63)) & 1;
  return otherDelims && delimiters.indexOf(unit) >= 0;
}

int KepRStringTokenizer::skipDelimiters(int from) const {
  if (returnDelims) return from;
  while (from < length && isDelimiter(units[from])) ++from;
  return from;
}

int KepRStringTokenizer::scanToken(int from) const {
  while (from < length && !isDelimiter(units[from])) ++from;
  return from;
}

int KepRStringTokenizer::countTokens() const {
  int count = 0;
  for (int at = position; at < length;) {
    if (isDelimiter(units[at])) {
      if (returnDelims) ++count;
      ++at;
    } else {
      ++count;
      at = scanToken(at);
    }
  }
  return count;
}

unsigned long KepRStringTokenizer::hasMoreElements() { return hasMoreTokens(); }

unsigned long KepRStringTokenizer::hasMoreTokens() {
  position = skipDelimiters(position);
  return position < length;
}

KepObject KepRStringTokenizer::nextElement() { return nextToken(); }

KepString KepRStringTokenizer::nextToken() {
  position = skipDelimiters(position);
  if (position >= length) return KepString();
  int start = position;
  position = scanToken(position);
  if (position == start) ++position;  // a returned delimiter is a token of its own
  return text.substring(start, position);
}

KepString KepRStringTokenizer::nextToken(KepString const& delims) {
  setDelimiters(delims);
  return nextToken();
}

KEP_REGISTER_LIBRARY_CLASS(StringTokenizer);
