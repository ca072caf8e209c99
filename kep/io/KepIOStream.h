// KepIOStream: handle on a byte stream.
#ifndef KEP_IO_KEPIOSTREAM_H
#define KEP_IO_KEPIOSTREAM_H

#include "kep/base/KepObject.h"

// handle on a byte stream.
class KEP_API KepIOStream : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepIOStream, KepObject)
};

#endif  // KEP_IO_KEPIOSTREAM_H
