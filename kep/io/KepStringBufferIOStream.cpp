#include "kep/io/KepStringBufferIOStream.h"

#include "kep/io/KepRStringBufferIOStream.h"

KEP_METHODS_StringBufferIOStream(KEP_DEFINE_BRIDGE)
    KEP_METHODS_StringBufferIOStream(KEP_DEFINE_HANDLE_METHOD)

        KepStringBufferIOStream::KepStringBufferIOStream()
    : KepIOStream(new KepRStringBufferIOStream()) {}

KepStringBufferIOStream::KepStringBufferIOStream(KepString const& text)
    : KepIOStream(new KepRStringBufferIOStream(text)) {}
