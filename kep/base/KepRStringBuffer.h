// KepRStringBuffer: the body of KepStringBuffer.
#ifndef KEP_BASE_KEPRSTRINGBUFFER_H
#define KEP_BASE_KEPRSTRINGBUFFER_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepStringBuffer.h"

// A new buffer has no array, length 0 and capacity 0. Once anything was stored
// the array holds a zero unit at index length.
//
// Thread safety: see KepStringBuffer.
class KEP_API KepRStringBuffer : public KepRObject {
  KEP_BODY_IDENTITY(StringBuffer, KepRObject)
  KEP_BODY_CREATE_ANOTHER(StringBuffer)

 public:
  KepRStringBuffer() noexcept;
  ~KepRStringBuffer() override;

  // A new KepString of the units (empty for an empty buffer).
  KepString toString() const override;

  KEP_METHODS_StringBuffer(KEP_DECLARE_METHOD);

  // The units (zero-terminated once anything was stored; null before).
  unsigned short const* units() const noexcept { return chars; }

 private:
  // Appends `k` units and answers a handle on this body.
  KepStringBuffer appendUnits(unsigned short const* units, int k);
  // Appends `k` units: the first `readable` copied from `units` or widened from
  // `bytes` (whichever is given), zero units after them.
  KepStringBuffer appendText(unsigned short const* units, unsigned char const* bytes, int readable,
                             int k);
  // Makes room for `k` more units behind the current ones; answers where they go.
  unsigned short* growFor(int k);
  // Inserts `k` units at `at` into a new array of exactly the needed size.
  KepStringBuffer insertUnits(int at, unsigned short const* units, int k);
  // Replaces the array by `fresh`, which holds `units` units and the terminator.
  void adopt(unsigned short* fresh, int units);
  KepStringBuffer self();

  unsigned short* chars;
  int len;
  // The capacity as the growth rule sees it. insert, setLength and reverse leave
  // it as it was while they rebuild the array.
  int cap;
  // Units the array really holds; appends never write past it.
  int allocated;
};

#endif  // KEP_BASE_KEPRSTRINGBUFFER_H
