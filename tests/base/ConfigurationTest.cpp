// The configuration: loading files into element trees, lookups by path, and the
// process configuration that start-up loads.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

constexpr char kGood[] =
    "<?xml version=\"1.0\"?>\n"
    "<!-- a host's settings -->\n"
    "<Settings version=\"3\" xmlns:mx=\"urn:example:mail\">\n"
    "  <Logger><Level>  Warning </Level><Lines>250</Lines></Logger>\n"
    "  <Mail><mx:Relay port=\"25\">smtp.example.org</mx:Relay>\n"
    "    <Limit>-40</Limit><Limit>90</Limit><Huge>99999999999</Huge>\n"
    "    <Ratio>1.5</Ratio><Subject>R&amp;D &lt;weekly&gt;</Subject></Mail>\n"
    "</Settings>\n";

class ConfigurationTest : public ::testing::Test {
 protected:
  // Writes `text` to the file `name` and answers its path as a string.
  KepString write(char const* name, std::string const& text) {
    keptest::writeFile(dir_.file(name), text);
    return KepString(dir_.file(name).c_str());
  }
  keptest::ScopedKepInit kep_;
  keptest::TempDir dir_;
  KepConfiguration c{KepGetObject(KepClassID::Configuration, 0)};
};

TEST_F(ConfigurationTest, LoadsATreeAndAnswersLookupsByPath) {
  EXPECT_TRUE(c.getRoot().isNull());
  KepString path = write("settings.xml", kGood);
  ASSERT_EQ(c.load(path), 1u);
  KepDOMElement root = c.getRoot();
  ASSERT_FALSE(root.isNull());
  EXPECT_EQ(root.getAttribute(KepString("version")).toStdString(), "3");

  EXPECT_EQ(c.getString(KepString("Logger.Level")).toStdString(), "Warning") << "trimmed";
  EXPECT_EQ(c.getInteger(KepString("Mail.Limit"), 0), -40) << "the first of a repeated name";
  EXPECT_EQ(c.get(KepString("Mail.mx:Relay")).getAttribute(KepString("port")).toStdString(), "25");
  EXPECT_EQ(c.getString(KepString(".Logger..Lines.")).toStdString(), "250")
      << "empty steps are skipped";
  // Missing steps and texts that are no int give the default.
  EXPECT_TRUE(c.getString(KepString("Nowhere.At.All")).isNull());
  for (char const* notAnInt :
       {"Logger.Colour", "Logger.Level", "Mail.Ratio", "Mail.Huge", "Mail"}) {
    EXPECT_EQ(c.getInteger(KepString(notAnInt), 17), 17) << notAnInt;
  }

  c.clear();
  EXPECT_TRUE(c.get(KepString("Logger")).isNull());
}

TEST_F(ConfigurationTest, AFailedLoadLeavesItEmptyAndSaysWhy) {
  keptest::LogCapture log;
  KepString good = write("good.xml", kGood), missing(dir_.file("missing.xml").c_str());
  ASSERT_EQ(c.load(good), 1u);
  EXPECT_EQ(c.load(missing), 0u);
  EXPECT_EQ(c.isLoaded(), 0u) << "the earlier tree is gone";
  EXPECT_TRUE(log.contains("Configuration " + missing.toStdString() + " cannot be read"));

  ASSERT_EQ(c.load(good), 1u);
  KepString bad = write("bad.xml", "<Settings>\n  <Logger>\n  </Loger>\n</Settings>\n");
  EXPECT_EQ(c.load(bad), 0u);
  EXPECT_TRUE(c.get(KepString("Logger")).isNull()) << "no half-built tree is kept";
  EXPECT_TRUE(log.contains("at line 3, column 4")) << "the parser's line names the place";
  EXPECT_TRUE(log.contains("Configuration " + bad.toStdString() + " is not well-formed"));

  for (char const* text : {"", "   \n", "<A/><B/>", "no markup at all"}) {
    EXPECT_EQ(c.load(write("odd.xml", text)), 0u) << '"' << text << '"';
  }
  EXPECT_EQ(c.load(KepString()), 0u);
}

TEST_F(ConfigurationTest, ReaderThreadsSeeWholeTreesWhileItIsReloaded) {
  KepString first = write("first.xml", "<C><Value>1</Value></C>");
  KepString second = write("second.xml", "<C><Value>2</Value></C>");
  ASSERT_EQ(c.load(first), 1u);
  std::atomic<bool> stop{false};
  std::atomic<int> torn{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&] {
      while (!stop.load()) torn += KepConfiguration(c).getInteger(KepString("Value"), 0) == 0;
    });
  }
  for (int i = 0; i < (keptest::kSanitized ? 20 : 200); ++i) {
    EXPECT_EQ(c.load(i % 2 ? first : second), 1u);
  }
  stop.store(true);
  for (auto& r : readers) r.join();
  EXPECT_EQ(torn.load(), 0) << "a reader saw a configuration between two loads";
}

// Start-up loads the file named by Kep::init's third argument into the process
// configuration; the last destroy drops it.
TEST(ProcessConfiguration, StartUpLoadsTheNamedFileAndTheLastDestroyDropsIt) {
  keptest::TempDir dir;
  std::string path = dir.file("host.xml");
  keptest::writeFile(path, kGood);
  EXPECT_TRUE(KepProcess::getConfiguration().isNull()) << "nothing before Kep::init";
  Kep::init(0, 1, path.data());
  KepConfiguration c = KepProcess::getConfiguration();
  EXPECT_EQ(c.getInteger(KepString("Logger.Lines"), 0), 250);
  Kep::init(0, 1, nullptr);  // a later init loads nothing and keeps the tree
  EXPECT_EQ(KepProcess::getConfiguration().getRealKepObj(), c.getRealKepObj());
  Kep::destroy();
  EXPECT_EQ(KepProcess::getConfiguration().isLoaded(), 1u);
  Kep::destroy();
  EXPECT_TRUE(KepProcess::getConfiguration().isNull()) << "dropped by the last destroy";
  EXPECT_EQ(c.isLoaded(), 1u) << "a handle kept by the host keeps its tree until it goes";

  // A malformed file leaves the configuration empty and start-up goes on.
  keptest::writeFile(path, "<Settings><Logger></Settings>");
  keptest::LogCapture log;
  Kep::init(0, 1, path.data());
  EXPECT_EQ(KepProcess::getConfiguration().isLoaded(), 0u);
  EXPECT_FALSE(KepGetObject(KepClassID::String, 0).isNull()) << "start-up went on";
  EXPECT_TRUE(log.contains("Configuration " + path + " is not well-formed"));
  Kep::destroy();
}

}  // namespace
