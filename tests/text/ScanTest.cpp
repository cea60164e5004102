// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where things end in JSON text, held against looking at one byte after the other. Texts end at an
// unreadable page, and what is looked for stands at every place of every length around a block.

#include "text/Scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/GuardedBuffer.h"
#include "text/Grammar.h"
#include "text/IntegerText.h"

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMostBytes = 40;

const struct Search {
  const char* szName;
  char cPassed;
  std::string_view stops;
  const char* (*find)(const char* p, const char* pEnd);
} kSearches[] = {
    {"quote or backslash", 'a', "\"\\"sv,
     [](const char* p, const char* pEnd) { return JSON::FindQuoteOrBackslash(p, pEnd); }},
    {"quote, backslash or NUL", '\n', "\"\\\0"sv, JSON::FindTextStop},
    {"end of blanks", ' ', "a\v\0\x80"sv,
     [](const char* p, const char* pEnd) { return JSON::SkipSpaceRun(p, pEnd); }},
    {"end of other white space", '\n', "a\v\0\x80"sv,
     [](const char* p, const char* pEnd) { return JSON::SkipSpaceRun(p, pEnd); }},
};

TEST(Scan, FindsTheFirstStopAtEveryPlace) {
  Support::GuardedBuffer buffer(kMostBytes);
  for (const Search& search : kSearches) {
    SCOPED_TRACE(search.szName);
    for (std::size_t nLength = 0; nLength <= kMostBytes; ++nLength) {
      char* const p = buffer.Place(std::string(nLength, search.cPassed));
      ASSERT_EQ(search.find(p, p + nLength) - p, nLength);
      for (std::size_t nAt = 0; nAt < nLength; ++nAt) {
        std::string strText(nLength, search.cPassed);
        for (const char cStop : search.stops) {
          strText[nAt] = strText.back() = cStop;
          ASSERT_EQ(search.find(buffer.Place(strText), p + nLength) - p, nAt) << nLength;
        }
      }
    }
  }
}

// The last byte of a text is never part of a number.
TEST(Scan, EndsANumberAtTheFirstByteOfNone) {
  const std::string strMarks = "+-.eE";
  Support::GuardedBuffer buffer(kMostBytes);
  for (std::size_t nLength = 2; nLength <= kMostBytes; ++nLength) {
    for (std::size_t nAt = 1; nAt < nLength; ++nAt) {
      for (int c = 0; c < 256; ++c) {
        std::string strText(nLength, '5');
        strText[nAt] = static_cast<char>(c);
        char* const p = buffer.Place(strText);
        const bool bMark = strMarks.find(strText[nAt]) != std::string::npos;
        const bool bPassed = bMark || (c >= '0' && c <= '9');
        bool bReal = false;
        ASSERT_EQ(JSON::ScanNumber(p, p + nLength, bReal) - p, bPassed ? nLength - 1 : nAt)
            << strText;
        ASSERT_EQ(bReal, bMark && c != '+' && c != '-' && nAt != nLength - 1) << strText;
      }
    }
  }
}

TEST(Scan, TakesLiteralsAsPrefixes) {
  const std::pair<std::string_view, int> kCases[] = {
      {"true", 4}, {"false", 5}, {"null", 4},   {"truex", 4},  {"nulls and more", 4},
      {"tru", -1}, {"fals", -1}, {"falsy", -1}, {"nul\0", -1}, {"True", -1},
      {"n", -1},   {"", -1},     {"trve, ", -1}};
  for (const auto& [text, nBytes] : kCases) {
    Support::GuardedBuffer buffer(text);
    const JSON::Text<char> read(buffer.data() + text.size(), 1);
    const char* const pEnd = JSON::FindLiteral(read.Limits(), buffer.data());
    EXPECT_EQ(pEnd != nullptr ? pEnd - buffer.data() : -1, nBytes) << text;
  }
}

// What stands between the quotes, and what it becomes; nothing where the text ends first.
const std::pair<std::string_view, const char*> kEscapes[] = {
    {R"(\b\f\n\r\t\"\\\/\x")", "\b\f\n\r\t\"\\/x"},
    {R"(\u0041\u00e9\u20AC\ud83d")", "A\xC3\xA9\xE2\x82\xAC\xED\xA0\xBD"},
    {R"(\\a run that is longer than a block of bytes\n")",
     "\\a run that is longer than a block of bytes\n"},
    {R"(\u+1a \u0x1f \u zz more")", "\x1A\x1F ?more"},
    {R"(\u00)", nullptr},
    {R"(\n no end)", nullptr},
    {R"(\)", nullptr},
    {R"(\")", nullptr},
};

TEST(Scan, UnescapesInPlaceUpToTheQuote) {
  for (const auto& [text, szContent] : kEscapes) {
    SCOPED_TRACE(text);
    Support::GuardedBuffer buffer(text);
    char* const p = buffer.data();
    const char* const pEnd = p + buffer.size();
    const char* const pClosing = JSON::FindStringEnd(p, pEnd);
    EXPECT_EQ(pClosing, szContent != nullptr ? pEnd - 1 : nullptr);
    char* pWrite = p;
    EXPECT_EQ(JSON::Unescape(p, pEnd, pWrite), pClosing);
    std::string strContent(p, pWrite);
    std::replace(strContent.begin(), strContent.end(), '\0', '?');
    EXPECT_EQ(szContent != nullptr ? strContent : "", szContent != nullptr ? szContent : "");
  }
}

TEST(IntegerText, IsCanonicalAsTheLibraryWritesIt) {
  std::istringstream texts(
      "0 7 -7 123456789 -123456789 | - -0 00 01 -01 +1 1.0 1e3 --1 1- 1234567890123456 "
      "-12345678901234567890");
  bool bCanonical = true;
  for (std::string strText; texts >> strText;) {
    const std::string strBlock = strText + ",               ";
    if (strText == "|") bCanonical = false;
    const unsigned nLength = JSON::CanonicalLength(strBlock.data());
    EXPECT_EQ(nLength == strText.size(), bCanonical) << strText;
  }
  EXPECT_EQ(JSON::CanonicalLength(",               "), 0u);
}

}  // namespace
