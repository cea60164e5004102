// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A name that is expected in a text: it is found where it stands with its quote (and its colon), at
// every length, and nowhere else; and nothing behind the end of the text is read.

#include "text/ExpectedName.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/GuardedBuffer.h"

namespace {

using JSON::ExpectedName;

TEST(ExpectedName, IsFoundAsItStandsAndNotOtherwise) {
  constexpr std::size_t kBlock = JSON::Block16::kBytes;
  Support::GuardedBuffer buffer(100);
  for (std::size_t nLength = 0; nLength <= 40; ++nLength) {
    SCOPED_TRACE(nLength);
    std::string strName;
    for (std::size_t i = 0; i < nLength; ++i) {
      strName += static_cast<char>('a' + i % 26);
    }
    const ExpectedName name(strName.data(), nLength);
    // With one byte of the name, the quote or the colon changed; the last time with none.
    const std::string strMember = strName + "\":";
    for (std::size_t nChanged = 0; nChanged <= strMember.size(); ++nChanged) {
      std::string strText = strMember + std::string(kBlock + 1, '5');
      if (nChanged < strMember.size()) strText[nChanged] ^= 1;
      const char* const p = buffer.Place(strText);
      const char* const pEnd = p + strText.size();
      EXPECT_EQ(name.Matches(p, pEnd), nChanged > nLength) << nChanged;
      EXPECT_EQ(name.MatchesMember(p, pEnd), nChanged > nLength + 1) << nChanged;
    }
    // With ever less behind it: what is found then has to be there, and needs not be found.
    for (std::string strText = strMember + "55555"; strText.size() >= kBlock; strText.pop_back()) {
      const char* const p = buffer.Place(strText);
      const char* const pEnd = p + strText.size();
      EXPECT_TRUE(!name.Matches(p, pEnd) || strText.size() > nLength) << strText;
      EXPECT_TRUE(!name.MatchesMember(p, pEnd) || strText.size() > nLength + 1) << strText;
    }
    for (std::size_t i = 0; i < nLength; ++i) {
      std::string strEscaped = strName;
      strEscaped[i] = i % 2 != 0 ? '"' : '\\';
      const ExpectedName escaped(strEscaped.data(), nLength);
      const char* const p = buffer.Place(strEscaped + "\":" + std::string(kBlock + 1, '5'));
      EXPECT_FALSE(escaped.Matches(p, p + buffer.size())) << i;
      EXPECT_FALSE(escaped.MatchesMember(p, p + buffer.size())) << i;
    }
  }
}

}  // namespace
