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
  std::string_view outline;     // the tree, as Plain::Outline shows it
  std::size_t nCursor;          // where the parse stops
  std::string_view serialized;  // the tree written again
};

void CheckCases(const Case* pCases, std::size_t nCases, bool bAccepted) {
  for (std::size_t i = 0; i < nCases; ++i) {
    const Case& test = pCases[i];
    SCOPED_TRACE(test.text);
    SideBySide parsers;
    EXPECT_EQ(parsers.Check(test.text), "");
    EXPECT_EQ(parsers.document.bAccepted, bAccepted);
    EXPECT_EQ(Plain::Outline(parsers.document), test.outline);
    EXPECT_EQ(parsers.document.nCursor, test.nCursor);
    std::string strSerialized;
    EXPECT_TRUE(parsers.copying.Serialize(strSerialized));
    EXPECT_EQ(strSerialized, test.serialized);
  }
}

TEST(JsonParser, AcceptsJsonAndItsLeniencies) {
  static const Case kCases[] = {
      {"[]", "[]", 2, "[]"},
      {" [ ] tail", "[]", 4, "[]"},
      {"{}", "{}~", 2, "{}"},
      {" \t\f\n\r{ }}", "{}~", 8, "{}"},
      {"[true,false,null]", "[b<true> b<false> n<null>]", 17, "[true,false,null]"},
      {"{\"b\":1,\"aa\":[],\"a\":{}}", "{b:i<1> aa:[] a:{}~}", 22, "{\"b\":1,\"aa\":[],\"a\":{}}"},
      {"\n{ \"a\" :\t1 , \"b\"\f:\r[ 2 ] } ", "{a:i<1> b:[i<2>]}", 26, "{\"a\":1,\"b\":[2]}"},
      {"{\"a\":1,\"a\":\"2\",\"\":3}", "{a:i<1> a:s<2> :i<3>}", 20, "{\"a\":1,\"a\":\"2\",\"\":3}"},
      {"[[[1]],{\"a\":{\"b\":2}}]x", "[[[i<1>]] {a:{b:i<2>}}]", 21, "[[[1]],{\"a\":{\"b\":2}}]"},
      // Missing elements.
      {"[1,,2]", "[i<1> n i<2>]", 6, "[1,null,2]"},
      {"[1,]", "[i<1> n]", 4, "[1,null]"},
      {"[,]", "[n n]", 3, "[null,null]"},
      {"[ ,1]", "[n i<1>]", 5, "[null,1]"},
      {"[1 , ]", "[i<1> n]", 6, "[1,null]"},
      // Texts that break off where that counts as complete; a NUL ends a text as its end does.
      {"{ ", "{}", 2, "{}"},
      {"{\t\f\n\r \0}"sv, "{}", 6, "{}"},
      {"[ ", "[]", 2, "[]"},
      {"[\n\0]"sv, "[]", 2, "[]"},
      {"[1,", "[i<1>]", 3, "[1]"},
      {"[1,\0 2]"sv, "[i<1>]", 3, "[1]"},
      {"{\"a\":1,", "{a:i<1>}", 7, "{\"a\":1}"},
      {"{\"a\":1, ", "{a:i<1>}", 8, "{\"a\":1}"},
      {"{\"a\":1, \0\"b\":2}"sv, "{a:i<1>}", 8, "{\"a\":1}"},
      // Numbers: any run of their bytes that begins with a sign or a digit.
      {"[12,-3,007]", "[i<12> i<-3> i<007>]", 11, "[12,-3,007]"},
      {"[1.5,1e3,2E-1,0.]", "[d<1.5> d<1e3> d<2E-1> d<0.>]", 17, "[1.5,1e3,2E-1,0.]"},
      {"[+-1,-,1-2,+]", "[i<+-1> i<-> i<1-2> i<+>]", 13, "[+-1,-,1-2,+]"},
      {"[1e2e3,1.2.3,-.e]", "[d<1e2e3> d<1.2.3> d<-.e>]", 17, "[1e2e3,1.2.3,-.e]"},
      // Strings.
      {R"(["\b\f\n\r\t\"\\\/\q"])", R"([s<\x08\x0C\x0A\x0D\x09"\/q>])", 22,
       R"(["\b\f\n\r\t\"\\/q"])"},
      {R"(["\u0041\u00e9\u20AC"])", R"([s<A\xC3\xA9\xE2\x82\xAC>])", 22,
       "[\"A\xC3\xA9\xE2\x82\xAC\"]"},
      {R"(["\uD83D\uDE00"])", R"([s<\xED\xA0\xBD\xED\xB8\x80>])", 16,
       "[\"\xED\xA0\xBD\xED\xB8\x80\"]"},
      {R"(["\u007f\u0080\u07FF\u0800\uffff"])",
       R"([s<\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF>])", 34,
       "[\"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\"]"},
      {R"(["\u0041\u0000B"])", R"([s<A\x00B>])", 17, R"(["A"])"},
      {"[\"a\0b\x01\n\xFF\"]"sv, R"([s<a\x00b\x01\x0A\xFF>])", 10, R"(["a"])"},
      // The four bytes behind \u are consumed whatever they hold and read as strtoul reads them.
      {R"(["\u 41x\u0x1g\u12"x","\u-001"])", R"([s<A\x01\x12> s<\xEF\xBF\xBF>])", 31,
       "[\"A\\u0001\\u0012\",\"\xEF\xBF\xBF\"]"},
      {"{\"a\\u0000b\":1,\"\\\"\":2}", R"({a\x00b:i<1> ":i<2>})", 21, R"({"a":1,"\"":2})"},
  };
  CheckCases(kCases, std::size(kCases), true);
}

TEST(JsonParser, RefusesTheRestAndKeepsWhatItRead) {
  static const Case kCases[] = {
      // No container to begin with: no tree at all.
      {" ", "", 1, "null"},
      {"12", "", 0, "null"},
      {" \"x\"", "", 1, "null"},
      {"true", "", 0, "null"},
      {"]", "", 0, "null"},
      {"\v[]", "", 0, "null"},
      {"\xEF\xBB\xBF[]", "", 0, "null"},
      {"\0[]"sv, "", 0, "null"},
      {" \0[]"sv, "", 1, "null"},
      // Texts that break off.
      {"[", "[]!", 1, "[]"},
      {"[\0]"sv, "[]!", 1, "[]"},
      {"{", "{}!~", 1, "{}"},
      {"{\0}"sv, "{}!~", 1, "{}"},
      {"[1, ", "[i<1>]!", 4, "[1]"},
      {"[1,\n\0]"sv, "[i<1>]!", 4, "[1]"},
      {"[1\0]"sv, "[i<1>]!", 2, "[1]"},
      {"[true", "[b<true>]!", 5, "[true]"},
      {"[fals", "[x]!", 1, "[null]"},
      {"[nul", "[x]!", 1, "[null]"},
      {"[\"ab", "[x]!", 2, "[null]"},
      {"[\"ab\\", "[x]!", 2, "[null]"},
      {"[\"ab\\\"", "[x]!", 2, "[null]"},
      {"[\"\\u004", "[x]!", 2, "[null]"},
      {"{\"a", "{}!~", 2, "{}"},
      {"{\"a\"", "{a:}!~", 4, "{}"},
      {"{\"a\":", "{a:}!~", 5, "{}"},
      {"{\"b\":1,\"a\"", "{b:i<1> a:}!~", 10, "{\"b\":1}"},
      // The last byte of the text never belongs to a number.
      {"[12", "[i<1>]!", 2, "[1]"},
      {"[1.", "[i<1>]!", 2, "[1]"},
      {"[1", "[i<>]!", 1, "[]"},
      {"{\"a\":-", "{a:i<>}!~", 5, "{\"a\":}"},
      // Wrong bytes.
      {"{\"a\":1,}", "{a:i<1>}!~", 7, "{\"a\":1}"},
      {"{,}", "{}!~", 1, "{}"},
      {"{a:1}", "{}!~", 1, "{}"},
      {"{'a':1}", "{}!~", 1, "{}"},
      {"{1:1}", "{}!~", 1, "{}"},
      {"{\"a\" 1}", "{a:}!~", 5, "{}"},
      {"{\"a\":}", "{a:}!~", 5, "{}"},
      {"{\"a\":1 \"b\":2}", "{a:i<1>}!~", 7, "{\"a\":1}"},
      {"{\"a\":1]", "{a:i<1>}!~", 6, "{\"a\":1}"},
      {"[1}", "[i<1>]!", 2, "[1]"},
      {"[1 2]", "[i<1>]!", 3, "[1]"},
      {"[1;2]", "[i<1>]!", 2, "[1]"},
      {"[1,\v2]", "[i<1>]!", 3, "[1]"},
      {"[.5]", "[]!", 1, "[]"},
      {"[e5]", "[]!", 1, "[]"},
      {"[True]", "[]!", 1, "[]"},
      {"[truex]", "[b<true>]!", 5, "[true]"},
      {"[nulL]", "[x]!", 1, "[null]"},
      {"[tru\0]"sv, "[x]!", 1, "[null]"},
      // Every enclosing container fails too; what was complete before stays complete.
      {"{\"b\":[1,{}],\"a\":[2,{\"c\":?}]}", "{b:[i<1> {}~] a:[i<2> {c:}!~]!}!~", 24,
       "{\"b\":[1,{}],\"a\":[2,{}]}"},
      {"{\"a\":{\"b\":{\"c\":tru}}}", "{a:{b:{c:x}!~}!~}!~", 15, "{\"a\":{\"b\":{\"c\":null}}}"},
  };
  CheckCases(kCases, std::size(kCases), false);
}

TEST(JsonParser, LeavesUnescapedAndTerminatedStringsInTheBuffer) {
  GuardedBuffer text(R"(["a\n\u0041b", {"k\\ey":"v"}, 12, "xy"])");
  Message message(true);
  ASSERT_TRUE(message.Parse(text.data(), text.size()));
  // What lies between a shortened string's NUL and its closing quote belongs to nobody.
  EXPECT_EQ(text.view().substr(0, 7), "[\"a\nAb\0"sv);
  EXPECT_EQ(text.view().substr(12, 10), "\", {\"k\\ey\0"sv);
  EXPECT_EQ(text.view().substr(22), "\":\"v\0}, 12, \"xy\0]"sv);
  EXPECT_EQ(message[0].pText, text.data() + 2);
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
  static const struct {
    std::string_view open, close;
    int nLevels;  // that they stand for
  } kCases[] = {{"[", "]", 1}, {"{\"a\":", "}", 1}, {" [ { \"\" : ", " } , 0 ] ", 2}};
  for (const auto& test : kCases) {
    for (int nDepth = 1022; nDepth <= 1026; nDepth += test.nLevels) {
      for (const std::string_view inner : {"[]", "[[]]"}) {
        std::string strText(inner);
        for (int i = 0; i < nDepth; i += test.nLevels) {
          strText.insert(0, test.open);
          strText += test.close;
        }
        const int nTotal = nDepth + static_cast<int>(inner.size()) / 2;
        SideBySide parsers;
        EXPECT_EQ(parsers.Check(strText), "") << nTotal << " levels of " << test.open;
        EXPECT_EQ(parsers.document.bAccepted, nTotal <= 1024) << nTotal << " of " << test.open;
      }
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
      {Parser::ParseNumber, "12,", 3, "12", 2},
      {Parser::ParseNumber, "-1e5 ", 4, "-1e5", 4},
      {Parser::ParseNumber, "12", 3, "1", 1},
      {Parser::ParseNumber, "1", 3, "", 0},
      {Parser::ParseBoolean, "true", 2, "true", 4},
      {Parser::ParseBoolean, "truex", 2, "true", 4},
      {Parser::ParseBoolean, "false", 2, "false", 5},
      {Parser::ParseBoolean, "fals", -1, "", 0},
      {Parser::ParseBoolean, "tru", -1, "", 0},
      {Parser::ParseNull, "null", 1, "null", 4},
      {Parser::ParseNull, "nul", -1, "", 0},
      {Parser::ParseNull, "none", -1, "", 0},
      {Parser::ParseString, "\"ab\"", 5, "ab", 4},
      {Parser::ParseString, "\"a\\tb\"", 5, "a\tb", 6},
      {Parser::ParseString, "\"ab", -1, "", 1},
      {Parser::ParseString, "\"\"", 5, "", 2},
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
