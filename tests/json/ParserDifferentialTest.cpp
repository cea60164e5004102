// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The library's parser against the plain one of tests/support, over random documents and over what
// becomes of them when bytes are changed, lost or repeated. Each document follows from its own
// seed, which a failure prints.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/Author.h"
#include "tests/support/SideBySide.h"

namespace {

using Support::Author;
using Support::Kind;
using Support::SideBySide;

class JsonParserDifferential : public testing::TestWithParam<std::pair<Kind, int>> {};

TEST_P(JsonParserDifferential, AgreesWithThePlainParser) {
  const auto [kind, nDocuments] = GetParam();
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
    if (pParsers->document.bAccepted) ++nAccepted;
  }
  // Both answers are tested in earnest.
  EXPECT_GT(nAccepted, nChecked / 10);
  EXPECT_LT(nAccepted, nChecked / 10 * 9);
}

INSTANTIATE_TEST_SUITE_P(Documents, JsonParserDifferential,
                         testing::Values(std::pair(Kind::kRows, 60000),
                                         std::pair(Kind::kPrettyRows, 30000),
                                         std::pair(Kind::kStrings, 60000),
                                         std::pair(Kind::kMixed, 50000),
                                         std::pair(Kind::kDeep, 500)));

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

}  // namespace
