// KepCharacter: every unit of the Basic Multilingual Plane checked against the
// Unicode character database installed on the machine, before and after Kep::init
// (private and shared tables), digits and radixes.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

struct UnitData {
  std::string category = "Cn";
  int decimal = -1;
  int upper = -1;
  int lower = -1;
};

std::vector<std::string> split(std::string const& line, char sep) {
  std::vector<std::string> fields;
  std::stringstream in(line);
  std::string field;
  while (std::getline(in, field, sep)) fields.push_back(field);
  if (!line.empty() && line.back() == sep) fields.emplace_back();
  return fields;
}

// UnicodeData.txt, read the way its header describes (ranges given by First/Last).
// Empty when the file is missing.
std::vector<UnitData> unicodeData() {
  std::ifstream in("/usr/share/unicode/UnicodeData.txt");
  if (!in) return {};
  std::vector<UnitData> data(0x10000);
  std::string line;
  long first = -1;
  while (std::getline(in, line)) {
    std::vector<std::string> f = split(line, ';');
    if (f.size() < 14) continue;
    long code = std::stol(f[0], nullptr, 16);
    if (code > 0xFFFF) continue;
    UnitData d;
    d.category = f[2];
    if (!f[6].empty()) d.decimal = std::stoi(f[6]);
    if (!f[12].empty()) d.upper = static_cast<int>(std::stol(f[12], nullptr, 16));
    if (!f[13].empty()) d.lower = static_cast<int>(std::stol(f[13], nullptr, 16));
    if (f[1].find(", First>") != std::string::npos) {
      first = code;
      continue;
    }
    if (f[1].find(", Last>") != std::string::npos) {
      for (long c = first; c <= code; ++c) data[static_cast<size_t>(c)].category = d.category;
      continue;
    }
    data[static_cast<size_t>(code)] = d;
  }
  return data;
}

// The White_Space property of PropList.txt, less the no-break spaces.
std::set<int> whiteSpace() {
  std::set<int> spaces;
  std::ifstream in("/usr/share/unicode/PropList.txt");
  for (std::string line; std::getline(in, line);) {
    unsigned lo = 0, hi = 0;
    char property[32];
    if (std::sscanf(line.c_str(), "%x..%x ; %31s", &lo, &hi, property) != 3) {
      if (std::sscanf(line.c_str(), "%x ; %31s", &lo, property) != 2) continue;
      hi = lo;
    }
    if (std::string(property) != "White_Space") continue;
    for (unsigned c = lo; c <= hi && c <= 0xFFFF; ++c) spaces.insert(static_cast<int>(c));
  }
  for (int noBreak : {0x00A0, 0x2007, 0x202F}) spaces.erase(noBreak);
  return spaces;
}

int typeNumber(std::string const& category) {
  static std::map<std::string, int> const numbers = {
      {"Cn", 0},  {"Lu", 1},  {"Ll", 2},  {"Lt", 3},  {"Lm", 4},  {"Lo", 5},
      {"Mn", 6},  {"Me", 7},  {"Mc", 8},  {"Nd", 9},  {"Nl", 10}, {"No", 11},
      {"Zs", 12}, {"Zl", 13}, {"Zp", 14}, {"Cc", 15}, {"Cf", 16}, {"Co", 18},
      {"Cs", 19}, {"Pd", 20}, {"Ps", 21}, {"Pe", 22}, {"Pc", 23}, {"Po", 24},
      {"Sm", 25}, {"Sc", 26}, {"Sk", 27}, {"So", 28}, {"Pi", 29}, {"Pf", 30}};
  return numbers.at(category);
}

int letterValue(int u) {
  for (int base : {0x41, 0x61, 0xFF21, 0xFF41}) {
    if (u >= base && u < base + 26) return 10 + u - base;
  }
  return -1;
}

// Compares every unit; stops a category of check after a few failures.
void checkWholePlane() {
  std::vector<UnitData> const data = unicodeData();
  if (data.empty()) GTEST_SKIP() << "the unicode-data package is not installed";
  std::set<int> const spaces = whiteSpace();
  ASSERT_FALSE(spaces.empty());
  int failures = 0;
  for (int u = 0; u <= 0xFFFF && failures < 20; ++u) {
    auto unit = static_cast<unsigned short>(u);
    UnitData const& d = data[static_cast<size_t>(u)];
    int type = typeNumber(d.category);
    int expectedDigit = d.category == "Nd" ? d.decimal : letterValue(u);
    bool letter = type >= 1 && type <= 5;
    bool ok = KepCharacter::getType(unit) == type &&
              KepCharacter::toUpperCase(unit) == (d.upper >= 0 ? d.upper : u) &&
              KepCharacter::toLowerCase(unit) == (d.lower >= 0 ? d.lower : u) &&
              KepCharacter::digit(unit, 36) == expectedDigit &&
              KepCharacter::isDigit(unit) == (type == 9) &&
              KepCharacter::isLetter(unit) == letter &&
              KepCharacter::isLetterOrDigit(unit) == (letter || type == 9) &&
              KepCharacter::isUpperCase(unit) == (type == 1) &&
              KepCharacter::isLowerCase(unit) == (type == 2) &&
              KepCharacter::isTitleCase(unit) == (type == 3) &&
              KepCharacter::isDefined(unit) == (type != 0) &&
              KepCharacter::isSpaceChar(unit) == (type >= 12 && type <= 14) &&
              KepCharacter::isWhitespace(unit) == (spaces.count(u) == 1);
    if (!ok) {
      ++failures;
      ADD_FAILURE() << std::hex << "U+" << u << " (" << d.category << ") type "
                    << KepCharacter::getType(unit) << " upper " << KepCharacter::toUpperCase(unit)
                    << " lower " << KepCharacter::toLowerCase(unit) << " digit "
                    << KepCharacter::digit(unit, 36) << " whitespace "
                    << KepCharacter::isWhitespace(unit);
    }
  }
}

}  // namespace

TEST(Character, WholePlaneMatchesTheUnicodeDatabaseWithoutInitAndFromTheSharedTables) {
  ASSERT_FALSE(KepRSharedData::isCreated());
  checkWholePlane();
  keptest::ScopedKepInit init;
  ASSERT_NE(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_A), 0u);
  checkWholePlane();
}

TEST(Character, TheSharedTablesLiveUntilTheLastDestroy) {
  Kep::init(0);
  Kep::init(0);
  Kep::destroy();
  EXPECT_NE(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_A), 0u)
      << "an inner destroy leaves the tables";
  Kep::destroy();
  EXPECT_EQ(KepCharacter::toUpperCase('q'), 'Q') << "answers go on after the last destroy";
}

TEST(Character, DigitsRadixesAndTheAsciiSpaceTest) {
  for (int radix = KepCharacter::MIN_RADIX(); radix <= KepCharacter::MAX_RADIX(); ++radix) {
    for (int d = 0; d < radix; ++d) {
      unsigned short c = KepCharacter::forDigit(d, radix);
      ASSERT_EQ(KepCharacter::digit(c, radix), d) << radix;
      ASSERT_EQ(KepCharacter::digit(KepCharacter::toUpperCase(c), radix), d) << radix;
    }
    EXPECT_EQ(KepCharacter::forDigit(radix, radix), 0) << radix;
    if (radix < KepCharacter::MAX_RADIX()) {
      EXPECT_EQ(KepCharacter::digit(KepCharacter::forDigit(radix, 36), radix), -1)
          << "the first digit past the radix has no value";
    }
  }
  EXPECT_EQ(KepCharacter::forDigit(5, 40), 0);
  EXPECT_EQ(KepCharacter::digit('5', 37), -1);
  for (int u = 0; u < 0x100; ++u) {
    bool space = u == 9 || u == 10 || u == 12 || u == 13 || u == 32;
    EXPECT_EQ(KepCharacter::isSpace(static_cast<unsigned short>(u)), space) << u;
  }
}
