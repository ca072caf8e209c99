#include "kep/base/_KepErrorRegistry.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/io/_KepIOBuffered.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepDOMText.h"
#include "kep/xml/KepRDOMNode.h"
#include "kep/xml/KepXMLSimpleParser.h"

namespace {

// The entries by the tag of their name. Never destroyed: a thread may log an
// error while the process exits.
struct Registry {
  std::mutex mutex;
  std::unordered_map<int, _KepErrorEntry> byTag;
};

Registry& registry() {
  static Registry* r = new Registry;
  return *r;
}

std::string lowered(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

char const* const kLevelNames[] = {"Debug", "Info", "Warning", "Error", "Fatal"};

KepLogger::Level levelOf(std::string const& text) {
  if (text.size() == 1 && text[0] >= '0' && text[0] <= '4') {
    return static_cast<KepLogger::Level>(text[0] - '0');
  }
  std::string word = lowered(text);
  for (int level = KepLogger::kDebug; level <= KepLogger::kFatal; ++level) {
    if (word == lowered(kLevelNames[level])) return static_cast<KepLogger::Level>(level);
  }
  return KepLogger::kError;
}

// The text of the value `name` of `element`; empty when it is missing.
std::string valueText(KepDOMElement const& element, char const* name) {
  KepString text = element.getString(KepString(name));
  return text.isNull() ? std::string() : text.toStdString();
}

// An element's own tag (0 for a node named only by its class).
int ownTag(KepDOMNode const& node) {
  KepRDOMNode* body = KepRDOMNode::of(node);
  return body != nullptr ? body->ownNodeID() : 0;
}

// Appends `text` to `line`, with line breaks as spaces.
void appendOneLine(std::string& line, std::string const& text) {
  for (char c : text) line += c == '\n' || c == '\r' ? ' ' : c;
}

// Builds an element tree of the default document from the simple parser's
// callbacks. `text` collects the character data of each open element; it
// becomes a text child only of an element without element children.
struct TreeBuilder {
  KepDOMDocument document;
  KepDOMElement root;
  std::vector<KepDOMElement> open;
  std::vector<std::string> text;
  std::vector<bool> hasChildren;
  std::string content;  // the whole file
  size_t position = 0;
};

void onStart(void* user, char const* name, char const** /*attributes*/) {
  auto* b = static_cast<TreeBuilder*>(user);
  KepDOMElement element = b->document.createElement(KepString(name));
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

int _KepReadErrorRegistry() {
  char path[KEP_IO_PATH_MAX];
  if (!_KepGetErrorRegistryPath(path, sizeof path)) {
    KepProcess::logDebugString("No error registry: %s is not set", KEP_ERROR_REGISTRY_VARIABLE);
    return -1;
  }
  TreeBuilder builder;
  builder.document = KepFactory::getDefaultDoc();
  if (!readFile(path, builder.content)) {
    KepLogger::log(KepLogger::kWarning, "Error registry %s cannot be read; no errors registered",
                   path);
    return -1;
  }
  if (builder.document.isNull() ||
      !KepRXMLSimpleParserExecute(&builder, readContent, onStart, onEnd, onChars) ||
      builder.root.isNull()) {
    KepLogger::log(KepLogger::kWarning,
                   "Error registry %s is not well-formed; no errors registered", path);
    return -1;
  }
  int taken = KepProcess::registerErrors(builder.root);
  KepProcess::logDebugString("Error registry %s: %d errors registered", path, taken);
  return taken;
}

int _KepErrorRegistry::registerErrors(KepDOMElement const& errors) {
  if (errors.isNull()) return 0;
  // Creates the tag when it is new; 0 only while there is no tag manager.
  int errorTag = KepNameToTag("Error");
  if (errorTag == 0) return 0;
  int taken = 0;
  for (KepDOMNode node = errors.getFirstChild(KepDOMNode::ELEMENT_NODE); !node.isNull();
       node = node.getNextSibling(KepDOMNode::ELEMENT_NODE)) {
    if (node.getNodeID() != errorTag) continue;
    KepDOMElement error(node);
    _KepErrorEntry entry;
    entry.name = valueText(error, "Name");
    if (entry.name.empty()) continue;
    entry.tag = KepNameToTag(entry.name.c_str());
    if (entry.tag == 0) continue;
    entry.errorId = error.get(KepString("ErrorId")).getInteger();
    entry.message = valueText(error, "Message");
    entry.level = levelOf(valueText(error, "Level"));
    entry.service = valueText(error, "Service");
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.mutex);
    r.byTag[entry.tag] = std::move(entry);
    ++taken;
  }
  return taken;
}

bool _KepErrorRegistry::find(int tag, _KepErrorEntry& out) {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  auto it = r.byTag.find(tag);
  if (it == r.byTag.end()) return false;
  out = it->second;
  return true;
}

bool _KepErrorRegistry::findById(int errorId, _KepErrorEntry& out) {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  for (auto const& item : r.byTag) {
    if (item.second.errorId == errorId) {
      out = item.second;
      return true;
    }
  }
  return false;
}

int _KepErrorRegistry::size() {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  return static_cast<int>(r.byTag.size());
}

void _KepErrorRegistry::clear() {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  r.byTag.clear();
}

void _KepLogError(KepDOMElement const& error) {
  if (error.isNull()) return;
  int tag = ownTag(error);
  KepString tagName = tag != 0 ? KepProcess::tagToName(tag) : KepString();
  std::string name = tagName.isNull() ? std::string("-") : tagName.toStdString();
  _KepErrorEntry entry;
  bool known = tag != 0 && _KepErrorRegistry::find(tag, entry);
  if (!known) {
    name += " (unregistered error)";
    entry.service = "none";
    entry.message = "none";
  }
  std::string line = "ErrorId " + std::to_string(entry.errorId) + " (";
  appendOneLine(line, name);
  line += "), service owning error=";
  appendOneLine(line, entry.service);
  line += ", Level ";
  line += kLevelNames[entry.level];
  line += ", Message ";
  appendOneLine(line, entry.message);
  for (KepDOMNode node = error.getFirstChild(KepDOMNode::ELEMENT_NODE); !node.isNull();
       node = node.getNextSibling(KepDOMNode::ELEMENT_NODE)) {
    line += ", ";
    appendOneLine(line, node.getNodeName().toStdString());
    line += "=";
    KepString value = KepDOMElement(node).getString();
    if (!value.isNull()) appendOneLine(line, value.toStdString());
  }
  KepLogger::logText(entry.level, line.c_str());
}

bool _KepGetErrorRegistryPath(char* buffer, int size) {
  if (buffer == nullptr || size <= 0) return false;
  buffer[0] = '\0';
  char const* path = std::getenv(KEP_ERROR_REGISTRY_VARIABLE);
  if (path == nullptr || *path == '\0') return false;
  if (std::snprintf(buffer, static_cast<size_t>(size), "%s", path) >= size) {
    buffer[0] = '\0';
    return false;
  }
  return true;
}
