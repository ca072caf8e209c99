// The start-up options file: where it is found and the words it sets.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

class StartupOptions : public ::testing::Test {
 protected:
  // Writes the options file and reads it with `logDefault`.
  void read(std::string const& xml, int logDefault = 1) {
    keptest::writeFile(path_, xml);
    processes_ = -1;
    _KepGetStartupOptions(0, logDefault, processes_, nullptr);
  }
  // The diagnostics words, the debugger word and the processes count.
  std::vector<unsigned long> words() const {
    return {gDiagKepAlloc.load(),       gDiagCPPAlloc.load(),
            _gKepDiagQBAlloc.load(),    gDiagKep.load(),
            gKepDebuggerOptions.load(), static_cast<unsigned long>(processes_)};
  }
  static std::string diagnostics(std::string const& allocator, std::string const& words) {
    return "<" + allocator + "><Diagnostics>" + words + "</Diagnostics></" + allocator + ">";
  }

  keptest::SavedOptionWords saved_;
  keptest::TempDir dir_;
  std::string path_ = dir_.file("options.xml");
  keptest::ScopedEnv env_{KEP_STARTUP_OPTIONS_VARIABLE, path_};
  int processes_ = -1;
};

TEST_F(StartupOptions, WithoutAFileTheLogWordIsKepInitsSecondArgumentOr130ForZero) {
  Kep::init(0);
  EXPECT_EQ(gKepLogOptions.load(), 1u);
  Kep::destroy();
  Kep::init(0, 0);
  EXPECT_EQ(gKepLogOptions.load(), 130u);
  Kep::destroy();

  read("<Startup><Logger><KepConsole/></Logger></Startup>");
  gKepLogOptions.store(0);
  Kep::init(0, 0);
  EXPECT_EQ(gKepLogOptions.load(), 4u) << "the file's Logger wins over the argument";
  Kep::init(0, 1);
  EXPECT_EQ(gKepLogOptions.load(), 4u) << "only the first init reads the options";
  Kep::destroy();
  Kep::destroy();
}

TEST_F(StartupOptions, LoggerWords) {
  struct Case {
    char const* words;
    unsigned long expected;
  };
  Case const cases[] = {
      {"<NoBlock/>", 130},  // no output word: 130, and NoBlock's 128 is in it already
      {"<KepConsole/>", 4},      {"<KepConsole/><NoBlock/>", 132},
      {"<KepNone/>", 2},         {"<KepGUI/><KepEvent/><KepDebugger/>", 49},
      {"<KepEvent/>", 146},      {"<Anything/>", 130},
      {"<KepConsoleExtra/>", 4},  // names are tested as substrings
      {"<MemoryManager/>", 130},  // not a section here, only an unknown word
  };
  for (Case const& c : cases) {
    read(std::string("<Startup><Logger>") + c.words + "</Logger></Startup>", 1);
    EXPECT_EQ(gKepLogOptions.load(), c.expected) << c.words;
  }
  read("<Startup><Logger>text only</Logger></Startup>", 7);
  EXPECT_EQ(gKepLogOptions.load(), 7u) << "a Logger without children keeps the default";
  read("<Startup><General/></Startup>", 0);
  EXPECT_EQ(gKepLogOptions.load(), 130u);
}

TEST_F(StartupOptions, DiagnosticsWordsAreSubstringTestsInTheirPlaceOnly) {
  read("<Startup><MemoryManager>" + diagnostics("KEPAlloc", "<Count/><Sizes/><Check/>") +
       diagnostics("CPPAlloc", "<Stack/><Shift/>") + diagnostics("QBAlloc", "<InstanceCount/>") +
       diagnostics("KEP", "<InstanceCount/>") +
       "</MemoryManager><Debugger><NameTable/></Debugger>"
       "<General><Processes>12</Processes></General></Startup>");
  // QBAlloc's InstanceCount contains Count.
  EXPECT_EQ(words(), (std::vector<unsigned long>{0x103, 24, 1, 1, 1, 12}));

  // A file read again sets every word afresh. KEP outside MemoryManager,
  // Diagnostics outside an allocator, and words under an unknown element are
  // ignored; an empty Diagnostics names nothing.
  read("<Startup>" + diagnostics("KEP", "<InstanceCount/>") +
       "<MemoryManager><Diagnostics><Count/></Diagnostics>" + diagnostics("CPPAlloc", "") +
       "<Unknown><Diagnostics><Sizes/></Diagnostics></Unknown></MemoryManager>"
       "<Debugger><Other/></Debugger><General><Processes>x</Processes></General></Startup>");
  EXPECT_EQ(words(), std::vector<unsigned long>(6, 0));
}

TEST_F(StartupOptions, LongWordListsAndTextsAreCut) {
  std::string many;
  for (int i = 0; i < 400; ++i) many += "<KepEvent/>";
  read("<Startup><Logger>" + many + "<KepConsole/></Logger><General><Processes>42" +
       std::string(5000, ' ') + "9</Processes></General></Startup>");
  EXPECT_EQ(gKepLogOptions.load(), 146u) << "the words stop at 1023 bytes: KepConsole is lost";
  EXPECT_EQ(processes_, 42) << "the processes text keeps its first 63 bytes";
}

TEST_F(StartupOptions, AMalformedFileKeepsWhatCameBeforeTheError) {
  gKepLogOptions.store(KepLogger::kGUI);
  keptest::LogCapture log;
  read(
      "<Startup><General><Processes>3</Processes></General>"
      "<Logger><KepConsole/></Logger><Broken></Startup>");
  EXPECT_EQ(processes_, 3);
  EXPECT_EQ(gKepLogOptions.load(), 4u);
  EXPECT_EQ(log.count("XML Parser Error: mismatched tag at line 1"), 1u);
}

}  // namespace
