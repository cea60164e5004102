// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::LifePlayer plays whole lives: documents, containers and record sets are made, go through
// any steps that a host can take, from one size to a very different one, exchange what they hold,
// and die. After each step the object is compared with its model, and in the end all memory has to
// be back. Choices come from a seed or from a fuzzer.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H

#include <cstddef>
#include <functional>
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
  LifePlayer(std::size_t nProfile, const Random& choices, const std::string& strTitle = "")
      : world{choices,
              nProfile == 0   ? 100000U
              : nProfile == 1 ? 1300U
              : nProfile == 2 ? 20U
                              : 100U,
              Diary(strTitle)},
        nLiveBefore(CountedMemory::Live()) {
    using Kind = TreeKind;
    const CountedMemory::Aside aside;
    const auto add = [this](Slot slot) { vSlots.push_back(std::move(slot)); };
    for (const Kind kind : {Kind::kCopying, Kind::kInPlace, Kind::kCopying, Kind::kInPlace,
                            Kind::kObject, Kind::kArray, Kind::kHostObject, Kind::kHostArray}) {
      if (nProfile < 2 || (nProfile == 2 && vSlots.size() < 2))
        add({[this, kind] { return MakeTreeLife(world, kind); }});
    }
    const std::size_t n = nProfile < 3 ? world.random.Below(kRecordSetProfiles) : nProfile - 3;
    if (nProfile != 2) add({[this, n] { return MakeRecordSetLife(world, n); }, nProfile < 2});
    for (Slot& slot : vSlots)
      BeBorn(slot);
  }
  LifePlayer(const LifePlayer&) = delete;
  LifePlayer& operator=(const LifePlayer&) = delete;
  ~LifePlayer() = default;

  // Takes a step. The first difference, with the last steps, or "".
  std::string Step() {
    Slot& slot = world.random.Of(vSlots);
    if (slot.bMortal && world.random.OneIn(80)) BeBorn(slot);
    return Told(slot.pLife->Step());
  }

  // Compares everything, ends all lives and expects all memory to be back. Nothing may follow.
  std::string End() {
    for (const Slot& slot : vSlots) {
      const std::string strFault = slot.pLife->CheckAll();
      if (!strFault.empty()) return Told(strFault);
    }
    vSlots.clear();
    world.vTexts.clear();
    const std::size_t nLive = CountedMemory::Live();
    if (nLive == nLiveBefore) return "";
    return Told(std::to_string(nLive) + " bytes in use, before " + std::to_string(nLiveBefore));
  }

  // See Random::UsedUp.
  bool UsedUp() const { return world.random.UsedUp(); }

 private:
  struct Slot {
    std::function<std::unique_ptr<Life>()> make;
    bool bMortal = true;
    std::unique_ptr<Life> pLife{};
  };

  void BeBorn(Slot& slot) {
    const CountedMemory::Aside aside;
    slot.pLife.reset();
    slot.pLife = slot.make();
    slot.pLife->nNumber = ++nBorn;
  }

  std::string Told(const std::string& strFault) const {
    return strFault.empty() ? "" : strFault + "; " + world.diary.Text();
  }

  World world;
  std::vector<Slot> vSlots;
  std::size_t nLiveBefore;
  int nBorn = 0;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_LIFEPLAYER_H
