// KepCharacter: every unit of the Basic Multilingual Plane checked against the
// Unicode character database installed on the machine, before and after Kep::init
// (private and shared tables), digits and radixes.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

struct UnitData {
  std::string category = "Cn";
  int decimal = -1, upper = -1, lower = -1;
};

// UnicodeData.txt for the Basic Multilingual Plane, read the way its header
// describes (ranges given by First/Last). Empty when the file is missing.
std::vector<UnitData> unicodeData() {
  std::ifstream in("/usr/share/unicode/UnicodeData.txt");
  std::vector<UnitData> data(in ? 0x10000 : 0);
  auto number = [](std::string const& s, int base) {
    return s.empty() ? -1 : static_cast<int>(std::stol(s, nullptr, base));
  };
  long first = -1;
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> f;
    std::stringstream fields(line);
    for (std::string field; std::getline(fields, field, ';');) f.push_back(field);
    long code = f.size() < 14 ? 0x10000 : std::stol(f[0], nullptr, 16);
    if (code > 0xFFFF) continue;
    UnitData d{f[2], number(f[6], 10), number(f[12], 16), number(f[13], 16)};
    if (f[1].find(", First>") != std::string::npos) {
      first = code;
    } else if (f[1].find(", Last>") != std::string::npos) {
      for (long c = first; c <= code; ++c) data[static_cast<size_t>(c)].category = d.category;
    } else {
      data[static_cast<size_t>(code)] = d;
    }
  }
  return data;
}

// The type number of a general category: its place in this list (17 is unused).
int typeNumber(std::string const& category) {
  static std::string const order = "CnLuLlLtLmLoMnMeMcNdNlNoZsZlZpCcCf--CoCsPdPsPePcPoSmScSkSoPiPf";
  return static_cast<int>(order.find(category) / 2);
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
  int failures = 0;
  for (int u = 0; u <= 0xFFFF && failures < 20; ++u) {
    using C = KepCharacter;
    auto unit = static_cast<unsigned short>(u);
    UnitData const& d = data[static_cast<size_t>(u)];
    int type = typeNumber(d.category);
    bool letter = type >= 1 && type <= 5;
    bool separator = type >= 12 && type <= 14;
    // White space: the separators less the no-break spaces, and the controls
    // TAB..CR and NEL.
    bool white =
        (separator && u != 0xA0 && u != 0x2007 && u != 0x202F) || (u >= 9 && u <= 13) || u == 0x85;
    // The type, the case mappings and the digit value, then the classes.
    std::vector<int> const values = {C::getType(unit), C::toUpperCase(unit), C::toLowerCase(unit),
                                     C::digit(unit, 36)};
    std::vector<unsigned long> const classes = {
        C::isDigit(unit),     C::isLetter(unit),    C::isLetterOrDigit(unit),
        C::isUpperCase(unit), C::isLowerCase(unit), C::isTitleCase(unit),
        C::isDefined(unit),   C::isSpaceChar(unit), C::isWhitespace(unit)};
    std::vector<int> const wantValues = {type, d.upper >= 0 ? d.upper : u,
                                         d.lower >= 0 ? d.lower : u,
                                         d.category == "Nd" ? d.decimal : letterValue(u)};
    std::vector<unsigned long> const wantClasses = {type == 9, letter,    letter || type == 9,
                                                    type == 1, type == 2, type == 3,
                                                    type != 0, separator, white};
    EXPECT_EQ(values, wantValues) << std::hex << "U+" << u << " " << d.category;
    EXPECT_EQ(classes, wantClasses) << std::hex << "U+" << u << " " << d.category;
    failures += values != wantValues || classes != wantClasses;
  }
}

}  // namespace

// Private tables before Kep::init, then the shared tables, which an inner destroy
// leaves in place; answers go on after the last destroy.
TEST(Character, WholePlaneMatchesTheUnicodeDatabaseWithoutInitAndFromTheSharedTables) {
  ASSERT_FALSE(KepRSharedData::isCreated());
  checkWholePlane();
  Kep::init(0);
  Kep::init(0);
  Kep::destroy();
  ASSERT_NE(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_CHAR_TABLE_A), 0u);
  checkWholePlane();
  Kep::destroy();
  EXPECT_EQ(KepCharacter::toUpperCase('q'), 'Q');
}

TEST(Character, DigitsRadixesAndTheAsciiSpaceTest) {
  for (int radix = KepCharacter::MIN_RADIX(); radix <= KepCharacter::MAX_RADIX(); ++radix) {
    for (int d = 0; d < radix; ++d) {
      unsigned short c = KepCharacter::forDigit(d, radix);
      ASSERT_EQ(KepCharacter::digit(c, radix), d) << radix;
    }
    EXPECT_EQ(KepCharacter::forDigit(radix, radix), 0) << radix;
  }
  EXPECT_EQ(KepCharacter::digit('5', 37), -1);
  for (int u = 0; u < 0x100; ++u) {
    bool space = u == 9 || u == 10 || u == 12 || u == 13 || u == 32;
    EXPECT_EQ(KepCharacter::isSpace(static_cast<unsigned short>(u)), space) << u;
  }
}
