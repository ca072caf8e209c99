// Element values: occurrences, repeated values, data types, typed getters with
// and without a cached native value, objects and dates as values.
#include <gtest/gtest.h>

#include <climits>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::newDocument;
using domtest::text;

namespace {

class DOMValues : public ::testing::Test {
 protected:
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("Values");
  int tag(char const* name) { return KepNameToTag(name); }
  // An element whose value is only text (nothing cached).
  KepDOMElement textValue(char const* value) {
    KepDOMElement v = doc.createElement("v");
    v.appendChild(doc.createTextNode(value));
    return v;
  }
};

}  // namespace

TEST_F(DOMValues, OccurrencesCountOnlyChildElementsOfTheTagAndGetNextWalksThem) {
  int item = tag("Item");
  e.set(item, 10);
  EXPECT_TRUE(e.get(item, 1).isNull()) << "one child: occurrence 1 is missing";
  // Other nodes between occurrences do not count.
  e.appendChild(doc.createTextNode("between"));
  e.appendChild(doc.createElement("Other"));
  e.set(item, 20, 1);
  e.appendChild(doc.createComment("c"));
  EXPECT_EQ(e.get(item, 1).getInteger(), 20);
  EXPECT_TRUE(e.get(item, -1).isNull());
  // Setting occurrence 4 creates the missing ones before it, empty, at the end.
  KepDOMElement fourth = e.set("Item", 40, 4);
  EXPECT_TRUE(e.get(item, 5).isNull());
  EXPECT_EQ(e.get(item, 2).getString().length(), 0);
  EXPECT_EQ(body(e.getLastChild()), body(fourth));
  // Setting an existing occurrence replaces its value in place.
  KepDOMElement first = e.get(item);
  EXPECT_EQ(body(e.set(item, 11)), body(first));
  EXPECT_EQ(KepDOMParentNode(first).getChildCount(), 1);
  EXPECT_TRUE(e.set(item, 1, -1).isNull());
  EXPECT_TRUE(e.set(KepString(), 1).isNull());
  // getNext walks the occurrences over other nodes and ends after the last.
  std::string seen;
  for (KepDOMElement v = first; !v.isNull(); v = v.getNext()) seen += text(v.getString()) + ",";
  EXPECT_EQ(seen, "11,20,,,40,");
  e.set("Later", 1);
  EXPECT_TRUE(fourth.getNext().isNull()) << "later siblings of other names do not count";
  EXPECT_TRUE(KepDOMElement(doc.createElement("alone")).getNext().isNull());
}

TEST_F(DOMValues, SettersSetTheDataTypeWhoseNamesAreFixed) {
  struct Case {
    KepDOMElement child;
    int type;
    char const* name;
  } cases[] = {
      {e.set("i", 5), 1, "int"},
      {e.set("s", KepString("x")), 2, "string"},
      {e.set("d", doc.createElement("w").set("x", 7L)), 4, "object"},
      {e.setBool("b", 1), 5, "boolean"},
      {e.set("l", 5L), 6, "i8"},
      {e.set("f", 1.5f), 7, "r4"},
      {e.set("g", 2.5L), 8, "float"},
  };
  auto* element = dynamic_cast<KepRDOMElement*>(body(e));
  ASSERT_NE(element, nullptr);
  for (Case const& c : cases) {
    EXPECT_EQ(c.child.getDataType(), c.type) << c.name;
    EXPECT_EQ(text(element->_getDataTypeStr(c.child.getDataType())), c.name);
  }
  EXPECT_EQ(text(KepRDOMElement::dataTypeName(3)), "date");
  for (int none : {-1, 0, 9}) EXPECT_TRUE(KepRDOMElement::dataTypeName(none).isNull()) << none;
}

TEST_F(DOMValues, CachedValuesConvertBetweenTypes) {
  KepDOMElement i = e.set("i", -42);
  EXPECT_EQ(text(i.getFirstChild().getNodeValue()), "-42") << "the text child carries it";
  EXPECT_EQ(e.set("zero", 0).getBool(), 0u);
  KepDOMElement big = e.set("big", LONG_MAX);
  EXPECT_EQ(big.getLong(), LONG_MAX) << "longs keep every bit";
  EXPECT_EQ(text(big.getString()), "9223372036854775807");
  EXPECT_EQ(big.getInteger(), -1) << "the low 32 bits";
  KepDOMElement f = e.set("f", 0.1f);
  EXPECT_EQ(f.getFloat(), 0.1f);
  EXPECT_EQ(text(f.getString()), "0.100000001");
  // Floating values above 2^63 wrap as unsigned ones.
  EXPECT_EQ(e.set("h63", 9223372036854775808.0L).getLong(), LONG_MIN);
  EXPECT_EQ(e.set("neg", -3.9L).getLong(), -3);
  EXPECT_EQ(e.set("beyond", 1e300L * 1e300L).getLong(), -1) << "beyond 2^64 stops at the end";
  EXPECT_EQ(text(e.setBool("b", 7).getString()), "1");
  KepDOMElement s = e.set("s", KepString(" 123abc"));
  EXPECT_EQ(s.getInteger(), 123);
}

TEST_F(DOMValues, TextIsParsedWhenNothingIsCached) {
  EXPECT_EQ(textValue("  77 ").getInteger(), 77);
  EXPECT_EQ(textValue("2.75").getLong(), 2) << "a fraction reads as a floating number";
  EXPECT_EQ(textValue("1e3").getInteger(), 1000);
  EXPECT_EQ(textValue("18446744073709551615").getLong(), -1) << "past the signed range it wraps";
  EXPECT_EQ(textValue("").getInteger(), 0);
  struct Flag {
    char const* text;
    unsigned long value;
  } const flags[] = {{"TRUE", 1}, {" false ", 0}, {"0", 0}, {"0.5", 1}};
  for (Flag const& f : flags) EXPECT_EQ(textValue(f.text).getBool(), f.value) << f.text;
  // Several text pieces are read as one; comments and elements in between are not
  // text, and CDATA sections are not plain text.
  KepDOMElement pieces = textValue("12");
  pieces.appendChild(doc.createComment("not text"));
  pieces.appendChild(doc.createTextNode("34"));
  pieces.appendChild(doc.createCDATASection("56"));
  EXPECT_EQ(text(pieces.getString()), "1234");
  // A unit above 0xFF stops a number.
  unsigned short units[] = {'4', '2', 0x20AC, '9', 0};
  KepDOMElement wide = doc.createElement("w");
  wide.appendChild(doc.createTextNode(KepString(units)));
  EXPECT_EQ(wide.getInteger(), 42);
}

TEST_F(DOMValues, ChangingTheTextDropsTheCachedValue) {
  KepDOMElement v = e.set("v", 5);
  KepDOMText(v.getFirstChild()).setData("8");
  EXPECT_EQ(v.getInteger(), 8) << "the text is the value again";
  KepDOMElement w = e.set("w", 2.5f);
  w.appendChild(doc.createTextNode("0"));
  EXPECT_EQ(text(w.getString()), "2.50");
  EXPECT_EQ(w.getDataType(), 7) << "the data type stays";
  KepDOMElement o = e.set("o", 3);
  o.removeChild(o.getFirstChild());
  EXPECT_EQ(o.getInteger(), 0);
  // Setting a new value reuses a single text child.
  KepDOMElement r = e.set("r", 1);
  KepDOMNode textChild = r.getFirstChild();
  e.set("r", 2);
  EXPECT_EQ(body(r.getFirstChild()), body(textChild));
  // setString replaces every child.
  r.appendChild(doc.createElement("x"));
  r.setString("plain");
  EXPECT_EQ(KepDOMParentNode(r).getChildCount(), 1);
  r.setString(KepString(""));
  EXPECT_FALSE(r.hasChildNodes());
}

TEST_F(DOMValues, ObjectsAreHeldAndReadThroughTheirText) {
  KepDOMElement holder = e.set("o", KepDOMNode(textValue("17")));
  EXPECT_FALSE(holder.hasChildNodes()) << "an object value has no text child";
  EXPECT_EQ(holder.getInteger(), 17) << "an element object reads as its value";
  // Plain values are no objects until toKepObject makes a string object.
  KepDOMElement n = e.set("n", 5);
  EXPECT_TRUE(n.getKepObject().isNull());
  KepObject made = n.toKepObject();
  EXPECT_EQ(text(made.toString()), "5");
  EXPECT_EQ(body(n.getKepObject()), body(made));
  // A null node stores no value.
  EXPECT_TRUE(e.set("none", KepDOMNode()).getKepObject().isNull());
}

TEST_F(DOMValues, DatesTravelAsTheirSeconds) {
  KepDate when = textValue("1700000000").getDate();
  ASSERT_FALSE(when.isNull());
  KepDOMElement v = e.set("When", when);
  EXPECT_EQ(v.getDataType(), 3);
  EXPECT_EQ(text(v.getString()), "1700000000");
  EXPECT_EQ(e.set("Again", e.get("When").getDate()).getLong(), 1700000000);
  EXPECT_TRUE(textValue("yesterday").getDate().isNull());
  EXPECT_TRUE(e.set("Unset", KepDate()).getDate().isNull());
}

TEST_F(DOMValues, NamedChildrenAndElementsAsValues) {
  e.set("Group");
  KepDOMElement second = e.set(tag("Group"));
  EXPECT_EQ(body(second), body(e.get("Group", 1))) << "set(name) always appends";
  e.set("Name", KepString("first"));
  // set(element) replaces the first child of the element's name.
  KepDOMElement replacement = doc.createElement("Name");
  replacement.setString("second");
  EXPECT_EQ(body(e.set(replacement)), body(replacement));
  EXPECT_EQ(text(e.getString("Name")), "second");
  EXPECT_EQ(body(e.set(replacement)), body(replacement)) << "setting it again changes nothing";
  KepDOMElement fresh = doc.createElement("Fresh");
  e.set(fresh);
  EXPECT_EQ(body(e.getLastChild()), body(fresh));
  EXPECT_TRUE(fresh.set(e).isNull()) << "an ancestor cannot become a value";
}
