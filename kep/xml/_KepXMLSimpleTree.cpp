#include "kep/xml/_KepXMLSimpleTree.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "kep/io/_KepIOBuffered.h"
#include "kep/xml/KepDOMText.h"
#include "kep/xml/KepXMLSimpleParser.h"

namespace {

// Builds the tree from the simple parser's callbacks. `text` collects the
// character data of each open element; it becomes a text child only of an
// element without element children.
struct TreeBuilder {
  KepDOMDocument document;
  KepDOMElement root;
  std::vector<KepDOMElement> open;
  std::vector<std::string> text;
  std::vector<bool> hasChildren;
  std::string content;  // the whole file
  size_t position = 0;
};

void onStart(void* user, char const* name, char const** attributes) {
  auto* b = static_cast<TreeBuilder*>(user);
  KepDOMElement element = b->document.createElement(KepString(name));
  for (char const** a = attributes; a != nullptr && a[0] != nullptr && a[1] != nullptr; a += 2) {
    element.setAttribute(KepString(a[0]), KepString(a[1]));
  }
  if (b->open.empty()) {
    if (b->root.isNull()) b->root = element;
  } else {
    b->open.back().appendChild(element);
    b->hasChildren.back() = true;
  }
  b->open.push_back(element);
  b->text.emplace_back();
  b->hasChildren.push_back(false);
}

std::string trimmed(std::string const& text) {
  size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return std::string();
  size_t last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

void onEnd(void* user, char const* /*name*/) {
  auto* b = static_cast<TreeBuilder*>(user);
  if (b->open.empty()) return;
  std::string value = trimmed(b->text.back());
  if (!b->hasChildren.back() && !value.empty()) {
    b->open.back().appendChild(b->document.createTextNode(KepString(value.c_str())));
  }
  b->open.pop_back();
  b->text.pop_back();
  b->hasChildren.pop_back();
}

void onChars(void* user, char const* text, int length) {
  auto* b = static_cast<TreeBuilder*>(user);
  if (!b->text.empty() && length > 0) b->text.back().append(text, static_cast<size_t>(length));
}

int readContent(void* user, char* buffer, int offset, int size) {
  auto* b = static_cast<TreeBuilder*>(user);
  if (buffer == nullptr || offset < 0 || size <= 0 || b->position >= b->content.size()) return -1;
  size_t n = std::min(static_cast<size_t>(size), b->content.size() - b->position);
  std::memcpy(buffer + offset, b->content.data() + b->position, n);
  b->position += n;
  return static_cast<int>(n);
}

// The whole file at `path` in `out`; false when it cannot be opened or read.
bool readFile(char const* path, std::string& out) {
  char normal[KEP_IO_PATH_MAX];
  _KEP_IO_BUFFERED file{};
  if (_KepIOPathBuild(path, nullptr, nullptr, nullptr, normal) != 0 ||
      _KepIOBufferedOpen(normal, KEP_IO_BUFFERED_DEFAULT, &file) != 0) {
    return false;
  }
  char piece[KEP_IO_BUFFERED_DEFAULT];
  uint32_t rc;
  do {
    uint32_t got = 0;
    rc = _KepIOBufferedRead(&file, piece, sizeof piece, &got);
    out.append(piece, got);
  } while (rc == 0);
  _KepIOBufferedClose(&file);
  return rc == KEP_IO_SHORT_READ;
}

}  // namespace

KepDOMElement _KepReadSimpleTree(char const* path, KepDOMDocument& document, int* status) {
  int dummy;
  int& result = status != nullptr ? *status : dummy;
  TreeBuilder builder;
  builder.document = document;
  if (path == nullptr || !readFile(path, builder.content)) {
    result = KEP_SIMPLE_TREE_UNREADABLE;
    return KepDOMElement();
  }
  if (builder.document.isNull() ||
      !KepRXMLSimpleParserExecute(&builder, readContent, onStart, onEnd, onChars) ||
      builder.root.isNull()) {
    result = KEP_SIMPLE_TREE_MALFORMED;
    return KepDOMElement();
  }
  result = KEP_SIMPLE_TREE_READ;
  return builder.root;
}
