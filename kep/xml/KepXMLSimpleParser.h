// The simple XML parser: drives the XML tokenizer with a caller's callbacks and
// builds nothing. The start-up options reader uses it; the object-building
// parser shares its reading rules.
#ifndef KEP_XML_KEPXMLSIMPLEPARSER_H
#define KEP_XML_KEPXMLSIMPLEPARSER_H

#include "kep/base/KepDefs.h"

// Reads at most `size` bytes into buffer + offset; answers the count read, or -1
// at the end of the input or on failure.
using KepXMLSimpleRead = int (*)(void* user, char* buffer, int offset, int size);
// An element starts: its name, and its attributes as a null-terminated array of
// name, value, name, value ... (UTF-8, as the document has them).
using KepXMLSimpleStart = void (*)(void* user, char const* name, char const** attributes);
// An element ends.
using KepXMLSimpleEnd = void (*)(void* user, char const* name);
// A piece of character data of `length` bytes, not zero-terminated. The text of
// one element may come in several pieces.
using KepXMLSimpleChars = void (*)(void* user, char const* text, int length);

// Parses the document that `read` delivers, without namespace processing, and
// calls `start`, `end` and `chars` (each may be null) with `user`. The input is
// read in blocks of 32767 bytes until `read` answers -1 or fewer bytes than
// asked; that read ends the document.
//
// On malformed input the parse stops at the first error and the line
// "XML Parser Error: <text> at line <l>, column <c>, byte <b>." goes to the
// logger at error level (cut to 1000 bytes). Callbacks already made for the part
// before the error stand.
//
// Answers true when the whole document parsed, false on a parse error, a null
// `read` or when no parser could be made.
//
// Thread safety: each call uses its own parser; calls on different threads do
// not interfere.
KEP_API bool KepRXMLSimpleParserExecute(void* user, KepXMLSimpleRead read, KepXMLSimpleStart start,
                                        KepXMLSimpleEnd end, KepXMLSimpleChars chars);

// The size of the blocks the simple parser asks its read function for.
constexpr int KEP_XML_SIMPLE_BLOCK = 32767;

#endif  // KEP_XML_KEPXMLSIMPLEPARSER_H
