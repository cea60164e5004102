// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The operations on sixteen bytes, held against one byte at a time. The program test_nosimd runs
// this with the plain version.

#include "text/Block.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(Block16, MarksEachByteOfItsKind) {
  Support::Random random(1);
  for (const Mask& mask : kMasks) {
    SCOPED_TRACE(mask.szName);
    for (int c = 0; c < 256; ++c) {
      std::string strBlock(Block16::kBytes, static_cast<char>(c));
      std::uint32_t nExpected = 0;
      for (unsigned i = 0; i < strBlock.size(); ++i) {
        if (random.OneIn(2)) strBlock[i] = static_cast<char>(random.Below(256));
        nExpected |= static_cast<std::uint32_t>(mask.isIn(strBlock[i])) << i;
      }
      ASSERT_EQ(mask.mask(Block16::Load(strBlock.data())), nExpected) << c;
      std::string strOther = strBlock;
      strOther[static_cast<std::size_t>(c % 16)] ^= 1;
      ASSERT_EQ(Block16::Load(strBlock.data()).Equals(Block16::Load(strOther.data())),
                0xFFFFu & ~(1u << c % 16));
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
