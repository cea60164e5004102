// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that is handed out by moving a pointer: pieces lie side by side and do not overlap, and
// blocks are kept for one time.

#include "memory/BumpBlocks.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace {

using memory::BumpBlocks;

TEST(BumpBlocks, GiveEachPieceItsOwnBytes) {
  char aOwn[64 + BumpBlocks::kSlack];
  BumpBlocks blocks(aOwn, 64);
  EXPECT_EQ(blocks.Allocate(8), aOwn);
  EXPECT_EQ(blocks.Allocate(8), aOwn + 8) << "right behind the piece before";
  EXPECT_FALSE(blocks.ExtendLast(aOwn + 8, 1)) << "not the last piece";
  EXPECT_FALSE(blocks.ExtendLast(aOwn + 16, 49)) << "no room";
  EXPECT_TRUE(blocks.ExtendLast(aOwn + 16, 48));
  EXPECT_FALSE(blocks.ShrinkLast(aOwn + 8, 8)) << "not the last piece";
  EXPECT_TRUE(blocks.ShrinkLast(aOwn + 64, 48));
  EXPECT_EQ(blocks.Room(), 48u);
  EXPECT_EQ(blocks.Footprint(), 0u) << "no block was needed";

  Support::Random random(1);
  for (int nTime = 0; nTime < 4; ++nTime) {
    std::vector<std::pair<char*, std::size_t>> vPieces;
    for (int i = 0; i < 2000; ++i) {
      const std::size_t nSize =
          random.OneIn(3) ? 1000 : random.Below(random.OneIn(50) ? 90000 : 300);
      char* const p = blocks.Allocate(nSize);
      std::memset(p, i % 256, nSize + BumpBlocks::kSlack);  // the last piece, and the slack
      vPieces.emplace_back(p, nSize);
    }
    for (std::size_t i = 0; i < vPieces.size(); ++i) {
      const auto& [p, nSize] = vPieces[i];
      ASSERT_EQ(std::string(p, nSize), std::string(nSize, static_cast<char>(i % 256))) << i;
    }
    blocks.Reset();
  }
}

TEST(BumpBlocks, KeepTheirBlocksForOneTime) {
  const std::size_t nBefore = CountedMemory::Live();
  BumpBlocks blocks(nullptr, 0);
  const auto fill = [&blocks](std::size_t nPieces) {
    for (std::size_t i = 0; i < nPieces; ++i) {
      blocks.Allocate(1000);
    }
  };
  fill(1000);
  const std::size_t nFull = CountedMemory::Live() - nBefore;
  blocks.Reset();
  EXPECT_EQ(blocks.Footprint(), 0u);
  fill(1000);
  EXPECT_EQ(CountedMemory::Live() - nBefore, nFull) << "the same blocks again";
  blocks.Reset();
  fill(1);
  blocks.Reset();
  fill(1);
  EXPECT_LT(CountedMemory::Live() - nBefore, nFull / 2)
      << "what one time did not need is gone the next";
}

}  // namespace
