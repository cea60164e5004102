// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Whole lives of objects, each step compared with a model in standard containers. A failure names
// the seed, and the last steps that were taken.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/lives/LifePlayer.h"

namespace {

// Valgrind knows better what was never written, and is slow.
bool UnderMemcheck() {
  const char* const szPreload = std::getenv("LD_PRELOAD");
  return szPreload != nullptr && std::strstr(szPreload, "vgpreload") != nullptr;
}

void Play(std::size_t nProfile, unsigned nSeeds, int nSteps) {
  nSeeds = UnderMemcheck() ? 1 + nSeeds / 20 : nSeeds;
  if (!UnderMemcheck()) CountedMemory::FillWithPatterns();
  for (unsigned nSeed = 1; nSeed <= nSeeds; ++nSeed) {
    const std::string strTitle =
        "profile " + std::to_string(nProfile) + ", seed " + std::to_string(nSeed);
    Support::LifePlayer player(nProfile, Support::Random(nSeed), strTitle);
    for (int i = 0; i < nSteps; ++i)
      ASSERT_EQ(player.Step(), "");
    ASSERT_EQ(player.End(), "");
  }
}

TEST(Lives, OfAllKindsAgreeWithTheirModels) { Play(0, 10 / Support::kStride, 600); }
TEST(Lives, OfSmallerSizesAgreeWithTheirModels) { Play(1, 50 / Support::kStride, 500); }
TEST(Lives, OfDocumentsAgreeWithTheirModels) { Play(2, 60 / Support::kStride, 500); }
TEST(Lives, OfRecordSetsAgreeWithTheirModels) {
  for (std::size_t n = 3; n < Support::LifePlayer::kProfiles; ++n)
    Play(n, 30 / Support::kStride, 1200);
}

}  // namespace
