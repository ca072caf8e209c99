#include "kep/io/KepPath.h"

#include "kep/io/KepRIOStream.h"
#include "kep/io/KepRPath.h"

KEP_METHODS_Path(KEP_DEFINE_BRIDGE) KEP_METHODS_Path(KEP_DEFINE_HANDLE_METHOD)

    KepPath::KepPath(KepString const& path)
    : KepObject(new KepRPath(KepRIOStream::narrow(path))) {}
