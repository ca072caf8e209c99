#include "kep/base/KepByteArray.h"

#include "kep/base/KepRByteArray.h"

KEP_METHODS_ByteArray(KEP_DEFINE_BRIDGE);
KEP_METHODS_ByteArray(KEP_DEFINE_HANDLE_METHOD);

KepByteArray::KepByteArray(char const* bytes, int n) : KepObject(new KepRByteArray(bytes, n)) {}
