// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that is handed out by moving a pointer: how large its blocks become.

#include "recordset/BumpBlocks.h"

#include <gtest/gtest.h>

namespace {

using recordset::BumpBlocks;

// The size of a block is computed from figures whose product has more than 32 bits.
TEST(BumpBlocks, GrowWithTheWorkThatIsLeft) {
  BumpBlocks blocks(nullptr, 0);
  constexpr BumpBlocks::Progress progress{1, 7};
  blocks.Follow(&progress);
  blocks.Allocate(std::size_t{720} << 20);
  blocks.Allocate(1);
  EXPECT_GT(blocks.Room(), std::size_t{100} << 10);
}

}  // namespace
