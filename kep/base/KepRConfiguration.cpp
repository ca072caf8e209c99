#include "kep/base/KepRConfiguration.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "kep/base/KepFactory.h"
#include "kep/base/KepLogger.h"
#include "kep/base/KepProcess.h"
#include "kep/io/KepRIOStream.h"
#include "kep/xml/KepXPointer.h"
#include "kep/xml/_KepXMLSimpleTree.h"

KepRConfiguration::KepRConfiguration() = default;

unsigned long KepRConfiguration::load(KepString const& file) {
  clear();
  std::string bytes = KepRIOStream::narrow(file);
  if (bytes.empty()) {
    KepProcess::logDebugString("No configuration file given; the configuration is empty");
    return 0;
  }
  KepDOMDocument fresh(KepGetObject(KepClassID::DOMDocument, 0));
  if (fresh.isNull()) return 0;
  int status = KEP_SIMPLE_TREE_READ;
  KepDOMElement element = _KepReadSimpleTree(bytes.c_str(), fresh, &status);
  if (element.isNull()) {
    KepLogger::log(KepLogger::kWarning, "Configuration %s %s; the configuration is empty",
                   bytes.c_str(),
                   status == KEP_SIMPLE_TREE_UNREADABLE ? "cannot be read" : "is not well-formed");
    return 0;
  }
  fresh.appendChild(element);
  document = fresh;
  root = element;
  path = file;
  KepProcess::logDebugString("Configuration %s loaded", bytes.c_str());
  return 1;
}

unsigned long KepRConfiguration::isLoaded() const { return root.isNull() ? 0 : 1; }

KepString KepRConfiguration::getPath() const { return path; }

KepDOMElement KepRConfiguration::getRoot() const { return root; }

KepDOMElement KepRConfiguration::get(KepString const& steps) const {
  if (root.isNull()) return root;
  if (steps.isNull() || steps.length() == 0) return root;
  return root.find(KepXPointer(steps), 0);
}

KepString KepRConfiguration::getString(KepString const& steps) const {
  KepDOMElement element = get(steps);
  return element.isNull() ? KepString() : element.getString();
}

int KepRConfiguration::getInteger(KepString const& steps, int defaultValue) const {
  KepString text = getString(steps);
  if (text.isNull()) return defaultValue;
  std::string bytes = KepRIOStream::narrow(text);
  char const* begin = bytes.c_str();
  char* end = nullptr;
  errno = 0;
  long value = std::strtol(begin, &end, 10);
  if (end == begin || errno == ERANGE || value < INT_MIN || value > INT_MAX) return defaultValue;
  while (*end == ' ' || *end == '\t' || *end == '\r' || *end == '\n') ++end;
  return *end == '\0' ? static_cast<int>(value) : defaultValue;
}

void KepRConfiguration::clear() {
  root = KepDOMElement();
  document = KepDOMDocument();
  path = KepString();
}

KEP_REGISTER_LIBRARY_CLASS(Configuration);
