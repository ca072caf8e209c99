#include "kep/base/_KepErrorRegistry.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepThread.h"
#include "kep/io/KepFile.h"
#include "kep/io/_KepIO.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMNode.h"
#include "kep/xml/KepXMLParser.h"

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

// The text of the value `name` of `element` without its leading and trailing
// white space; empty when it is missing.
std::string valueText(KepDOMElement const& element, char const* name) {
  KepString value = element.getString(KepString(name));
  std::string text = value.isNull() ? std::string() : value.toStdString();
  size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
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

}  // namespace

int _KepReadErrorRegistry() {
  char path[KEP_IO_PATH_MAX];
  if (!_KepGetErrorRegistryPath(path, sizeof path)) {
    KepProcess::logDebugString("No error registry: %s is not set", KEP_ERROR_REGISTRY_VARIABLE);
    return -1;
  }
  KepFile file{KepString(path)};
  if (file.isFile() == 0 || file.canRead() == 0) {
    KepLogger::log(KepLogger::kWarning, "Error registry %s cannot be read; no errors registered",
                   path);
    return -1;
  }
  // The parser records a failure on the calling thread's error stack; it is
  // reported on the log here and taken off the stack again.
  KepThread* thread = KepProcess::getCurrThread();
  KepObject before = thread != nullptr ? KepObject(thread->getErrorObject()) : KepObject();
  KepXMLParser parser(KepGetObject(KepClassID::XMLParser, 0));
  KepDOMNode document = parser.buildObjects(file);
  file.close();
  bool failed = thread != nullptr && thread->errorOK() == 0 &&
                thread->getErrorObject().getRealKepObj() != before.getRealKepObj();
  if (failed) {
    KepDOMElement error = thread->getErrorObject();
    KepLogger::log(
        KepLogger::kWarning, "Error registry %s is not well-formed: line %d, column %d: %s", path,
        error.get(KepString("Line")).getInteger(), error.get(KepString("Column")).getInteger(),
        error.getString(KepString("String")).toStdString().c_str());
    while (thread->errorOK() == 0 &&
           thread->getErrorObject().getRealKepObj() != before.getRealKepObj()) {
      thread->popError();
    }
  }
  KepDOMElement root =
      document.isNull() ? KepDOMElement() : KepDOMDocument(document).getDocumentElement();
  if (root.isNull()) {
    if (!failed) {
      KepLogger::log(KepLogger::kWarning, "Error registry %s holds no element", path);
    }
    return -1;
  }
  int taken = KepProcess::registerErrors(root);
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
    entry.errorId = std::atoi(valueText(error, "ErrorId").c_str());
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
