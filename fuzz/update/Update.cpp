// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Updates, copies and parses in any order. Input: the choices of an UpdatePlayer. After each step a
// document must be what its model in standard containers is: tree, lookups and text.

#include "fuzz/common/Fuzz.h"
#include "tests/support/UpdatePlayer.h"

void Fuzz::Run(std::string_view input) {
  Support::UpdatePlayer player{Support::Random(input)};
  while (!player.UsedUp())
    ExpectNone(player.Step());
}
