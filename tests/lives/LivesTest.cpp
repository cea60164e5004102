// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Whole lives of objects, each step compared with a model in standard containers, and the memory
// with what the contents need. A failure names the seed, and the last steps that were taken.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
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

// Valgrind knows better what was never written, and is slow.
bool UnderMemcheck() {
  const char* const szPreload = std::getenv("LD_PRELOAD");
  return szPreload != nullptr && std::strstr(szPreload, "vgpreload") != nullptr;
}

class Lives : public testing::TestWithParam<Case> {};

TEST_P(Lives, AgreeWithTheirModels) {
  const Case& one = GetParam();
  const unsigned nSeeds = UnderMemcheck() ? 1 + one.nSeeds / 20 : one.nSeeds;
  if (!UnderMemcheck()) CountedMemory::FillWithPatterns();
  for (unsigned nSeed = 1; nSeed <= nSeeds; ++nSeed) {
    for (std::size_t n = one.nFirstProfile; n < one.nFirstProfile + one.nProfiles; ++n) {
      const std::string strTitle =
          "profile " + std::to_string(n) + ", seed " + std::to_string(nSeed);
      LifePlayer player(n, Support::Random(nSeed), strTitle);
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
