#include "kep/io/KepFile.h"

#include "kep/io/KepRFile.h"

KEP_METHODS_File(KEP_DEFINE_BRIDGE) KEP_METHODS_File(KEP_DEFINE_HANDLE_METHOD)

    KepFile::KepFile(KepString const& path)
    : KepIOStream(new KepRFile(KepRIOStream::narrow(path))) {}
