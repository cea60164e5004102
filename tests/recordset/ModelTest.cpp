// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The record set beside a model that is nothing but nested maps, through long random sequences of
// everything a host can do.

#include <gtest/gtest.h>

#include "tests/support/CellPlayer.h"

namespace {

TEST(RecordSet, DoesWhatNestedMapsWouldDo) {
  for (unsigned nSeed = 0; nSeed < 30 / Support::kStride; ++nSeed) {
    for (std::size_t nProfile = 0; nProfile < Support::CellPlayer::kProfileCount; ++nProfile) {
      SCOPED_TRACE("profile " + std::to_string(nProfile) + ", seed " + std::to_string(nSeed));
      const auto pPlayer = Support::CellPlayer::Make(nProfile, Support::Random(nSeed));
      for (int i = 0; i < 1200; ++i)
        ASSERT_EQ(pPlayer->Step(), "") << "step " << i;
      ASSERT_EQ(pPlayer->CheckAll(), "");
    }
  }
}

}  // namespace
