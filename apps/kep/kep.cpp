// kep: a command-line tool over libKep11.
//
//   kep version            the library's version
//   kep tag NAME|NUMBER    a tag looked up by name, or a name by tag number
//                          (decimal, or hexadecimal after "0x")
//   kep xml FILE           FILE read with the object-building parser and written
//                          to standard output as compact XML by the DOM writer,
//                          followed by a line feed; a document that ends
//                          early is written as far as it was read, one with no
//                          element at all is refused
//
// Exit status: 0 on success, 1 when the command fails (an unknown tag, a file
// that cannot be read or is not well-formed), 2 for
// a command line the tool does not understand (the usage goes to standard
// error).
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kep/Kep.h"

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

void printUsage(std::FILE* out) {
  std::fputs(
      "usage: kep COMMAND [ARGUMENT]\n"
      "  kep version            print the library version\n"
      "  kep tag NAME           print the tag of a name\n"
      "  kep tag NUMBER         print the name of a tag (decimal or 0x hexadecimal)\n"
      "  kep xml FILE           read an XML file and write it as compact XML\n",
      out);
}

// Reads a tag number: decimal with an optional sign, or "0x"/"0X" and up to
// eight hexadecimal digits (values from 0x80000000 up are the negative tags).
// False when `text` is not such a number or does not fit in 32 bits.
bool parseTagNumber(char const* text, int& tag) {
  char const* digits = text;
  int base = 10;
  if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    digits = text + 2;
    base = 16;
  } else if (text[0] == '-' || text[0] == '+') {
    digits = text + 1;
  }
  if (*digits == '\0') return false;
  for (char const* p = digits; *p != '\0'; ++p) {
    if (!(base == 16 ? std::isxdigit(static_cast<unsigned char>(*p))
                     : std::isdigit(static_cast<unsigned char>(*p)))) {
      return false;
    }
  }
  errno = 0;
  if (base == 16) {
    unsigned long long value = std::strtoull(digits, nullptr, 16);
    if (errno == ERANGE || value > 0xffffffffull) return false;
    tag = static_cast<int>(static_cast<uint32_t>(value));
    return true;
  }
  long long value = std::strtoll(text, nullptr, 10);
  if (errno == ERANGE || value < INT32_MIN || value > INT32_MAX) return false;
  tag = static_cast<int>(value);
  return true;
}

// A word is taken as a number when it starts like one; names of tags never do.
bool looksNumeric(char const* text) {
  return std::isdigit(static_cast<unsigned char>(text[0])) ||
         ((text[0] == '-' || text[0] == '+') && std::isdigit(static_cast<unsigned char>(text[1])));
}

void printTag(std::string const& name, int tag) {
  std::printf("%s 0x%x (%d)\n", name.c_str(), static_cast<unsigned>(tag), tag);
}

int tagCommand(char const* word) {
  if (looksNumeric(word)) {
    int tag = 0;
    if (!parseTagNumber(word, tag)) {
      std::fprintf(stderr, "kep: \"%s\" is not a tag number\n", word);
      return kUsage;
    }
    KepString name = KepProcess::tagToName(tag);
    if (name.isNull()) {
      std::fprintf(stderr, "kep: no name has the tag 0x%x (%d)\n", static_cast<unsigned>(tag), tag);
      return kFailed;
    }
    printTag(name.toStdString(), tag);
    return kOk;
  }
  // Looks the name up without adding it to the tag manager.
  // Tag 0 has a name too, so 0 is an answer only when that is the name.
  int tag = KepProcess::nameToTag(KepString(word));
  if (tag == 0 && KepProcess::tagToName(0).toStdString() != word) {
    std::fprintf(stderr, "kep: no tag is named \"%s\"\n", word);
    return kFailed;
  }
  printTag(word, tag);
  return kOk;
}

int versionCommand() {
  int major = 0;
  int minor = 0;
  Kep::version(major, minor);
  std::printf("libKep11 %d.%d\n", major, minor);
  return kOk;
}

// Reports why the parser built no document: its error on the calling thread's
// error stack names the line and column (as the tokenizer counts them: lines
// from 1, columns from 0).
void reportParseFailure(char const* path) {
  KepThread* thread = KepProcess::getCurrThread();
  KepDOMElement error = thread != nullptr ? thread->getErrorObject() : KepDOMElement();
  if (error.isNull() || thread->getErrorName().toStdString() != "XMLParserError") {
    std::fprintf(stderr, "kep: %s: not read as XML\n", path);
    return;
  }
  std::fprintf(stderr, "kep: %s: line %d, column %d: %s\n", path,
               error.get(KepString("Line")).getInteger(),
               error.get(KepString("Column")).getInteger(),
               error.getString(KepString("String")).toStdString().c_str());
}

int xmlCommand(char const* path) {
  KepFile file{KepString(path)};
  if (file.isFile() == 0 || file.canRead() == 0) {
    std::fprintf(stderr, "kep: %s: cannot be read\n", path);
    return kFailed;
  }
  KepXMLParser parser(KepGetObject(KepClassID::XMLParser, 0));
  KepDOMNode document = parser.buildObjects(file);
  file.close();
  if (document.isNull()) {
    reportParseFailure(path);
    return kFailed;
  }
  // The parser answers what it read of a document that ends early; one
  // without any element would print as no XML document at all.
  if (KepDOMDocument(document).getDocumentElement().isNull()) {
    std::fprintf(stderr, "kep: %s: no element\n", path);
    return kFailed;
  }
  KepDOMWriter writer(KepGetObject(KepClassID::DOMWriter, 0));
  KepStringBufferIOStream output;
  writer.serializeAsXML(document, output);
  std::string bytes = KepRIOStream::narrow(output.toString());
  bytes += '\n';
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  return kOk;
}

// Runs the command with the library up.
int run(int argc, char** argv) {
  std::string command = argv[1];
  if (command == "version" && argc == 2) return versionCommand();
  if (command == "tag" && argc == 3 && argv[2][0] != '\0') return tagCommand(argv[2]);
  if (command == "xml" && argc == 3 && argv[2][0] != '\0') return xmlCommand(argv[2]);
  std::fprintf(stderr, "kep: unknown command or wrong arguments: %s\n", command.c_str());
  printUsage(stderr);
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    printUsage(stdout);
    return kOk;
  }
  Kep::init(0);
  int status = run(argc, argv);
  Kep::destroy();
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fputs("kep: cannot write standard output\n", stderr);
    return kFailed;
  }
  return status;
}
