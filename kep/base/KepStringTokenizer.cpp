#include "kep/base/KepStringTokenizer.h"

#include "kep/base/KepRStringTokenizer.h"

KEP_METHODS_StringTokenizer(KEP_DEFINE_BRIDGE);
KEP_METHODS_StringTokenizer(KEP_DEFINE_HANDLE_METHOD);

KepStringTokenizer::KepStringTokenizer(KepString const& text)
    : KepStringTokenizer(text, KepString(), 0) {}

KepStringTokenizer::KepStringTokenizer(KepString const& text, KepString const& delims)
    : KepStringTokenizer(text, delims, 0) {}

KepStringTokenizer::KepStringTokenizer(KepString const& text, KepString const& delims,
                                       unsigned long returnDelims)
    : KepObject(new KepRStringTokenizer(text, delims, returnDelims)) {}
