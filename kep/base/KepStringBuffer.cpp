#include "kep/base/KepStringBuffer.h"

#include "kep/base/KepRStringBuffer.h"

KEP_METHODS_StringBuffer(KEP_DEFINE_BRIDGE);
KEP_METHODS_StringBuffer(KEP_DEFINE_HANDLE_METHOD);

KepStringBuffer::KepStringBuffer(char const* text) : KepStringBuffer(text, 0, -1) {}

KepStringBuffer::KepStringBuffer(signed char* text) : KepStringBuffer(text, 0, -1) {}

KepStringBuffer::KepStringBuffer(char const* text, int offset, int count)
    : KepObject(new KepRStringBuffer()) {
  append(reinterpret_cast<signed char const*>(text), offset, count);
}

KepStringBuffer::KepStringBuffer(signed char* text, int offset, int count)
    : KepStringBuffer(reinterpret_cast<char const*>(text), offset, count) {}

KepStringBuffer::KepStringBuffer(unsigned short const* units) : KepStringBuffer(units, 0, -1) {}

KepStringBuffer::KepStringBuffer(unsigned short const* units, int offset, int count)
    : KepObject(new KepRStringBuffer()) {
  append(units, offset, count);
}

KepStringBuffer::KepStringBuffer(KepString const& text) : KepObject(new KepRStringBuffer()) {
  append(text);
}
