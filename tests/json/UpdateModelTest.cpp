// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Long random sequences of updates, copies and parses on messages, each step compared with a model
// in standard containers. Nothing may leak: the sanitizer builds run this test too.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/UpdatePlayer.h"

namespace {

TEST(JsonUpdate, AgreesWithAModelOverLongSequences) {
  for (unsigned nSeed = 1; nSeed <= 60; ++nSeed) {
    Support::UpdatePlayer player{Support::Random(nSeed)};
    for (int i = 0; i < 500; ++i)
      ASSERT_EQ(player.Step(), "") << "seed " << nSeed << ", step " << i;
  }
}

}  // namespace
