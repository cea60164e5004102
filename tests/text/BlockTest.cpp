// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The operations on sixteen bytes, held against one byte at a time. The program test_nosimd runs
// this with the plain version.

#include "text/Block.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

namespace {

using JSON::Block16;

const struct Mask {
  const char* szName;
  std::uint32_t (*mask)(Block16);
  bool (*isIn)(char);
} kMasks[] = {
    {"equal", [](Block16 b) { return b.Equals('5'); }, [](char c) { return c == '5'; }},
    {"quote or backslash", [](Block16 b) { return b.QuoteOrBackslash(); },
     [](char c) { return c == '"' || c == '\\'; }},
    {"quote, backslash or NUL", [](Block16 b) { return b.QuoteBackslashOrNul(); },
     [](char c) { return c == '"' || c == '\\' || c == '\0'; }},
    {"needs escape", [](Block16 b) { return b.NeedsEscape(); },
     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }},
    {"no digit", [](Block16 b) { return b.NonDigits(); },
     [](char c) { return c < '0' || c > '9'; }},
};

// Every byte at every place, among random others.
TEST(Block16, MarksEachByteOfItsKind) {
  Support::Random random(1);
  for (const Mask& mask : kMasks) {
    SCOPED_TRACE(mask.szName);
    for (unsigned nCase = 0; nCase < 256 * 16; ++nCase) {
      const unsigned nPlace = nCase % 16;
      const char c = static_cast<char>(nCase / 16);
      std::string strBlock(Block16::kBytes, c);
      std::uint32_t nExpected = 0;
      for (unsigned i = 0; i < strBlock.size(); ++i) {
        if (i != nPlace && random.OneIn(2)) strBlock[i] = static_cast<char>(random.Below(256));
        nExpected |= static_cast<std::uint32_t>(mask.isIn(strBlock[i])) << i;
      }
      const Block16 block = Block16::Load(strBlock.data());
      ASSERT_EQ(mask.mask(block), nExpected) << nCase;
      if (nExpected != 0) {
        ASSERT_EQ(1u << JSON::LowestBit(nExpected), nExpected & (~nExpected + 1));
      }
      std::string strOther = strBlock;
      strOther[nPlace] = static_cast<char>(c ^ (1 << random.Below(8)));
      ASSERT_EQ(block.Equals(Block16::Load(strOther.data())), 0xFFFFu & ~(1u << nPlace)) << nCase;
      ASSERT_EQ(block.Equals(c) >> nPlace & 1, 1u) << nCase;
    }
  }
}

// The digits as the C library writes them, and each tail of them with zeros behind it.
TEST(Block16, WritesTheDigitsOfNumbersBelowTenToTheEighth) {
  Support::Random random(2);
  std::vector<std::uint32_t> values = {0, 99999999, 12345678, 10000, 9999, 99990000, 90909090};
  for (std::uint32_t n = 0; n < 10000; ++n)
    values.push_back(n * 10000 + (9999 - n));
  for (int i = 0; i < 20000; ++i)
    values.push_back(random.Below(100000000));
  Support::GuardedBuffer to(8);
  for (const std::uint32_t value : values) {
    char szDigits[16];
    std::snprintf(szDigits, sizeof szDigits, "%08u", static_cast<unsigned>(value));
    const Block16 digits = Block16::DecimalDigits(value);
    for (unsigned nSkip = 0; nSkip < 8; ++nSkip) {
      digits.StoreHalfFrom(nSkip, to.Place("--------"));
      ASSERT_EQ(to.view(), szDigits + nSkip + std::string(nSkip, '\0')) << value;
    }
  }
}

// A load and a store of each size, of bytes at the end of a page.
TEST(Block16, MovesWholesHalvesAndFirstBytes) {
  const std::string strBytes = "0123456789abcdef";
  Support::GuardedBuffer from(strBytes);
  Support::GuardedBuffer to(32);
  const char* const p = from.data();
  Block16::Load(p).Store(to.Place(std::string(16, '-')));
  EXPECT_EQ(to.view(), strBytes);
  char* q = to.Place(std::string(11, '-'));
  Block16::LoadHalves(p + 8, p + 3).StoreHalves(q, q + 3);
  EXPECT_EQ(to.view(), "89a3456789a");
  q = to.Place(std::string(7, '-'));
  Block16::LoadQuarters(p + 12, p + 3).StoreQuarters(q, q + 3);
  EXPECT_EQ(to.view(), "cde3456");
  for (std::size_t n = 0; n <= 16; ++n) {
    Block16::LoadFirst(p + 16 - n, n).Store(to.Place(std::string(16, '-')));
    EXPECT_EQ(to.view(), strBytes.substr(16 - n) + std::string(16 - n, '\0'));
  }
}

}  // namespace
