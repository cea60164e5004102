// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::UpdatePlayer plays updates, copies and parses on two messages, one that copies its text
// and one that parses in place, and does the same to a model of each in standard containers.

#ifndef QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H
#define QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H

#include <memory>
#include <string>

#include "tests/support/Random.h"

namespace Support {

class UpdatePlayer {
 public:
  explicit UpdatePlayer(const Random& choices);
  ~UpdatePlayer();

  // Takes one step and compares the message it was about with its model: tree, lookups and text.
  // The first difference, or "".
  std::string Step();

  // See Random::UsedUp.
  bool UsedUp() const;

 private:
  class Player;
  std::unique_ptr<Player> pPlayer;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H
