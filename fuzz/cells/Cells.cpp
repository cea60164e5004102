// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The cells of a record set. Input: a byte that picks an arrangement of rows and columns, then the
// choices of a CellPlayer. The record set must be what nested maps would be, also after copies,
// moves and loads.

#include "fuzz/common/Fuzz.h"
#include "tests/support/CellPlayer.h"

void Fuzz::Run(std::string_view input) {
  if (input.empty()) return;
  const auto nProfile = static_cast<unsigned char>(input[0]);
  const auto pPlayer = Support::CellPlayer::Make(nProfile, Support::Random(input.substr(1)));
  while (!pPlayer->UsedUp())
    ExpectNone(pPlayer->Step());
  ExpectNone(pPlayer->CheckAll());
}
