// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The default portability layer: strict UTF-8, both ways.

#include "portable/CPortable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "tests/support/GuardedBuffer.h"

namespace {

std::optional<std::wstring> Decode(const std::string& text) {
  static Support::GuardedBuffer bytes(1 << 23);  // nothing can be read behind the text
  const auto nBytes = static_cast<unsigned int>(text.size());
  const std::unique_ptr<wchar_t[]> wide(CPortable::mbstowcs(bytes.Place(text), nBytes));
  return wide == nullptr ? std::nullopt : std::optional<std::wstring>(wide.get());
}

std::optional<std::string> Encode(const std::wstring& text) {
  const auto nCharacters = static_cast<unsigned int>(text.size());
  const std::unique_ptr<char[]> bytes(CPortable::wcstombs(text.c_str(), nCharacters));
  return bytes == nullptr ? std::nullopt : std::optional<std::string>(bytes.get());
}

// The Unicode standard's table of well-formed byte sequences: a lead byte allows a range of second
// bytes; all further bytes lie between 80 and BF.
bool IsOneWellFormedSequence(const std::string& text) {
  // The lead byte's range, that of the second byte, and how many there are.
  static const unsigned char kRows[][5] = {
      {0x01, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
  const auto in = [&](std::size_t i, int nFirst, int nLast) {
    const int nByte = i < text.size() ? static_cast<unsigned char>(text[i]) : nFirst;
    return nByte >= nFirst && nByte <= nLast;
  };
  return std::any_of(std::begin(kRows), std::end(kRows), [&](const auto& row) {
    return text.size() == row[4] && in(0, row[0], row[1]) && in(1, row[2], row[3]) &&
           in(2, 0x80, 0xBF) && in(3, 0x80, 0xBF);
  });
}

TEST(DefaultPortability, AcceptsExactlyTheWellFormedSequences) {
  constexpr char szSecond[] = "\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0";
  constexpr char szFurther[] = "\x7F\x80\xBF\xC0";
  int nAccepted = 0;
  for (int nChoice = 256; nChoice < 256 * 8 * 4 * 4; ++nChoice) {
    const char bytes[] = {static_cast<char>(nChoice % 255 + 1), szSecond[nChoice / 256 % 8],
                          szFurther[nChoice / 2048 % 4], szFurther[nChoice / 8192]};
    for (std::size_t nBytes = 1; nBytes <= sizeof bytes; ++nBytes) {
      const std::string text(bytes, nBytes);
      const auto wide = Decode(text);
      const bool bOneCharacter = wide.has_value() && wide->size() == 1;
      ASSERT_EQ(bOneCharacter, IsOneWellFormedSequence(text)) << nChoice << ' ' << nBytes;
      if (wide.has_value()) {
        ASSERT_EQ(Encode(*wide), text);
        ++nAccepted;
      }
    }
  }
  EXPECT_GT(nAccepted, 1000);
}

TEST(DefaultPortability, BringsEveryCodePointThereAndBack) {
  EXPECT_EQ(Decode("a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
            std::wstring(L"a\x7F\x80\x7FF\x800\xFFFF\x10000\x10FFFF"));
  std::wstring all;
  for (int nCode = 1; nCode <= 0x10FFFF; ++nCode) {
    if (nCode < 0xD800 || nCode > 0xDFFF) all += static_cast<wchar_t>(nCode);
  }
  const auto text = Encode(all);
  ASSERT_TRUE(text.has_value());
  EXPECT_EQ(Decode(*text), all);
  for (const long lCode : {0xD800L, 0xDBFFL, 0xDC00L, 0xDFFFL, 0x110000L, 0x7FFFFFFFL, -1L}) {
    EXPECT_EQ(Encode(L"good" + std::wstring(1, static_cast<wchar_t>(lCode))), std::nullopt);
  }
}

TEST(DefaultPortability, ConvertsNulBytesAndTheEmptyText) {
  const std::unique_ptr<wchar_t[]> wide(CPortable::mbstowcs("a\0b", 3));
  EXPECT_EQ(std::wstring(wide.get(), 4), std::wstring(L"a\0b\0", 4));
  const std::unique_ptr<char[]> bytes(CPortable::wcstombs(L"a\0b", 3));
  EXPECT_EQ(std::string(bytes.get(), 4), std::string("a\0b\0", 4));
  EXPECT_EQ(Decode(""), L"");
  EXPECT_EQ(Encode(L""), "");
  const std::unique_ptr<wchar_t[]> none(CPortable::mbstowcs(nullptr, 0));
  EXPECT_EQ(none[0], L'\0');
}

}  // namespace
