// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The storage of texts: every length, texts replaced by themselves and by each other, and bounded
// memory. BumpBlocks and the short byte runs below it are tested here and through it.

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "recordset/BumpBlocks.h"
#include "recordset/ShortBytes.h"
#include "recordset/TextStore.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

namespace {

using recordset::BumpBlocks;
using recordset::TextStore;

std::string Pattern(std::size_t length, unsigned nSeed) {
  std::string text(length, ' ');
  for (std::size_t i = 0; i < length; ++i) {
    text[i] = static_cast<char>('0' + (i * 7 + nSeed) % 70);
  }
  return text;
}

TEST(ShortBytes, StayWithinTheirRunAtEveryLength) {
  const std::string strBytes = Pattern(40, 3);
  Support::GuardedBuffer buffer(64);
  for (std::size_t n = 0; n <= strBytes.size(); ++n) {
    SCOPED_TRACE(n);
    char* const p = buffer.Place(std::string(n, '-'));
    recordset::MoveBytes(p, strBytes.data(), n);
    EXPECT_EQ(buffer.view(), strBytes.substr(0, n));
    EXPECT_TRUE(recordset::SameBytes(p, strBytes.data(), n));
    for (std::size_t i = 0; i < n; ++i) {
      p[i] ^= 1;
      EXPECT_FALSE(recordset::SameBytes(p, strBytes.data(), n)) << i;
      p[i] ^= 1;
    }
    for (std::size_t nShift = 1; nShift < 3 && nShift < n; ++nShift) {
      std::string strMoved = strBytes.substr(0, n);
      recordset::MoveBytes(strMoved.data(), strMoved.data() + nShift, n - nShift);
      EXPECT_EQ(strMoved.substr(0, n - nShift), strBytes.substr(nShift, n - nShift));
    }
  }
}

TEST(BumpBlocks, ResizesTheLastPieceAndNoOther) {
  char own[64];
  BumpBlocks blocks(own, sizeof own);
  char* const pFirst = blocks.Allocate(16);
  char* const pSecond = blocks.Allocate(16);
  EXPECT_EQ(pFirst, own);
  EXPECT_EQ(pSecond, own + 16);
  EXPECT_FALSE(blocks.ExtendLast(pFirst + 16, 8));
  EXPECT_FALSE(blocks.ShrinkLast(pFirst + 16, 8));
  EXPECT_TRUE(blocks.ExtendLast(pSecond + 16, 32));
  EXPECT_FALSE(blocks.ExtendLast(pSecond + 48, 1)) << "beyond the block";
  EXPECT_TRUE(blocks.ShrinkLast(pSecond + 48, 40));
  EXPECT_EQ(blocks.Allocate(40), own + 24);
  EXPECT_EQ(blocks.Footprint(), 0u);

  char* const pLarge = blocks.Allocate(100000);
  std::memset(pLarge, 'x', 100000);
  char* const pSmall = blocks.Allocate(8);
  EXPECT_GT(blocks.Footprint(), 100000u);
  EXPECT_LT(blocks.Footprint(), 130000u);
  std::memset(pSmall, 'y', 8);
  blocks.Reset();
  EXPECT_EQ(blocks.Footprint(), 0u);
  EXPECT_EQ(blocks.Allocate(8), own);
  EXPECT_EQ(blocks.Allocate(60), pSmall) << "the newest block is kept and comes first";
  EXPECT_EQ(blocks.Allocate(100000), pLarge) << "then the one before it";
}

// Stores, replaces and releases texts of all sizes; none may disturb another or move.
TEST(TextStore, KeepsEveryTextInPlaceAndIntact) {
  TextStore store;
  Support::Random random(1);
  struct Text {
    const char* pText;
    std::string strExpected;
  };
  std::vector<Text> vTexts;
  for (unsigned i = 0; i < 20000; ++i) {
    const std::size_t nBound = random.OneIn(20) ? 600 : 40;
    const std::string text = Pattern(random.Below(nBound), i);
    const std::size_t nVictim = vTexts.empty() ? 0 : random.Below(vTexts.size());
    if (vTexts.size() < 300) {
      vTexts.push_back({store.Store(text.data(), text.size()), text});
    } else if (random.OneIn(3)) {
      Text& victim = vTexts[nVictim];
      store.Release(victim.pText, victim.strExpected.size());
      victim = vTexts.back();
      vTexts.pop_back();
    } else {
      // From another text of the store, or from its own tail.
      Text& victim = vTexts[nVictim];
      const Text& source = random.OneIn(2) ? victim : vTexts[random.Below(vTexts.size())];
      const std::size_t nSkip = random.Below(source.strExpected.size() + 1);
      const std::string strNew = source.strExpected.substr(nSkip);
      victim.pText = store.Replace(victim.pText, victim.strExpected.size(), source.pText + nSkip,
                                   strNew.size());
      victim.strExpected = strNew;
    }
    if (i % 100 != 0) continue;
    for (const Text& stored : vTexts) {
      ASSERT_STREQ(stored.pText, stored.strExpected.c_str());
    }
  }
}

TEST(TextStore, SharesConstantsAndReusesPieces) {
  TextStore store;
  TextStore other;
  for (const char* text : {"", "0", "1"})
    EXPECT_EQ(store.Store(text, std::strlen(text)), other.Store(text, std::strlen(text)));
  EXPECT_EQ(store.Footprint(), 0u);
  const char* const pText = store.Store("abcde", 5);
  store.Store("another", 7);
  EXPECT_EQ(store.Replace(pText, 5, "fghijkl", 7), pText);
  EXPECT_NE(store.Replace(pText, 7, "fghijklm", 8), pText);
  EXPECT_EQ(store.Store("again", 5), pText) << "the released piece is taken first";
  EXPECT_THROW(store.Allocate(TextStore::kLongest + 1), std::bad_alloc);
}

}  // namespace
