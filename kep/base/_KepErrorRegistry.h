// The error registry: what the process knows about the errors its parts record
// (their ids, messages, levels and owning services), and the formatter that
// writes an error element to the log.
#ifndef KEP_BASE_KEPERRORREGISTRY_H
#define KEP_BASE_KEPERRORREGISTRY_H

#include <string>

#include "kep/base/KepDefs.h"
#include "kep/base/KepLogger.h"

class KepDOMElement;

// The name of the environment variable that names the error registry file.
constexpr char const KEP_ERROR_REGISTRY_VARIABLE[] = "KEP_ERROR_REGISTRY";

// One registered error.
struct _KepErrorEntry {
  int errorId = 0;      // the error's number ("ErrorId")
  int tag = 0;          // the tag of its name: the node ID of its error elements
  std::string name;     // the name errors are recorded under
  std::string message;  // what the error means; may be empty
  KepLogger::Level level = KepLogger::kError;
  std::string service;  // the service owning the error; may be empty
};

// The registry is read from an element tree of this shape (the document
// element of the registry file):
//
//   <Errors>
//     <Error>
//       <ErrorId>1001</ErrorId>            decimal; 0 when missing
//       <Name>Index&lt;0</Name>             required: the recorded error's name
//       <Message>Array index below zero</Message>
//       <Level>Error</Level>               Debug, Info, Warning, Error or Fatal
//                                          (any case), or 0 to 4; else Error
//       <Service>Containers</Service>
//     </Error>
//     ...
//   </Errors>
//
// Children of the root other than "Error", values other than these, and Error
// elements without a name are ignored. A name registered again replaces its
// earlier entry, so several registries can be loaded one after the other.
// Errors are found by the tag of their name, so the names are added to the
// process's tag manager when they are loaded.
//
// The process keeps one registry; the last Kep::destroy empties it.
//
// Thread safety: every operation may be called from any thread.
class KEP_API _KepErrorRegistry {
 public:
  // Loads the Error children of `errors`; answers how many entries were
  // taken. Nothing is taken from a null element or while there is no tag
  // manager (before Kep::init, after the last Kep::destroy).
  static int registerErrors(KepDOMElement const& errors);
  // The entry whose name has the tag `tag` / whose number is `errorId`: true
  // and the entry copied into `out`, or false with `out` unchanged. When two
  // entries share a number, findById answers one of them.
  static bool find(int tag, _KepErrorEntry& out);
  static bool findById(int errorId, _KepErrorEntry& out);
  // Registered entries.
  static int size();
  // Forgets every entry.
  static void clear();
};

// Writes one error element of a thread's error stack as one log line:
//
//   ErrorId <id> (<name>), service owning error=<service>, Level <level>,
//   Message <message>[, <parameter>=<value>]...
//
// all on one line, where <id>, <service>, <level> and <message> come from the
// registry entry of the element's tag; <level> is Debug, Info, Warning, Error
// or Fatal, and the line is logged at that level. Then come the element's
// child elements, in order, each as its name, "=" and its text (the source
// file and line of the error are among them). An error the registry does not
// know is written with id 0, "<name> (unregistered error)" in the brackets,
// service and message "none", at level Error. An element without a tag (a
// mark) is named "-". Line breaks in values are written as spaces. A null
// element writes nothing.
KEP_API void _KepLogError(KepDOMElement const& error);

// Writes the path of the error registry file into `buffer` (`size` bytes): the
// value of KEP_ERROR_REGISTRY. Answers false, with `buffer` empty when it has
// room for that, when the variable is not set or empty (there is no registry),
// when the path does not fit or when `buffer` is null.
KEP_API bool _KepGetErrorRegistryPath(char* buffer, int size);

// Reads the error registry file that _KepGetErrorRegistryPath names with the
// object-building XML parser and loads its document element with
// KepProcess::registerErrors; the first Kep::init calls it. The file is XML of
// the shape shown with _KepErrorRegistry; a value's text is taken without its
// leading and trailing white space. A file with a syntax error registers
// nothing (the parser answers no document); one that ends early is registered
// as far as the parser read it. A parse error is written to the log instead of
// being left on the calling thread's error stack. Answers the number of entries
// taken, or -1 when no registry was read: the variable is not set, the file
// cannot be read, or no element was read from it. Each outcome is written to
// the log: a debug line for no registry and for the count taken, a warning for
// a file that cannot be read, is not well-formed or holds no element. Not
// thread-safe against a concurrent Kep::destroy.
KEP_API int _KepReadErrorRegistry();

#endif  // KEP_BASE_KEPERRORREGISTRY_H
