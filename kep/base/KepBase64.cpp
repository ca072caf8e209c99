#include "kep/base/KepBase64.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr char kPad = '=';

// Value of each byte as a Base64 digit; 0 for '=' and for bytes outside the
// alphabet.
struct DigitValues {
  uint8_t value[256] = {};
  constexpr DigitValues() {
    for (int i = 0; i < 64; ++i)
      value[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
  }
};
constexpr DigitValues kDigits;

}  // namespace

int ToB64(signed char const* in, int n, signed char*& out) {
  if (in == nullptr || n < 0) n = 0;
  int64_t chars = (static_cast<int64_t>(n) + 2) / 3 * 4;
  if (chars > INT_MAX) {
    out = nullptr;
    return 0;
  }
  out = new signed char[static_cast<size_t>(chars)];
  auto const* bytes = reinterpret_cast<unsigned char const*>(in);
  signed char* o = out;
  int i = 0;
  for (; i + 3 <= n; i += 3) {
    uint32_t group = uint32_t{bytes[i]} << 16 | uint32_t{bytes[i + 1]} << 8 | bytes[i + 2];
    *o++ = kAlphabet[group >> 18];
    *o++ = kAlphabet[(group >> 12) & 63];
    *o++ = kAlphabet[(group >> 6) & 63];
    *o++ = kAlphabet[group & 63];
  }
  if (int left = n - i; left > 0) {
    uint32_t group = uint32_t{bytes[i]} << 16 | (left == 2 ? uint32_t{bytes[i + 1]} << 8 : 0);
    *o++ = kAlphabet[group >> 18];
    *o++ = kAlphabet[(group >> 12) & 63];
    *o++ = left == 2 ? kAlphabet[(group >> 6) & 63] : kPad;
    *o++ = kPad;
  }
  return static_cast<int>(chars);
}

int FromB64(signed char const* in, int size, signed char*& out) {
  if (in == nullptr || size < 0) size = 0;
  out = new signed char[static_cast<size_t>(size)];
  auto const* chars = reinterpret_cast<unsigned char const*>(in);
  int decoded = 0;
  int written = 0;
  for (int start = 0; start < size; start += 4) {
    int available = std::min(4, size - start);
    uint32_t group = 0;
    int pads = 4 - available;  // a short last group counts as padded
    for (int k = 0; k < 4; ++k) {
      unsigned char c = k < available ? chars[start + k] : kPad;
      group = group << 6 | kDigits.value[c];
      if (k < available && c == kPad) ++pads;
    }
    if (size - start < 5) {
      decoded += std::max(0, 3 - pads);
    } else {
      decoded += 3;
    }
    for (int shift = 16; shift >= 0 && written < size; shift -= 8) {
      out[written++] = static_cast<signed char>((group >> shift) & 0xFF);
    }
  }
  return decoded;
}
