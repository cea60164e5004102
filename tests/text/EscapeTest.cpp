// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Escaping of string contents: the table of escapes, and all the ways in which long and short texts
// are cut into blocks, held against escaping byte by byte. Texts end at an unreadable page.

#include "text/Escape.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "json/JSONSerialize.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/PlainEscape.h"
#include "tests/support/Random.h"

namespace {

using namespace std::string_view_literals;

std::string Escaped(const char* text) {
  std::string strResult;
  JSON::EscapeString(strResult, text);
  return strResult;
}

TEST(Escape, FollowsTheTable) {
  EXPECT_EQ(Escaped("\"\\ \b\t\n\f\r \x01\x07\x0B\x0E\x1F /\x7F' \xC3\xA9\x80\xFF"),
            "\\\"\\\\ \\b\\t\\n\\f\\r \\u0001\\u0007\\u000b\\u000e\\u001f /\x7F' \xC3\xA9\x80\xFF");
}

// Every road to an escaped text, over the same source at the end of its page.
void ExpectAllEscape(const std::string& strText) {
  const std::string strExpected = Plain::Escape(strText);
  constexpr std::size_t kMaxText = 10000;
  static Support::GuardedBuffer source(kMaxText);
  static Support::GuardedBuffer target(JSON::EscapedRoom(kMaxText));
  source.Place(strText);
  const std::string_view text = source.view();

  std::string strView = "x";
  JSON::AppendEscaped(strView, text);
  ASSERT_EQ(strView, "x" + strExpected);

  JSON::Serialize writer(0);
  writer.OO().N(text).V(text).OC();
  ASSERT_EQ(writer.String(), "{\"" + strExpected + "\":\"" + strExpected + "\"}");

  // A copy may be thrown away, but it must keep to its place.
  target.Place(std::string(text.size(), '?'));
  const bool bPlain = strExpected == strText;
  ASSERT_EQ(JSON::IsPlain(text), bPlain);
  ASSERT_EQ(JSON::CopyPlain(text, target.data()), bPlain);
  ASSERT_TRUE(!bPlain || target.view() == strText);

  const std::string_view beforeNul = JSON::UpToNul(text);
  target.Place(std::string(JSON::EscapedRoom(beforeNul.size()), '?'));
  char* const pEnd = JSON::EscapeBytes(beforeNul, target.data());
  ASSERT_EQ(std::string(target.data(), pEnd), strExpected);

  source.Place(strText + '\0');
  ASSERT_EQ(Escaped(source.data()), strExpected);
}

TEST(Escape, FindsAByteAtEveryPlaceOfEveryLength) {
  for (std::size_t nLength = 0; nLength <= 70; ++nLength) {
    std::string strText(nLength, 'a');
    for (std::size_t i = 0; i < nLength; ++i)
      strText[i] = static_cast<char>('a' + i % 26);
    ASSERT_NO_FATAL_FAILURE(ExpectAllEscape(strText));
    for (std::size_t nAt = 0; nAt < nLength; ++nAt) {
      for (const char c : "\"\\\n\x01\x1F\x20\x7F\x80\xFF\0"sv) {
        std::string strOther = strText;
        strOther[nAt] = c;
        ASSERT_NO_FATAL_FAILURE(ExpectAllEscape(strOther)) << "byte " << nAt << " of " << strOther;
      }
    }
  }
}

TEST(Escape, EqualsThePlainWayOnRandomTexts) {
  Support::Random random(1);
  for (int i = 0; i < 1500; ++i) {
    const std::size_t nRarity = random.OneIn(3) ? 2 : 300;
    std::string strText(random.Below(random.OneIn(10) ? 9000 : 200), '\0');
    for (char& c : strText)
      c = static_cast<char>(random.OneIn(nRarity) ? 1 + random.Below(31) : ' ' + random.Below(224));
    if (!strText.empty() && random.OneIn(4)) strText[random.Below(strText.size())] = '\0';
    ASSERT_NO_FATAL_FAILURE(ExpectAllEscape(strText)) << "text " << i;
  }
}

}  // namespace
