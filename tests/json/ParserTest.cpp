// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the parser accepts, what it refuses, and the tree, cursor and buffer that it leaves in each
// case. The tables hold for the library's parser and for the plain one of tests/support, which
// ParserDifferentialTest.cpp then uses for texts that nobody wrote down.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "json/JSONMessage.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/SideBySide.h"

namespace {

using JSON::Message;
using JSON::Parser;
using Support::GuardedBuffer;
using Support::SideBySide;
using namespace std::string_view_literals;

struct Case {
  std::string_view text;
  std::string_view outline;  // the tree, as Plain::Outline shows it
  std::size_t nCursor;       // where the parse stops
};

template <std::size_t nCases>
void CheckCases(const Case (&cases)[nCases], bool bAccepted) {
  for (const Case& test : cases) {
    SCOPED_TRACE(test.text);
    SideBySide parsers;
    EXPECT_EQ(parsers.Check(test.text), "");
    EXPECT_EQ(parsers.document.bAccepted, bAccepted);
    EXPECT_EQ(Plain::Outline(parsers.document), test.outline);
    EXPECT_EQ(parsers.document.nCursor, test.nCursor);
  }
}

TEST(JsonParser, AcceptsJsonAndItsLeniencies) {
  static const Case kCases[] = {
      {" [ ] tail", "[]", 4},
      {" \t\f\n\r{ }}", "{}~", 8},
      {"\n{ \"a\" :\t1 , \"b\"\f:\r[ 2 ] } ", "{a:i<1> b:[i<2>]}", 26},
      {"{\"a\":true,\"a\":\"2\",\"\":[null]}", "{a:b<true> a:s<2> :[n<null>]}", 28},
      // Missing elements.
      {"[1,,2,]", "[i<1> n i<2> n]", 7},
      {"[ , ]", "[n n]", 5},
      // Texts that break off where that counts as complete; a NUL ends a text as its end does.
      {"{\t\f\n\r \0}"sv, "{}", 6},
      {"[\n\0]"sv, "[]", 2},
      {"[1,\0 2]"sv, "[i<1>]", 3},
      {"{\"a\":1, ", "{a:i<1>}", 8},
      {"{\"a\":1, \0\"b\":2}"sv, "{a:i<1>}", 8},
      // Numbers: any run of their bytes that begins with a sign or a digit.
      {"[12,-3,007,+-1,-,1-2]", "[i<12> i<-3> i<007> i<+-1> i<-> i<1-2>]", 21},
      {"[1.5,2E-1,0.,1e2e3,-.e]", "[d<1.5> d<2E-1> d<0.> d<1e2e3> d<-.e>]", 23},
      // Strings.
      {R"(["\b\f\n\r\t\"\\\/\q"])", R"([s<\x08\x0C\x0A\x0D\x09"\/q>])", 22},
      {R"(["\u007f\u0080\u07FF\u0800\uffff\uD83D"])",
       R"([s<\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xED\xA0\xBD>])", 40},
      {"[\"a\0b\x01\n\xFF\"]"sv, R"([s<a\x00b\x01\x0A\xFF>])", 10},
      {"{\"a\\u0000b\":1,\"\\\"\":2}", R"({a\x00b:i<1> ":i<2>})", 21},
      // The four bytes behind \u are consumed whatever they hold and read as strtoul reads them.
      {R"(["\u 41x\u0x1g\u12"x","\u-001"])", R"([s<A\x01\x12> s<\xEF\xBF\xBF>])", 31},
  };
  CheckCases(kCases, true);
}

TEST(JsonParser, RefusesTheRestAndKeepsWhatItRead) {
  static const Case kCases[] = {
      // No container to begin with: no tree at all.
      {" \"x\"", "", 1},
      {"\v[]", "", 0},
      {" \0[]"sv, "", 1},
      // Texts that break off.
      {"[", "[]!", 1},
      {"{\0}"sv, "{}!~", 1},
      {"[1,\n\0]"sv, "[i<1>]!", 4},
      {"[true", "[b<true>]!", 5},
      {"[nul", "[x]!", 1},
      {"[\"ab\\\"", "[x]!", 2},
      {"[\"\\u004", "[x]!", 2},
      {"{\"a", "{}!~", 2},
      {"{\"b\":1,\"a\"", "{b:i<1> a:}!~", 10},
      // The last byte of the text never belongs to a number.
      {"[12", "[i<1>]!", 2},
      {"{\"a\":-", "{a:i<>}!~", 5},
      // Wrong bytes.
      {"{\"a\":1,}", "{a:i<1>}!~", 7},
      {"{a:1}", "{}!~", 1},
      {"{\"a\" 1}", "{a:}!~", 5},
      {"{\"a\":}", "{a:}!~", 5},
      {"[1 2]", "[i<1>]!", 3},
      {"[.5]", "[]!", 1},
      {"[truex]", "[b<true>]!", 5},
      // Every enclosing container fails too; what was complete before stays complete.
      {"{\"b\":[1,{}],\"a\":[2,{\"c\":?}]}", "{b:[i<1> {}~] a:[i<2> {c:}!~]!}!~", 24},
      {"{\"a\":{\"b\":{\"c\":tru}}}", "{a:{b:{c:x}!~}!~}!~", 15},
  };
  CheckCases(kCases, false);
}

TEST(JsonParser, ReadsNoMoreThanItsLength) {
  Message message;
  EXPECT_FALSE(message.Parse("[1]", 2));
  EXPECT_TRUE(message.Parse("[1]]", 3));
  EXPECT_TRUE(message.Parse("[1]"));
  EXPECT_TRUE(message.Parse("[1,\0002]", -1));
  EXPECT_EQ(message.Size(), 1);
  EXPECT_TRUE(message.Parse("[\"\0\"]", 5));
  EXPECT_EQ(message[0].nLength, 1);
  std::string strText = "[ 7 ]";
  Message inPlace(true);
  EXPECT_TRUE(inPlace.Parse(strText.data(), -1));
  EXPECT_EQ(inPlace.pEnd, strText.data() + 5);
}

TEST(JsonParser, ChangesNothingWithoutAText) {
  Message message;
  ASSERT_TRUE(message.Parse("[1]"));
  const auto* pRoot = message.pComposite;
  EXPECT_FALSE(message.Parse(nullptr, 3));
  EXPECT_FALSE(message.Parse(nullptr));
  EXPECT_FALSE(message.Parse("{}", 0));
  EXPECT_EQ(message.pComposite, pRoot);
  EXPECT_EQ(message[0].AsInt(), 1);
}

TEST(JsonParser, BoundsTheNesting) {
  for (const auto& [open, close] : {std::pair("[", "]"), std::pair("{\"a\":", "}")}) {
    for (int nDepth = 1022; nDepth <= 1025; ++nDepth) {
      std::string strText = "[]";
      for (int i = 0; i < nDepth; ++i)
        strText = open + strText + close;
      SideBySide parsers;
      EXPECT_EQ(parsers.Check(strText), "") << nDepth << " levels of " << open;
      EXPECT_EQ(parsers.document.bAccepted, nDepth < 1024) << nDepth << " of " << open;
    }
  }
}

// The functions below Message::Parse, on a range that ends where nothing can be read.
TEST(JsonParser, OffersItsStepsToHosts) {
  using Step = int (*)(JSON::ParseContext&, JSON::UnsafeJSONValue&);
  static const struct {
    Step step;
    std::string_view text;
    int nResult;
    std::string_view value;
    std::ptrdiff_t nCursor;
  } kCases[] = {
      {Parser::ParseNumber, "-1e5 ", 4, "-1e5", 4},
      {Parser::ParseNumber, "12", 3, "1", 1},
      {Parser::ParseBoolean, "truex", 2, "true", 4},
      {Parser::ParseBoolean, "false", 2, "false", 5},
      {Parser::ParseBoolean, "fals", -1, "", 0},
      {Parser::ParseNull, "null", 1, "null", 4},
      {Parser::ParseNull, "none", -1, "", 0},
      {Parser::ParseNumber, "x", -1, "", 0},
      {Parser::ParseString, "\"a\\tb\"", 5, "a\tb", 6},
      {Parser::ParseString, "\"ab", -1, "", 1},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.text);
    GuardedBuffer text(test.text);
    JSON::ParseContext context = {text.data(), text.data() + text.size(), text.data()};
    JSON::UnsafeJSONValue value;
    EXPECT_EQ(test.step(context, value), test.nResult);
    EXPECT_EQ(value.eType, test.nResult);
    EXPECT_EQ(context.pCursor - context.pStart, test.nCursor);
    EXPECT_EQ(value.nLength, static_cast<int>(test.value.size()));
    if (test.nResult > 0) {
      EXPECT_EQ(std::string(value.pText, test.value.size()), test.value);
    }
    if (test.nResult == 5) {
      EXPECT_EQ(value.pText[value.nLength], '\0');
    }
  }
}

TEST(JsonParser, AddsToContainersOfTheHost) {
  GuardedBuffer text(" [1,{\"b\":[2],\"a\":3}] {\"c\":4} ?");
  JSON::ParseContext context = {text.data(), text.data() + text.size(), text.data()};
  JSON::ArrayValue parent(4);
  EXPECT_EQ(Parser::ParseJSONValue(context, parent), JSON::jtArray);
  EXPECT_EQ(Parser::ParseJSONValue(context, parent), JSON::jtObject);
  EXPECT_EQ(Parser::ParseJSONValue(context, parent), -1);
  std::string strSerialized;
  EXPECT_TRUE(parent.Serialize(strSerialized));
  EXPECT_EQ(strSerialized, "[[1,{\"b\":[2],\"a\":3}],{\"c\":4}]");
  EXPECT_EQ(parent.eType, JSON::jtInvalid);
  EXPECT_EQ(parent.GetByOrdinal(0)->GetByOrdinal(1)->GetByName("a", -1)->AsInt(), 3);

  // An object that is filled twice, the second time with a failure.
  GuardedBuffer texts(R"({"bb":1,"a":2}{"c":[3],"a":x)");
  context = {texts.data(), texts.data() + texts.size(), texts.data()};
  JSON::ObjectValue object(0);
  EXPECT_EQ(Parser::ParseObject(context, object), JSON::jtObject);
  EXPECT_TRUE(object.bSorted);
  EXPECT_EQ(object.OrdinalOf("bb", -1), 0);
  EXPECT_EQ(Parser::ParseObject(context, object), -1);
  EXPECT_EQ(object.eType, JSON::jtInvalid);
  EXPECT_FALSE(object.bSorted);
  EXPECT_EQ(object.OrdinalOf("c", -1), 2);
  EXPECT_EQ(object.OrdinalOf("a", -1), 1);
  EXPECT_STREQ(object.NameAt(2), "c");
  EXPECT_EQ(object.NameAt(3), nullptr);
}

// What a host's own containers are given, in the order in which they are given it.
struct RecordingObject : JSON::ObjectValue {
  void AddName(JSON::JSONValue& name) override {
    strCalls += std::string(name.pText) + ':';
    ObjectValue::AddName(name);
  }
  void AddValue(JSON::JSONValue& value) override {
    strCalls += std::to_string(value.eType) + ' ';
    ObjectValue::AddValue(value);
  }
  std::string strCalls;
};
struct RecordingArray : JSON::ArrayValue {
  void AddValue(JSON::JSONValue& value) override {
    strCalls += std::to_string(value.eType) + ' ';
    ArrayValue::AddValue(value);
  }
  std::string strCalls;
};

TEST(JsonParser, FillsTheHostsOwnKindsThroughTheirOverrides) {
  GuardedBuffer text(R"({"bb":[1],"a":"x"}["y",{"c":null}]{"b":1,"aa":)");
  JSON::ParseContext context = {text.data(), text.data() + text.size(), text.data()};
  std::string strSerialized;
  RecordingObject object;
  EXPECT_EQ(Parser::ParseObject(context, object), JSON::jtObject);
  EXPECT_EQ(object.strCalls, "bb:6 a:5 ");
  EXPECT_TRUE(object.bSorted);
  RecordingArray array;
  EXPECT_EQ(Parser::ParseArray(context, array), JSON::jtArray);
  EXPECT_EQ(array.strCalls, "5 7 ");
  EXPECT_TRUE(object.Serialize(strSerialized) && array.Serialize(strSerialized));
  EXPECT_EQ(strSerialized, R"({"bb":[1],"a":"x"}["y",{"c":null}])");
  RecordingObject failed;
  EXPECT_EQ(Parser::ParseObject(context, failed), -1);
  EXPECT_EQ(failed.strCalls, "b:3 aa:");
  EXPECT_EQ(failed.eType, JSON::jtInvalid);
}

// Names of all lengths around those of a block, and one that differs in a single byte where the
// first one is expected.
TEST(JsonParser, TellsAnExpectedNameFromAnyOther) {
  for (std::size_t length = 1; length < 40; ++length) {
    for (std::size_t i = 0; i < length; ++i) {
      const std::string strName(length, 'n');
      std::string strOther = strName;
      strOther[i] = 'N';
      std::string strText = "[{\"" + strName + "\":1},{\"" + strName + "\":2},{\"" + strOther +
                            "\":3,\"behind\":\"so that the end of the text is far from here\"}]";
      JSON::Message message(true);
      ASSERT_TRUE(message.Parse(strText.data(), static_cast<int>(strText.size())));
      ASSERT_EQ(message[1].pComposite->NameAt(0), strName);
      ASSERT_EQ(message[2].pComposite->NameAt(0), strOther);
    }
  }
}

// tests/data: y_ is accepted JSON, l_ accepted though it is not strict JSON, n_ refused.
TEST(JsonParser, JudgesTheCorpusAsItsFileNamesSay) {
  int nFiles = 0;
  for (const auto& entry : std::filesystem::directory_iterator(QXRECORDSET_TEST_DATA)) {
    const std::string strName = entry.path().filename().string();
    if (entry.path().extension() != ".json" || strName.find_first_of("yln") != 0) continue;
    SCOPED_TRACE(strName);
    ++nFiles;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string strText((std::istreambuf_iterator<char>(file)), {});
    SideBySide parsers;
    EXPECT_EQ(parsers.Check(strText), "");
    EXPECT_EQ(parsers.document.bAccepted, strName[0] != 'n');
    if (strName[0] != 'y') continue;
    // Written once, a document stays the same through any further round.
    std::string strOnce;
    std::string strTwice;
    ASSERT_TRUE(parsers.copying.Serialize(strOnce));
    Message again;
    EXPECT_TRUE(again.Parse(strOnce.c_str()));
    EXPECT_TRUE(again.Serialize(strTwice));
    EXPECT_EQ(strOnce, strTwice);
  }
  EXPECT_GE(nFiles, 60);
}

}  // namespace
