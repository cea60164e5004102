// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::LifePlayer plays whole lives: objects of all public kinds are made, go through any steps
// that a host can take, from one size to a very different one, exchange what they hold, and die.
// After each step the object is compared with its model, and now and then the memory in use with
// what the contents need. Choices come from a seed or from a fuzzer.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/lives/Life.h"

namespace Support {

class LifePlayer {
 public:
  // Profile 0 is everything at once, with large sizes; 1 the same with sizes up to some blocks; 2
  // two messages with small ones; from 3 on there is one record set of each arrangement.
  static constexpr std::size_t kProfiles = 3 + kRecordSetProfiles;

  // The title is printed with the last steps.
  LifePlayer(std::size_t nProfile, const Random& choices, const std::string& strTitle = "");
  LifePlayer(const LifePlayer&) = delete;
  LifePlayer& operator=(const LifePlayer&) = delete;
  ~LifePlayer();

  // Takes a step. The first difference, with the last steps, or "".
  std::string Step();

  // Compares everything, ends all lives and expects all memory to be back. Nothing may follow.
  std::string End();

  // See Random::UsedUp.
  bool UsedUp() const { return world.random.UsedUp(); }

 private:
  struct Slot;
  void BeBorn(Slot& slot);
  std::string CheckMemory();
  std::string Told(const std::string& strFault) const;

  World world;
  std::vector<Slot> vSlots;
  std::size_t nLiveBefore;
  int nBorn = 0;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H
