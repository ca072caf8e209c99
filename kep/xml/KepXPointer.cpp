#include "kep/xml/KepXPointer.h"

#include <cstring>

#include "kep/xml/KepRXPointer.h"

KepXPointer::KepXPointer(KepString const& path)
    : KepString(static_cast<KepBridgeToObject*>(KepRXPointer::copyOf(path))) {}

KepXPointer::KepXPointer(char const* path)
    : KepString(static_cast<KepBridgeToObject*>(
          path == nullptr
              ? nullptr
              : KepRXPointer::createFromBytes(reinterpret_cast<unsigned char const*>(path),
                                              static_cast<int>(std::strlen(path))))) {}
