// The checks behind the text fuzz targets. Each function takes one input, runs
// the library code on it and answers false when an invariant broke; the fuzz
// targets trap on false, and the base test suite replays the seed corpora through
// the same functions.
#ifndef KEP_FUZZ_TEXTFUZZHARNESS_H
#define KEP_FUZZ_TEXTFUZZHARNESS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace kepfuzz {

// Inputs beyond this size are cut, to keep each run short.
constexpr size_t kMaxInput = 1 << 16;

// Decodes arbitrary bytes, then checks that encoding the same bytes and decoding
// the result gives them back.
inline bool fromB64(uint8_t const* data, size_t size) {
  int n = static_cast<int>(std::min(size, kMaxInput));
  auto const* in = reinterpret_cast<signed char const*>(data);
  signed char* decoded = nullptr;
  int count = FromB64(in, n, decoded);
  bool ok = decoded != nullptr && count >= 0 && count <= n;
  delete[] decoded;

  signed char* text = nullptr;
  int chars = ToB64(in, n, text);
  ok = ok && chars == (n + 2) / 3 * 4;
  signed char* back = nullptr;
  int restored = FromB64(text, chars, back);
  ok = ok && restored == n && (n == 0 || std::memcmp(back, in, static_cast<size_t>(n)) == 0);
  delete[] text;
  delete[] back;
  return ok;
}

// Reads units from bytes: pairs of bytes (little-endian) when `wide`, else one
// byte each.
inline std::vector<unsigned short> unitsOf(uint8_t const* data, size_t size, bool wide) {
  std::vector<unsigned short> units;
  if (wide) {
    for (size_t i = 0; i + 1 < size; i += 2) {
      units.push_back(static_cast<unsigned short>(data[i] | data[i + 1] << 8));
    }
  } else {
    units.assign(data, data + size);
  }
  return units;
}

inline KepString stringOf(std::vector<unsigned short> const& units) {
  return KepString(units.data(), 0, static_cast<int>(units.size()));
}

// Input: a flag byte (bit 0 return delimiters, bit 1 default delimiters, bit 2
// units from byte pairs), a byte giving the size of the delimiter part, the
// delimiter part, the text. Checks that countTokens() foretells the tokens, that
// the tokens put together are the text without delimiters (or the whole text
// when delimiters are returned), and that the end is a null string.
inline bool tokenizer(uint8_t const* data, size_t size) {
  if (size < 2) return true;
  size = std::min(size, kMaxInput);
  unsigned flags = data[0];
  size_t delimBytes = std::min<size_t>(data[1], size - 2);
  bool wide = (flags & 4) != 0;
  std::vector<unsigned short> delims = unitsOf(data + 2, delimBytes, wide);
  std::vector<unsigned short> text = unitsOf(data + 2 + delimBytes, size - 2 - delimBytes, wide);
  KepString delimString = (flags & 2) ? KepString() : stringOf(delims);
  if (flags & 2) delims = {' ', '\t', '\n', '\r'};
  unsigned long returnDelims = flags & 1;
  KepStringTokenizer tokens(stringOf(text), delimString, returnDelims);

  auto isDelim = [&](unsigned short u) {
    return std::find(delims.begin(), delims.end(), u) != delims.end();
  };
  std::vector<unsigned short> expected;
  for (unsigned short u : text) {
    if (returnDelims || !isDelim(u)) expected.push_back(u);
  }
  int promised = tokens.countTokens();
  int seen = 0;
  std::vector<unsigned short> joined;
  while (tokens.hasMoreTokens()) {
    KepString token = tokens.nextToken();
    int n = token.length();
    if (token.isNull() || n == 0) return false;
    for (int i = 0; i < n; ++i) {
      unsigned short u = token.charAt(i);
      if (isDelim(u) && !(returnDelims && n == 1)) return false;
      joined.push_back(u);
    }
    ++seen;
  }
  return seen == promised && joined == expected && tokens.nextToken().isNull() &&
         tokens.countTokens() == 0;
}

// Input: two 16-bit little-endian numbers, offset and count, then 8-bit text.
// Builds a string from the text with that offset and count and checks its units
// against the rule (a positive count stops at the first zero byte; -1 takes the
// length of the whole text from its start, and units past the zero byte are
// zero), then runs the searching, case and slicing operations on it.
inline bool string8(uint8_t const* data, size_t size) {
  if (size < 4) return true;
  size = std::min(size, kMaxInput);
  int offset = static_cast<int16_t>(data[0] | data[1] << 8);
  int count = static_cast<int16_t>(data[2] | data[3] << 8);
  std::string text(reinterpret_cast<char const*>(data + 4), size - 4);  // a copy, zero-terminated
  KepString s(text.c_str(), offset, count);

  int whole = static_cast<int>(std::strlen(text.c_str()));
  int from = std::max(offset, 0);
  int rest = std::max(whole - from, 0);
  int want = count == -1 ? whole : (count <= 0 ? 0 : std::min(count, rest));
  if (s.isNull() || s.length() != want) return false;
  std::vector<unsigned short> units;
  for (int i = 0; i < want; ++i) {
    units.push_back(i < rest ? static_cast<unsigned char>(text[static_cast<size_t>(from + i)]) : 0);
  }
  KepString copy = stringOf(units);
  for (int i = 0; i < want; ++i) {
    if (s.charAt(i) != units[static_cast<size_t>(i)]) return false;
  }
  if (!s.equals(copy) || s.compareTo(copy) != 0 || s.hashCode() != copy.hashCode()) return false;

  int sharp = 0;
  for (int i = 0; i < want; ++i) sharp += s.charAt(i) == 0xDF;
  if (s.toUpperCase().length() != want + sharp || s.toLowerCase().length() != want) return false;
  KepString trimmed = s.trim();
  if (trimmed.length() > want || (want > 0 && s.indexOf(trimmed) < 0 && trimmed.length() > 0)) {
    return false;
  }
  int cut = want / 2;
  if (!s.substring(0, cut).concat(s.substring(cut)).equals(s)) return false;
  if (want > 0) {
    KepString tail = s.substring(cut);
    int at = s.lastIndexOf(tail);
    if (at != cut || !s.regionMatches(1, at, tail, 0, tail.length())) return false;
    if (s.indexOf(s.charAt(cut)) > cut || s.lastIndexOf(s.charAt(cut)) < cut) return false;
  }
  // The narrowed bytes give the units back; a zero unit inside ends the byte text.
  KepByteArray bytes = s.getBytes();
  auto const* narrow = static_cast<unsigned char const*>(bytes);
  if (!std::equal(units.begin(), units.end(), narrow)) return false;
  return s.indexOf(static_cast<unsigned short>(0)) >= 0 ||
         s.compareTo(static_cast<signed char const*>(bytes)) == 0;
}

}  // namespace kepfuzz

#endif  // KEP_FUZZ_TEXTFUZZHARNESS_H
