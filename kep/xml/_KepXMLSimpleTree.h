// Reading a small XML file (the error registry, a configuration) into an
// element tree with the simple parser.
#ifndef KEP_XML_KEPXMLSIMPLETREE_H
#define KEP_XML_KEPXMLSIMPLETREE_H

#include "kep/base/KepDefs.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMElement.h"

// What _KepReadSimpleTree found.
enum _KepSimpleTreeStatus : int {
  KEP_SIMPLE_TREE_READ = 0,        // the file parsed; the tree was built
  KEP_SIMPLE_TREE_UNREADABLE = 1,  // no path, or the file cannot be opened or read
  KEP_SIMPLE_TREE_MALFORMED = 2,   // the file is not well-formed XML (or no document)
};

// Reads the whole file at `path` (normalised as the file layer does) and builds
// its element tree from nodes of `document`; answers the document element,
// which is not attached to `document`. Elements keep their names as written
// (prefixes included: there is no namespace processing) and their attributes.
// Character data becomes one text child, without its leading and trailing white
// space, only for an element that has no element children and whose text is not
// blank; comments and processing instructions are dropped.
//
// Answers a null element and sets `*status` (when `status` is not null) to
// KEP_SIMPLE_TREE_UNREADABLE for a null path or a file that cannot be opened or
// read, to KEP_SIMPLE_TREE_MALFORMED for a document that does not parse or has
// no element (the simple parser writes the line, column and byte of the error
// to the log). A null `document` builds nothing and counts as malformed. The
// file is read whole into memory.
//
// Thread safety: each call is independent; `document` must not be changed by
// another thread meanwhile.
KEP_API KepDOMElement _KepReadSimpleTree(char const* path, KepDOMDocument& document, int* status);

#endif  // KEP_XML_KEPXMLSIMPLETREE_H
