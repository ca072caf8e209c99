#include "kep/base/KepString.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kep/base/KepRString.h"

KEP_METHODS_String(KEP_DEFINE_BRIDGE);
KEP_METHODS_String(KEP_DEFINE_HANDLE_METHOD);

namespace {

KepString wrap(KepRString* body) { return KepString(static_cast<KepBridgeToObject*>(body)); }

KepString fromText(char const* text, int n) {
  return wrap(KepRString::createFromBytes(reinterpret_cast<unsigned char const*>(text), n));
}

// The bodies of the text constructors; built before the handle so that the
// handle is constructed (and reported to the debugger) once.
// The whole zero-terminated text.
KepBridgeToObject* bodyFromText(char const* text) {
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  return KepRString::createFromBytes(bytes, KepStrLen(reinterpret_cast<signed char const*>(text)));
}

KepBridgeToObject* bodyFromBytes(char const* text, int offset, int count) {
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  KepRString::Span span = KepRString::byteSpan(bytes, offset, count);
  return KepRString::createSpan(span.readable > 0 ? bytes + offset : nullptr, span);
}

KepBridgeToObject* bodyFromUnits(unsigned short const* units, int offset, int count) {
  KepRString::Span span = KepRString::unitSpan(units, offset, count);
  return KepRString::createSpan(span.readable > 0 ? units + offset : nullptr, span);
}

KepString printed(char const* format, ...) __attribute__((format(printf, 1, 2)));

KepString printed(char const* format, ...) {
  char text[64];
  va_list args;
  va_start(args, format);
  int n = std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  if (n < 0) n = 0;
  if (n >= static_cast<int>(sizeof text)) n = static_cast<int>(sizeof text) - 1;
  return fromText(text, n);
}

}  // namespace

int KepStrLen(signed char const* text) {
  if (text == nullptr) return 0;
  std::size_t n = std::strlen(reinterpret_cast<char const*>(text));
  return n > INT_MAX ? INT_MAX : static_cast<int>(n);
}

int KepWStrLen(unsigned short const* text) {
  if (text == nullptr) return 0;
  int n = 0;
  while (text[n] != 0) ++n;
  return n;
}

KepString::KepString(char const* text) : KepObject(bodyFromText(text)) {}

KepString::KepString(signed char* text) : KepObject(bodyFromText(reinterpret_cast<char*>(text))) {}

KepString::KepString(char const* text, int offset, int count)
    : KepObject(bodyFromBytes(text, offset, count)) {}

KepString::KepString(signed char* text, int offset, int count)
    : KepString(reinterpret_cast<char const*>(text), offset, count) {}

KepString::KepString(unsigned short const* units) : KepString(units, 0, -1) {}

KepString::KepString(unsigned short const* units, int offset, int count)
    : KepObject(bodyFromUnits(units, offset, count)) {}

KepString KepString::valueOf(unsigned short unit) { return wrap(KepRString::create(&unit, 1)); }

KepString KepString::valueOf(int value) { return printed("%ld", static_cast<long>(value)); }

KepString KepString::valueOf(long value) { return valueOf(value, 10); }

KepString KepString::valueOf(int value, int radix) {
  return valueOf(static_cast<long>(value), radix);
}

KepString KepString::valueOf(long value, int radix) {
  if (radix < 2 || radix > 36) radix = 10;
  char digits[72];
  int n = 0;
  // Radix 10 negates negative values; the other radixes divide them as they are.
  bool negate = radix == 10 && value < 0;
  long v = value;
  do {
    int r = static_cast<int>(v % radix);
    if (negate) r = -r;
    digits[n++] = static_cast<char>(r > 9 ? 'A' + r - 10 : '0' + r);
    v /= radix;
  } while (v != 0);
  if (radix == 16 && value < 0) {
    while (n < 16) digits[n++] = 'F';
  }
  char text[80];
  int t = 0;
  if (negate) text[t++] = '-';
  if (radix == 16) {
    text[t++] = '0';
    text[t++] = 'x';
  } else if (radix == 8) {
    text[t++] = '0';
  }
  while (n > 0) text[t++] = digits[--n];
  return fromText(text, t);
}

KepString KepString::valueOf(unsigned long boolean) { return fromText(boolean ? "1" : "0", 1); }

KepString KepString::valueOf(float value) { return printed("%.7e", static_cast<double>(value)); }

KepString KepString::valueOf(long double value) {
  return printed("%.17e", static_cast<double>(value));
}

std::string KepString::toStdString() const {
  KepRString const* s = KepRString::of(*this);
  if (s == nullptr) return std::string();
  std::string out(static_cast<size_t>(s->unitCount()), '\0');
  for (int i = 0; i < s->unitCount(); ++i) {
    out[static_cast<size_t>(i)] = static_cast<char>(s->units()[i]);
  }
  return out;
}
