// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The JSON text of a record set, in both directions, and the walk over a parsed object.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "recordset/IntegerText.h"
#include "recordset/QXRecordSet.h"

namespace {

using Type = CQXRecordSet::QX_TYPE;

const std::string kLongMax = std::to_string(LONG_MAX);
const std::string kLongMin = std::to_string(LONG_MIN);

std::string Nested(int nDepth, const std::string& strInnermost) {
  std::string text;
  for (int i = 0; i < nDepth; ++i) {
    text += "{\"o\":";
  }
  return text + strInnermost + std::string(static_cast<std::size_t>(nDepth), '}');
}

// ---- Writing -----------------------------------------------------------------------------------

TEST(RecordSetText, WritesACellByItsTextAndType) {
  const struct {
    int eType;
    std::string strText;
    std::string strWritten;  // "" when the member is left out
  } kCells[] = {
      {0, "whatever", "null"},
      {1, "5", "5"},
      {1, "-0", "0"},
      {1, "007", "7"},
      {1, "abc", "0"},
      {1, "", "0"},
      {1, "-", "0"},
      {1, " +12x", "12"},
      {1, "1-2", "1"},
      {1, kLongMax, kLongMax},
      {1, kLongMin, kLongMin},
      {1, kLongMax + "0", kLongMax},
      {1, "-9" + kLongMax, kLongMin},
      {2, "1", "true"},
      {2, "01", "false"},
      {2, "true", "false"},
      {3, "", "\"\""},
      {3, "a \"b\" \\ \n\x01", R"("a \"b\" \\ \n\u0001")"},
      {3, "{", "\"{\""},
      {3, "} {", "\"} {\""},
      {3, "{}x", "\"{}x\""},
      {3, "[1]", "\"[1]\""},
      {3, "   ", "\"   \""},
      {3, "\t{\"a\":1}", R"("\t{\"a\":1}")"},
      {3, "{\"a\":1}\n", R"("{\"a\":1}\n")"},
      {3, "{oops}", ""},
      {3, "{ \n \"a\" : 1 }", R"({"a":1})"},
      {0, "{}", "{}"},
      {1, " {\"a\":1} ", R"({"a":1})"},
      {2, "{\"a\":1} {oops}", R"({"a":1})"},
      {3,
       R"({"k":[1,2],"m":1.5,"n":null,"s":"v\n","t":true,"f":false,"o":{"i":007,"k":{}},"s":""})",
       R"({"k":null,"m":null,"n":null,"s":"v\n","t":true,"f":false,"o":{"i":7,"k":{}},"s":""})"},
      {3, R"({"i":)" + kLongMax + R"(0,"j":-)" + kLongMax + "0}",
       R"({"i":)" + kLongMax + R"(,"j":)" + kLongMin + "}"},
      {4, "4", "\"4\""},
      {5, "x", "\"x\""},
      {-1, "1", "\"1\""},
      {INT_MIN, "1", "\"1\""},
  };
  for (const auto& cell : kCells) {
    SCOPED_TRACE(cell.strText);
    CQXRecordSet set;
    set.SetValue("n", cell.strText.c_str(), 1, static_cast<Type>(cell.eType));
    const std::string strMember = cell.strWritten.empty() ? "" : "\"n\":" + cell.strWritten;
    EXPECT_EQ(set.GetString(), '{' + strMember + '}');
    EXPECT_EQ(set.GetStringRef(), set.GetString());
    EXPECT_STREQ(set.GetValueAsString("n"), cell.strText.c_str()) << "the cell is as it was";
    // Among others the members keep their places.
    set.SetValue("a", 1L);
    set.SetValue("z", 2L);
    EXPECT_EQ(set.GetString(),
              "{\"a\":1," + strMember + (strMember.empty() ? "" : ",") + "\"z\":2}");
  }
}

TEST(RecordSetText, HasAFormForEachNumberOfRows) {
  CQXRecordSet set;
  set.SetValue("x", 1L, -1);
  EXPECT_EQ(set.GetString(), "{}");
  set.SetValue("b", 5L, 1);
  set.SetValue("c\"", true, 1);
  EXPECT_EQ(set.GetString(), R"({"b":5,"c\"":true})");
  set.SetValue("a", 1L, 3);
  EXPECT_EQ(set.GetStringRef(), R"({"b":5,"c\"":true})");
  EXPECT_EQ(set.GetString(), R"({"rows":[{"b":5,"c\"":true},{},{"a":1}]})");
}

TEST(WalkObject, WritesBracesOnlyWhenItIsOutermost) {
  JSON::Message message;
  ASSERT_TRUE(message.Parse(R"({"a":{"b":1},"":"x"})"));
  JSON::Serialize outer(0);
  json_walk_obj(outer, &message, 0);
  EXPECT_EQ(outer.String(), R"({"a":{"b":1},"":"x"})");
  JSON::Serialize inner(0);
  inner.OO().N("first").V(0);
  json_walk_obj(inner, message.GetByName("a", -1), 1);
  inner.OC();
  EXPECT_EQ(inner.String(), R"({"first":0,"b":1})");
}

TEST(WalkObject, GoesAsDeepAsTheTreeAndTakesUpdatedValues) {
  constexpr int kDeep = 5000;
  JSON::Message message;
  JSON::JSONValue* pValue = &message;
  for (int i = 0; i < kDeep; ++i) {
    pValue->SetNull("o");
    pValue = &(*pValue)["o"];
    pValue->Set("x", 0);
  }
  pValue->Set("s", static_cast<const char*>(nullptr));
  pValue->Set("b", true);
  JSON::Serialize writer(0);
  json_walk_obj(writer, &message, 0);
  std::string strExpected;
  for (int i = 0; i < kDeep; ++i) {
    strExpected += i == 0 ? "{\"o\":" : "{\"x\":0,\"o\":";
  }
  strExpected += "{\"x\":0,\"s\":null,\"b\":true" + std::string(kDeep + 1, '}');
  EXPECT_EQ(writer.String(), strExpected);
}

TEST(IntegerText, IsCanonicalWhenItIsWrittenTheSame) {
  for (const char* const text : {"0", "1", "-1", "10", "123456789", "-123456789"}) {
    EXPECT_TRUE(recordset::IsCanonicalInteger(text)) << text;
  }
  for (const char* const text : {"", "-", "-0", "00", "01", "-01", "+1", " 1", "1 ", "1.", "12a",
                                 "1/", "1:", "--1", "99999999999999999999"}) {
    EXPECT_FALSE(recordset::IsCanonicalInteger(text)) << text;
  }
}

// ---- Loading -----------------------------------------------------------------------------------

TEST(RecordSetLoad, TakesEachShapeOfText) {
  const struct {
    std::string strText;
    long lRows;
    std::vector<std::string> vColumns;  // in the order of their indices
    std::string strWritten;
  } kTexts[] = {
      {R"({"a":1,"b":"x","c":true,"d":null})",
       1,
       {"a", "b", "c", "d"},
       R"({"a":1,"b":"x","c":true,"d":null})"},
      {R"({"rows":[{"a":1},{"b":2}]})", 2, {"a", "b"}, R"({"rows":[{"a":1},{"b":2}]})"},
      {R"({"rows":[{"b":1,"a":2},{"c":0,"a":3}]})",
       2,
       {"b", "a", "c"},
       R"({"rows":[{"a":2,"b":1},{"a":3,"c":0}]})"},
      {R"({"rows":[{"a":1},{}]})", 1, {"a"}, R"({"a":1})"},
      {R"({"rows":[{},{"a":1}]})", 2, {"a"}, R"({"rows":[{},{"a":1}]})"},
      {R"({"rows":[{"a":1},null,{"a":3}]})", 1, {"a"}, R"({"a":1})"},
      {R"({"rows":[5,"x",[{"a":1},"b"],true,1.5,{"a":6}]})",
       6,
       {"a"},
       R"({"rows":[{},{},{},{},{},{"a":6}]})"},
      {R"({"rows":5,"x":2})", 1, {"rows", "x"}, R"({"rows":5,"x":2})"},
      {R"({"rows":null})", 1, {"rows"}, R"({"rows":null})"},
      {R"({"rows":{"a":1}})", 1, {"rows"}, R"({"rows":{"a":1}})"},
      {R"({"rows":[{"a":1}],"x":2})", 1, {"a"}, R"({"a":1})"},
      {R"({"x":2,"rows":[{"a":1}]})", 1, {"a"}, R"({"a":1})"},
      {R"({"rows":[{"a":1}],"rows":5})", 1, {"a"}, R"({"a":1})"},
      {R"({"rows":5,"rows":[{"a":1}]})", 1, {"rows"}, R"({"rows":""})"},
      // A name that a NUL cuts to "rows" is another name.
      {R"({"rows\u0000":1,"b":2,"rows":[{"a":1}], "behind":"text enough"})",
       1,
       {"a"},
       R"({"a":1})"},
      {R"({"rows":[]})", 0, {}, "{}"},
      {R"({"r":1.5,"l":[1,{"z":2}]})", 1, {"r", "l"}, R"({"l":"","r":""})"},
      {R"({"n":007,"m":-0,"o":-12})", 1, {"n", "m", "o"}, R"({"m":0,"n":7,"o":-12})"},
      {"{\"n\":" + kLongMax + "9,\"m\":-" + kLongMax + "9}",
       1,
       {"n", "m"},
       "{\"m\":" + kLongMin + ",\"n\":" + kLongMax + "}"},
      {R"({"o":{"p":[1],"q":"w"}})", 1, {"o"}, R"({"o":{"p":null,"q":"w"}})"},
      {R"({"a":1,"b":2,"a":"x"})", 1, {"a", "b"}, R"({"a":"x","b":2})"},
      {R"({"":"\u0000x","k\u0000y":"a\u0000b","\u006b":"\u00e9\/"})",
       1,
       {"", "k"},
       "{\"\":\"\",\"k\":\"\xC3\xA9/\"}"},
      {" \n{\"a\" : 1 } trailing", 1, {"a"}, R"({"a":1})"},
      {R"({"a":1,)", 1, {"a"}, R"({"a":1})"},
      {R"([{"a":1}])", 0, {}, "{}"},
      {"hello", 0, {}, "{}"},
      {"", 0, {}, "{}"},
      {R"({"a":1)", 0, {}, "{}"},
      {R"({"rows":[{"a":1},{"b":x}]})", 0, {}, "{}"},
      {R"({"rows":[{"a":1}],"x":})", 0, {}, "{}"},
  };
  for (const auto& text : kTexts) {
    SCOPED_TRACE(text.strText);
    const std::string strCopy = text.strText;
    CQXRecordSet set;
    EXPECT_TRUE(set.SetString(text.strText));
    EXPECT_EQ(text.strText, strCopy);
    EXPECT_EQ(set.GetRowsCount(), text.lRows);
    EXPECT_EQ(set.GetColumnCount(), static_cast<long>(text.vColumns.size()));
    for (std::size_t i = 0; i < text.vColumns.size(); ++i) {
      EXPECT_EQ(set.GetColumnIndex(text.vColumns[i].c_str()), static_cast<long>(i) + 1);
    }
    EXPECT_EQ(set.GetString(), text.strWritten);

    CQXRecordSet other;
    EXPECT_TRUE(other = text.strText.c_str());
    EXPECT_EQ(other.GetString(), text.strWritten);
    EXPECT_EQ(CQXRecordSet(text.strText).GetString(), text.strWritten);
    EXPECT_TRUE(other.SetUTF8String(text.strText));
    EXPECT_EQ(other.GetString(), text.strWritten) << "loaded twice";
    EXPECT_EQ(other.GetRowsCount(), text.lRows);
  }
}

TEST(RecordSetLoad, AddsToWhatIsThere) {
  CQXRecordSet set("{\"rows\":[{\"a\":1,\"b\":2},{\"a\":3,\"c\":4}]}");
  const char* const pText = set.GetValueAsString("c", 2);
  EXPECT_TRUE(set.SetString(R"({"d":"new","b":"over"})"));
  EXPECT_EQ(set.GetString(), R"({"rows":[{"a":1,"b":"over","d":"new"},{"a":3,"c":4}]})");
  EXPECT_EQ(set.GetColumnIndex("d"), 4);
  EXPECT_EQ(set.GetValueAsString("c", 2), pText);
  EXPECT_TRUE(set.SetString("{\"a\":9"));
  EXPECT_TRUE(set.SetString(static_cast<const char*>(nullptr)));
  EXPECT_EQ(set.GetString(), R"({"rows":[{"a":1,"b":"over","d":"new"},{"a":3,"c":4}]})");
  EXPECT_TRUE(set.SetString(R"({"rows":[{},{},{},{"e":true}]})"));
  EXPECT_EQ(set.GetRowsCount(), 4);
}

// Objects within a cell, as deep as a parse goes and one level deeper.
TEST(RecordSetLoad, KeepsNestedObjectsOfAnyDepth) {
  for (const int nDepth : {1, 30, 33, 70, JSON::kMaxNesting - 1}) {
    const std::string text = Nested(nDepth, "{\"i\":1}");
    CQXRecordSet set(text);
    EXPECT_EQ(set.GetString(), text) << nDepth;
    EXPECT_EQ(set.GetValueAsString("o"), text.substr(5, text.size() - 6)) << nDepth;
  }
  EXPECT_EQ(CQXRecordSet(Nested(JSON::kMaxNesting, "{}")).GetString(), "{}");
}

}  // namespace
