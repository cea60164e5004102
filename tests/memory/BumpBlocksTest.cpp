// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that is handed out by moving a pointer: pieces lie side by side and do not overlap, and
// blocks are kept for one time.

#include "memory/BumpBlocks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
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
  const auto used = [&](std::size_t nPieces) {
    blocks.Reset();
    EXPECT_EQ(blocks.Footprint(), 0u);
    for (std::size_t i = 0; i < nPieces; ++i)
      blocks.Allocate(1000);
    return CountedMemory::Live() - nBefore;
  };
  const std::size_t nFull = used(1000);
  EXPECT_EQ(used(1000), nFull) << "the same blocks again";
  used(1);
  EXPECT_LT(used(1), nFull / 2) << "what one time did not need is gone the next";
  used(1000);
  blocks.Reset();
  constexpr std::size_t kLarge = (std::size_t{1} << 21) - 4096;  // no kept block will do
  blocks.Allocate(kLarge);
  EXPECT_LT(CountedMemory::Live() - nBefore, kLarge + nFull / 2) << "the others have gone";
}

// Where there is no room for what a block usually has, there may be for what is needed.
TEST(BumpBlocks, AskForLessWhenMemoryRunsOut) {
  BumpBlocks blocks(nullptr, 0);
  for (int i = 0; i < 1000; ++i)
    blocks.Allocate(1000);
  CountedMemory::FailAbove(20000);
  for (int i = 0; i < 100; ++i)
    EXPECT_NE(blocks.Allocate(10000), nullptr);
  EXPECT_TRUE(CountedMemory::StopFailing());
  EXPECT_THROW(blocks.Allocate(SIZE_MAX - 8), std::bad_alloc);
}

}  // namespace
