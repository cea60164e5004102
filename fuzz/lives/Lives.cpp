// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Whole lives of objects. Input: a byte that picks a profile without the largest sizes, then the
// choices of a LifePlayer. After each step the object must be what its model in standard containers
// is, and in the end all memory is back.

#include "tests/support/lives/LifePlayer.h"

#include "fuzz/common/Fuzz.h"

using Support::LifePlayer;

void Fuzz::Run(std::string_view input) {
  if (input.empty()) return;
  const auto nProfile = static_cast<unsigned char>(input[0]) % (LifePlayer::kProfiles - 1) + 1;
  LifePlayer player(nProfile, Support::Random(input.substr(1)));
  while (!player.UsedUp())
    ExpectNone(player.Step());
  ExpectNone(player.End());
}
