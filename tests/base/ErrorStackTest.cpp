// The per-thread error stack of KepThread, KepSetThreadError, the error
// registry with its log formatter, and the library calls that record errors.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

std::string text(KepString const& s) {
  return s.isNull() ? std::string("<null>") : s.toStdString();
}

KepThread& current() {
  KepThread* me = KepProcess::getCurrThread();
  EXPECT_NE(me, nullptr);
  return *me;
}

// The tag names of the stack's elements, newest first ("-" for a mark).
std::vector<std::string> stackNames(KepThread& thread) {
  std::vector<std::string> names;
  KepDOMElement stack = thread.getErrors();
  for (KepDOMNode n = stack.getFirstChild(); !n.isNull(); n = n.getNextSibling()) {
    KepRDOMNode* body = KepRDOMNode::of(n);
    names.push_back(body != nullptr && body->ownNodeID() != 0 ? text(n.getNodeName()) : "-");
  }
  return names;
}

class ErrorStack : public ::testing::Test {
 protected:
  keptest::ScopedKepInit init_;
};

TEST_F(ErrorStack, NewestFirstPerThreadPopAndNamesOfNewTags) {
  KepThread& me = current();
  me.setError(KepString("StackTestFirstError"), nullptr, 0);
  int first = KepProcess::nameToTag(KepString("StackTestFirstError"));
  EXPECT_NE(first, 0) << "a new name becomes a tag";
  int second = KepNameToTag("StackTestSecondError");
  me.setError(second, nullptr, 0);
  EXPECT_EQ(me.errorOK(), 0u);
  EXPECT_EQ(text(me.getErrors().getNodeName()), "ErrorStack");
  EXPECT_EQ(stackNames(me),
            (std::vector<std::string>{"StackTestSecondError", "StackTestFirstError"}));
  // Another thread neither sees these errors nor adds to them.
  std::thread([] {
    KepThread& other = current();
    EXPECT_EQ(other.errorOK(), 1u);
    other.popError();
    other.clearErrors();
    EXPECT_TRUE(other.getErrors().isNull()) << "reading and popping make no stack";
    KepSetThreadError(KepString("StackTestOtherThread"), "t", 1);
  }).join();

  me.popError();
  EXPECT_EQ(me.getErrorID(), first);
  EXPECT_EQ(text(me.getErrorName()), "StackTestFirstError");
  me.popError();
  me.popError();  // nothing left: no effect
  EXPECT_TRUE(me.getErrorObject().isNull());
  // Nameless errors are refused rather than pushed as marks.
  EXPECT_TRUE(KepSetThreadError(KepString(""), "x", 1).isNull());
  EXPECT_TRUE(KepSetThreadError(KepString(), "x", 1).isNull());
  EXPECT_EQ(me.errorOK(), 1u);
}

TEST_F(ErrorStack, ClearStopsAtAMarkWhichAlsoCountsAsOK) {
  KepThread& me = current();
  me.setError(KepString("StackTestBelowMark"), nullptr, 0);
  me.setError(0, nullptr, 0);  // the mark
  EXPECT_EQ(me.errorOK(), 1u);
  EXPECT_TRUE(me.getErrorName().isNull());
  me.setError(KepString("StackTestAboveMarkA"), nullptr, 0);
  me.setError(KepString("StackTestAboveMarkB"), nullptr, 0);
  EXPECT_EQ(me.errorOK(), 0u);

  me.clearErrors();
  EXPECT_EQ(stackNames(me), (std::vector<std::string>{"-", "StackTestBelowMark"}));
  me.clearErrors();  // at the mark: nothing more goes
  EXPECT_EQ(stackNames(me).size(), 2u);
  me.popError();  // the mark itself
  EXPECT_EQ(text(me.getErrorName()), "StackTestBelowMark");
  me.getXMLData().set(KepString("Request"), 3);
  me.clearErrors();
  EXPECT_TRUE(stackNames(me).empty());
  EXPECT_EQ(me.getXMLData().get(KepString("Request")).getInteger(), 3) << "error data stays";
}

TEST_F(ErrorStack, LogErrorsWritesAHeaderAndOneLinePerErrorNewestFirst) {
  KepThread& me = current();
  me.clearErrors();
  me.setError(KepString("StackTestLoggedOld"), "base/Log", 3);
  KepSetThreadError(KepString("StackTestLoggedNew"), nullptr, 0)
      .set(KepString("Detail"), KepString("two\nlines"));
  keptest::LogCapture log;
  me.logErrors();
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{
                "Unexpected Error:",
                "ErrorId 0 (StackTestLoggedNew (unregistered error)), service owning error=none, "
                "Level Error, Message none, Detail=two lines",
                "ErrorId 0 (StackTestLoggedOld (unregistered error)), service owning error=none, "
                "Level Error, Message none, SourceFile=base/Log, SourceLine=3"}));
  EXPECT_EQ(log.levels(), (std::vector<KepLogger::Level>{KepLogger::kDebug, KepLogger::kError,
                                                         KepLogger::kError}));
  EXPECT_EQ(text(me.getErrorName()), "StackTestLoggedNew") << "logging keeps the errors";
  me.clearErrors();
}

TEST(ErrorStackWithoutLibrary, CallsRecordNothingAndDoNotFail) {
  ASSERT_EQ(KepProcess::getCurrThread(), nullptr);
  EXPECT_TRUE(KepSetThreadError(KepString("StackTestNoLibrary"), "x", 1).isNull());
  EXPECT_EQ(_KepErrorRegistry::size(), 0);
}

// Start-up reads the registry that KEP_ERROR_REGISTRY names.
class RegistryAtStartup : public ::testing::Test {
 protected:
  // Brings the library up with the variable set to `path` (unset for an empty
  // path) and answers the entries registered; log_ gets the start-up log.
  int startWith(std::string const& path) {
    log_.clear();
    if (!path.empty()) setenv("KEP_ERROR_REGISTRY", path.c_str(), 1);
    Kep::init(0);
    unsetenv("KEP_ERROR_REGISTRY");
    return _KepErrorRegistry::size();
  }
  void stop() {
    Kep::destroy();
    EXPECT_EQ(_KepErrorRegistry::size(), 0) << "the last destroy empties the registry";
  }
  keptest::TempDir dir_;
  keptest::LogCapture log_;
};

// Entries need a name; a name registered again replaces its entry; a level is
// a name or a digit, and an unknown one is Error.
TEST_F(RegistryAtStartup, ReadsTheNamedFile) {
  std::string path = dir_.file("errors.xml");
  keptest::writeFile(path,
                     "<?xml version=\"1.0\"?>\n<Errors><Comment/>\n"
                     "  <Error><ErrorId>101</ErrorId><Name>Index&lt;0</Name>\n"
                     "    <Message>  Index below zero </Message><Level>Warning</Level>\n"
                     "    <Service>Containers</Service></Error>\n"
                     "  <Error><ErrorId>12</ErrorId><Message>no name</Message></Error>\n"
                     "  <Error><ErrorId>13</ErrorId><Name>Twice</Name><Level>4</Level></Error>\n"
                     "  <Error><ErrorId>14</ErrorId><Name>Twice</Name><Level>Loud</Level></Error>\n"
                     "</Errors>\n");
  EXPECT_EQ(startWith(path), 2);
  EXPECT_TRUE(log_.contains("Error registry " + path + ": 3 errors registered"));
  _KepErrorEntry entry;
  EXPECT_FALSE(_KepErrorRegistry::findById(12, entry));
  EXPECT_FALSE(_KepErrorRegistry::findById(13, entry));
  ASSERT_TRUE(_KepErrorRegistry::find(KepNameToTag("Twice"), entry));
  EXPECT_EQ(std::make_pair(entry.errorId, entry.level), std::make_pair(14, KepLogger::kError));
  // The array's own errors are now logged with their entries.
  KepArray(KepGetObject(KepClassID::Array, 0)).insert(-1, KepObject());
  current().logErrors();
  EXPECT_TRUE(log_.contains(
      "ErrorId 101 (Index<0), service owning error=Containers, Level Warning, Message Index "
      "below zero, SourceFile=contain/KepRArray"));
  current().clearErrors();
  stop();
}

// A missing, unreadable or malformed registry is logged and registers nothing;
// one that ends early registers the entries read before its end.
TEST_F(RegistryAtStartup, BadFilesAreLoggedAndRegisterOnlyWhatWasRead) {
  std::string missing = dir_.file("missing.xml");
  std::string broken = dir_.file("broken.xml"), cut = dir_.file("cut.xml");
  std::string const complete = "<Errors><Error><ErrorId>7</ErrorId><Name>Half</Name></Error>\n";
  keptest::writeFile(broken, complete + "<Error><Name>Cut</Name></Erro>");
  keptest::writeFile(cut, complete + "<Error><ErrorId>8</ErrorId>");
  struct Case {
    std::string path, line;
    int registered;
  };
  for (Case const& c :
       {Case{"", "No error registry: KEP_ERROR_REGISTRY is not set", 0},
        Case{missing, "Error registry " + missing + " cannot be read", 0},
        Case{broken,
             "Error registry " + broken + " is not well-formed: line 2, column 25: mismatched tag",
             0},
        Case{cut, "Error registry " + cut + ": 1 errors registered", 1}}) {
    EXPECT_EQ(startWith(c.path), c.registered) << c.path;
    EXPECT_TRUE(log_.contains(c.line)) << c.line;
    _KepErrorEntry entry;
    EXPECT_EQ(_KepErrorRegistry::findById(7, entry), c.registered == 1) << c.path;
    EXPECT_EQ(current().errorOK(), 1u) << "the parser's error was logged, not left on the stack";
    stop();
  }
}

}  // namespace
