#include "kep/xml/_KepDOMValue.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kep/base/KepRString.h"

namespace {

// The text narrowed to bytes for the C parsers; a unit above 0xFF (or a zero
// unit) becomes a byte that no number contains, so parsing stops there.
std::string narrowed(KepString const& text) {
  KepRString const* body = KepRString::of(text);
  std::string out;
  if (body == nullptr) return out;
  int n = body->unitCount();
  unsigned short const* units = body->units();
  out.resize(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    unsigned short u = units[i];
    out[static_cast<std::size_t>(i)] = (u == 0 || u > 0xFF) ? '\x01' : static_cast<char>(u);
  }
  return out;
}

KepString printed(char const* format, ...) __attribute__((format(printf, 1, 2)));

KepString printed(char const* format, ...) {
  char buffer[64];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return KepString(buffer);
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

_KepDOMValue::_KepDOMValue() noexcept : k(kNone), narrow(false), u{} {}

_KepDOMValue const& _KepDOMValue::none() noexcept {
  static _KepDOMValue const empty;
  return empty;
}

long double _KepDOMValue::longDouble() const noexcept {
  long double value;
  std::memcpy(&value, u.ld, sizeof value);
  return value;
}

void _KepDOMValue::setLongDouble(long double value) noexcept {
  std::memcpy(u.ld, &value, sizeof value);
}

void _KepDOMValue::clear() {
  k = kNone;
  narrow = false;
  u = {};
  obj = KepObject();
}

_KepDOMValue _KepDOMValue::ofText(KepString const& text) {
  _KepDOMValue v;
  v.k = kText;
  v.obj = text;
  return v;
}

_KepDOMValue _KepDOMValue::ofInt(int value) {
  _KepDOMValue v;
  v.k = kInt;
  v.u.i = value;
  return v;
}

_KepDOMValue _KepDOMValue::ofDate(uint32_t seconds) {
  _KepDOMValue v;
  v.k = kDate;
  v.u.seconds = seconds;
  return v;
}

_KepDOMValue _KepDOMValue::ofObject(KepObject const& object, Kind kind) {
  _KepDOMValue v;
  v.k = kind == kObjectText ? kObjectText : kObject;
  v.obj = object;
  return v;
}

_KepDOMValue _KepDOMValue::ofBool(unsigned long value) {
  _KepDOMValue v;
  v.k = kBool;
  v.u.b = value != 0 ? 1 : 0;
  return v;
}

_KepDOMValue _KepDOMValue::ofFloat(float value) {
  _KepDOMValue v;
  v.k = kDouble;
  v.narrow = true;
  v.u.d = value;
  return v;
}

_KepDOMValue _KepDOMValue::ofLong(long value) {
  _KepDOMValue v;
  v.k = kLongDouble;
  v.narrow = true;
  v.setLongDouble(static_cast<long double>(value));
  return v;
}

_KepDOMValue _KepDOMValue::ofLongDouble(long double value) {
  _KepDOMValue v;
  v.k = kLongDouble;
  v.setLongDouble(value);
  return v;
}

KepString _KepDOMValue::text() const {
  switch (k) {
    case kText:
      return KepString(obj);
    case kInt:
      return printed("%d", u.i);
    case kDate:
      return printed("%u", u.seconds);
    case kBool:
      return KepString(u.b ? "1" : "0");
    case kDouble:
      return narrow ? printed("%.9g", static_cast<double>(static_cast<float>(u.d)))
                    : printed("%.17g", u.d);
    case kLongDouble:
      return narrow ? printed("%ld", longOf(longDouble())) : printed("%.21Lg", longDouble());
    case kObject:
    case kObjectText:
      return obj.isNull() ? KepString() : obj.toString();
    case kNone:
      break;
  }
  return KepString();
}

long _KepDOMValue::toLong() const {
  switch (k) {
    case kInt:
      return u.i;
    case kDate:
      return static_cast<long>(u.seconds);
    case kBool:
      return static_cast<long>(u.b);
    case kDouble:
      return longOf(u.d);
    case kLongDouble:
      return longOf(longDouble());
    default:
      return parseLong(text());
  }
}

long double _KepDOMValue::toLongDouble() const {
  switch (k) {
    case kInt:
      return u.i;
    case kDate:
      return u.seconds;
    case kBool:
      return static_cast<long double>(u.b);
    case kDouble:
      return u.d;
    case kLongDouble:
      return longDouble();
    default:
      return parseLongDouble(text());
  }
}

unsigned long _KepDOMValue::toBool() const {
  switch (k) {
    case kInt:
      return u.i != 0;
    case kDate:
      return u.seconds != 0;
    case kBool:
      return u.b;
    case kDouble:
      return u.d != 0;
    case kLongDouble:
      return longDouble() != 0;
    default:
      return parseBool(text());
  }
}

long _KepDOMValue::longOf(long double value) {
  if (std::isnan(value)) return 0;
  constexpr long double two63 = 9223372036854775808.0L;
  constexpr long double two64 = 18446744073709551616.0L;
  if (value >= two64) return static_cast<long>(ULONG_MAX);
  if (value >= two63) return static_cast<long>(static_cast<unsigned long>(value));
  if (value < -two63) return LONG_MIN;
  return static_cast<long>(value);
}

long _KepDOMValue::parseLong(KepString const& text) {
  std::string bytes = narrowed(text);
  char const* start = bytes.c_str();
  char* end = nullptr;
  errno = 0;
  long value = std::strtol(start, &end, 10);
  if (end != nullptr && (*end == '.' || *end == 'e' || *end == 'E')) {
    return longOf(parseLongDouble(text));
  }
  if (errno == ERANGE && value == LONG_MAX) {
    // Past the signed range: read it as an unsigned value and wrap.
    errno = 0;
    unsigned long wide = std::strtoul(start, nullptr, 10);
    if (errno == 0) return static_cast<long>(wide);
  }
  return value;
}

long double _KepDOMValue::parseLongDouble(KepString const& text) {
  std::string bytes = narrowed(text);
  return std::strtold(bytes.c_str(), nullptr);
}

unsigned long _KepDOMValue::parseBool(KepString const& text) {
  std::string bytes = narrowed(text);
  std::size_t a = 0;
  std::size_t b = bytes.size();
  while (a < b && isSpace(bytes[a])) ++a;
  while (b > a && isSpace(bytes[b - 1])) --b;
  std::string word = bytes.substr(a, b - a);
  for (char& c : word) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  if (word == "true") return 1;
  if (word == "false") return 0;
  return parseLongDouble(text) != 0 ? 1 : 0;
}
