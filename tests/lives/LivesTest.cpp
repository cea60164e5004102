// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Whole lives of objects, each step compared with a model in standard containers, and the memory
// with what the contents need. A failure names the seed, and the last steps that were taken.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/lives/LifePlayer.h"

namespace {

using Support::kStride;
using Support::LifePlayer;

struct Case {
  const char* szName;
  std::size_t nFirstProfile;
  std::size_t nProfiles;
  unsigned nSeeds;
  int nSteps;
};

class Lives : public testing::TestWithParam<Case> {};

TEST_P(Lives, AgreeWithTheirModels) {
  CountedMemory::FillWithPatterns();
  const Case& one = GetParam();
  for (unsigned nSeed = 1; nSeed <= one.nSeeds; ++nSeed) {
    for (std::size_t n = one.nFirstProfile; n < one.nFirstProfile + one.nProfiles; ++n) {
      SCOPED_TRACE("profile " + std::to_string(n) + ", seed " + std::to_string(nSeed));
      LifePlayer player(n, Support::Random(nSeed));
      for (int i = 0; i < one.nSteps; ++i)
        ASSERT_EQ(player.Step(), "");
      ASSERT_EQ(player.End(), "");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, Lives,
                         testing::Values(Case{"All", 0, 1, 10 / kStride, 600},
                                         Case{"AllOfSmallerSizes", 1, 1, 50 / kStride, 500},
                                         Case{"Documents", 2, 1, 60 / kStride, 500},
                                         Case{"RecordSets", 3, 8, 30 / kStride, 1200}),
                         [](const auto& test) { return std::string(test.param.szName); });

}  // namespace
