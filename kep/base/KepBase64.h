// Base64 encoding and decoding of byte arrays (RFC 4648 alphabet, with padding,
// no line breaks).
#ifndef KEP_BASE_KEPBASE64_H
#define KEP_BASE_KEPBASE64_H

#include "kep/base/KepDefs.h"

// Encodes `n` bytes of `in` into a new array `out` (free it with delete[]) and
// answers the number of characters written: four for every group of three bytes,
// a last group of one byte giving two characters and "==", of two bytes three
// characters and "=". No terminator is written. Null `in` or n <= 0 gives an
// empty array and 0; a result longer than the int range gives null and 0.
KEP_API int ToB64(signed char const* in, int n, signed char*& out);

// Decodes `size` characters of `in` into a new array `out` of `size` bytes (free
// it with delete[]) and answers the number of bytes decoded. Characters are taken
// four at a time, three bytes per group; in the last group (fewer than five
// characters left from its start) each "=" counts one byte less: "TWE=" gives 2,
// "TQ==" gives 1. Meant for well-formed Base64: characters outside the alphabet
// count as 0, a short last group counts as padded with "=", and "=" elsewhere as
// 0; whatever the input, nothing is read or written outside the two arrays. Null
// `in` or size <= 0 gives an empty array and 0.
KEP_API int FromB64(signed char const* in, int size, signed char*& out);

#endif  // KEP_BASE_KEPBASE64_H
