// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the parser accepts, what it refuses, and the tree, cursor and buffer that it leaves in each
// case: files and tables that hold for the library's parser and for the plain one of tests/support,
// then both over texts that nobody wrote down; and the parser's functions for hosts.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/Author.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/SideBySide.h"
#include "tests/support/Values.h"

namespace {

using JSON::Message;
using JSON::Parser;
using Support::Author;
using Support::GuardedBuffer;
using Support::Kind;
using Support::SideBySide;
using Support::Written;
using namespace std::string_view_literals;

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
  }
  EXPECT_GE(nFiles, 60);
}

// The finer points: what the tree holds in the end, and where the parse stops.
TEST(JsonParser, KeepsWhatItReadAndStopsWhereItFails) {
  static const struct {
    const char* szMechanism;
    std::string_view text;
    std::string_view written;
    std::size_t nCursor;
  } kCases[] = {
      {"empty elements", "[1,,2, ] tail", "[1,null,2,null]", 8},
      // A NUL ends a text as its end does, but not a string.
      {"white space up to a NUL", "{\t\f\n\r \0}"sv, "{}", 6},
      {"a NUL behind a comma of an array", "[1,\0 2]"sv, "[1]", 3},
      {"a NUL behind a comma of an object", "{\"a\":1, \0\"b\":2}"sv, R"({"a":1})", 8},
      {"a NUL behind white space of an array", "[1,\n\0]"sv, "[1]", 4},
      {"a string without end", "[\"ab\\\"", "[null]", 2},
      {"a name without value", "{\"b\":1,\"a\"", R"({"b":1})", 10},
      {"a NUL in front of the root", " \0[]"sv, "null", 1},
      {"NULs in strings", "{\"\x01\n\xE9x\0b\":\"\0c\"}"sv, "{\"\\u0001\\n\xE9x\":\"\"}", 15},
      // The last byte of the text stops the parse, but it is still the number's.
      {"a number cut off in an array", "[12", "[12]", 2},
      {"a number cut off in an object", R"({"a":1,"b":2)", R"({"a":1,"b":2})", 11},
      {"a number cut off further in", "[[],{\"a\":-1.5e", R"([[],{"a":-1.5e}])", 13},
      // The four bytes behind \u are consumed whatever they hold, and read as strtoul does.
      {"escapes", R"(["\u07FF\uD83D\u 41x\u0x1g\u12"x","\u-001"])",
       "[\"\xDF\xBF\xED\xA0\xBD"
       "A\\u0001\\u0012\",\"\xEF\xBF\xBF\"]",
       43},
      {"a name without quotes", "{a:1}", "{}", 1},
      {"a literal that goes on", "[truex]", "[true]", 5},
      {"a literal that is none", "{\"b\":[1,{}],\"a\":[2,{\"c\":tru}]}",
       R"({"b":[1,{}],"a":[2,{"c":null}]})", 24},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.szMechanism);
    Message untouched;  // written before anything is looked up
    untouched.Parse(test.text.data(), static_cast<int>(test.text.size()));
    EXPECT_EQ(Written(untouched), test.written);
    EXPECT_EQ(Written(Message(untouched)), test.written);
    SideBySide parsers;
    EXPECT_EQ(parsers.Check(test.text), "");
    EXPECT_EQ(Written(parsers.copying), test.written);
    EXPECT_EQ(parsers.document.nCursor, test.nCursor);
  }
}

TEST(JsonParser, ReadsNoMoreThanItsLength) {
  Message message;
  EXPECT_FALSE(message.Parse("[1]", 2));
  EXPECT_TRUE(message.Parse("[1]]", 3));
  EXPECT_TRUE(message.Parse("[1,\0002]", -1));
  std::string strText = "[ 7 ]";
  Message inPlace(true);
  EXPECT_TRUE(inPlace.Parse(strText.data(), -1));
  EXPECT_EQ(inPlace.pEnd, strText.data() + 5);
  // Without a text nothing changes.
  EXPECT_FALSE(message.Parse(nullptr, 3));
  EXPECT_FALSE(message.Parse(nullptr));
  EXPECT_FALSE(message.Parse("{}", 0));
  EXPECT_EQ(Written(message), "[1]");
}

// Over random documents and over what becomes of them when bytes are changed, lost or repeated.
// Each follows from its own seed, which a failure prints.
TEST(JsonParserDifferential, AgreesWithThePlainParser) {
  static constexpr std::pair<Kind, int> kKinds[] = {{Kind::kRows, 60000},
                                                    {Kind::kPrettyRows, 30000},
                                                    {Kind::kStrings, 60000},
                                                    {Kind::kMixed, 50000},
                                                    {Kind::kDeep, 500}};
  for (const auto& [kind, nDocuments] : kKinds) {
    std::unique_ptr<SideBySide> pParsers;
    int nAccepted = 0;
    int nChecked = 0;
    for (int i = 0; i < nDocuments; i += Support::kStride, ++nChecked) {
      // A message parses 200 documents, so what earlier ones left in it takes part in the test.
      if (nChecked % 200 == 0) pParsers = std::make_unique<SideBySide>();
      Author author(static_cast<std::uint64_t>(kind) << 32 | static_cast<unsigned>(i));
      std::string strText = author.Document(kind);
      for (std::size_t n = author.random.Below(4); n > 0; --n)
        author.Damage(strText);
      ASSERT_EQ(pParsers->Check(strText), "")
          << "document " << i << ": " << Plain::Printable(strText);
      nAccepted += pParsers->document.bAccepted ? 1 : 0;
    }
    EXPECT_TRUE(nAccepted >= nChecked / 10 && nAccepted < nChecked / 10 * 9) << "both answers";
  }
}

// Every document cut off after each of its bytes, and with a NUL or a missing byte at each place.
TEST(JsonParserDifferential, AgreesWhereverATextBreaksOff) {
  static constexpr std::string_view kTexts[] = {
      R"({"rows":[{"id":12,"name":"one","ok":true},{"id":-3.5e7,"name":"t\u0077o","ok":null}]})",
      R"([{"column_of_15_by":1,"column_of_16_byt":2},{"column_of_15_by":3,"column_of_16_byt":4}])",
      "[\r\n\t{ \"a\" : [ 1 , , 2.5 ] ,\f\"b\" : { } } , [ ] , false ]\n",
      R"(["0123456789abcdef0123456789abcdef","0123456789abc\u20ac\uD83D\n\\\"/","",""])",
      R"([[[[{"":{"a":{"a":[+1,-0,1e+5]}}}]]],{"a":1,"a":2,"b":3,"a":4},nulltail])",
      "[{\"a\":1},{\"a\":2},{\"a\":3}         \n                      ,         {\"b\":1}]",
  };
  SideBySide parsers;
  for (const std::string_view text : kTexts) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      std::string strCut(text.substr(0, i + 1));
      std::string strNul(text);
      std::string strLess(text);
      strNul[i] = '\0';
      strLess.erase(i, 1);
      for (const std::string& strText : {strCut, strNul, strLess}) {
        ASSERT_EQ(parsers.Check(strText), "") << Plain::Printable(strText);
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
      {Parser::ParseNumber, "-1e5 ", 4, "-1e5", 4},
      {Parser::ParseNumber, "12", 3, "1", 1},
      {Parser::ParseNumber, "x", -1, "", 0},
      {Parser::ParseBoolean, "truex", 2, "true", 4},
      {Parser::ParseBoolean, "fals", -1, "", 0},
      {Parser::ParseBoolean, "null", -1, "", 0},
      {Parser::ParseNull, "null", 1, "null", 4},
      {Parser::ParseNull, "true", -1, "", 0},
      {Parser::ParseString, R"("a\tb")", 5, "a\tb", 6},
      {Parser::ParseString, "\"ab", -1, "", 1},
      {Parser::ParseString, "12", -1, "", 0},
      {Parser::ParseNumber, "\"1\"", -1, "", 0},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.text);
    GuardedBuffer text(test.text);
    JSON::ParseContext context = Support::Context(text.data(), text.view().size());
    JSON::UnsafeJSONValue value;
    const std::size_t nLive = CountedMemory::Live();
    value.InternalUpdateValue("owned");  // until there is a new text
    EXPECT_EQ(test.step(context, value), test.nResult);
    EXPECT_EQ(value.eType, test.nResult);
    EXPECT_EQ(context.pCursor - context.pStart, test.nCursor);
    const std::string_view got(value.pText, static_cast<std::size_t>(value.nLength));
    EXPECT_EQ(got, test.nResult > 0 ? test.value : "owned");
    EXPECT_TRUE(test.nResult != 5 || value.pText[value.nLength] == '\0');
    EXPECT_EQ(value.bOwnsText, test.nResult < 0);
    if (value.bOwnsText) delete[] value.pText;
    EXPECT_EQ(CountedMemory::Live(), nLive);
  }
}

}  // namespace
