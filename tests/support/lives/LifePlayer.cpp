// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The player: which lives there are, birth and death, and the check of memory.

#include "tests/support/lives/LifePlayer.h"

#include <functional>
#include <utility>

#include "tests/support/lives/ParamsLife.h"
#include "tests/support/lives/WriterLife.h"

namespace Support {

using CountedMemory::Aside;

struct LifePlayer::Slot {
  std::function<std::unique_ptr<Life>()> make;
  bool bMortal = true;
  std::unique_ptr<Life> pLife{};
  // Bytes: what the content needs, what was needed at some time since the content was new, and the
  // same for the content before.
  std::size_t nNeed = 0;
  std::size_t nTaken = 0;
  std::size_t nBefore = 0;
};

namespace {

constexpr std::size_t kMostOf[] = {100000, 1300, 20};

}  // namespace

LifePlayer::LifePlayer(std::size_t nProfile, const Random& choices, const std::string& strTitle)
    : world{choices, nProfile < 3 ? kMostOf[nProfile] : 100, Diary(strTitle)},
      nLiveBefore(CountedMemory::Live()) {
  const Aside aside;
  using Kind = TreeKind;
  const auto addTrees = [&](std::initializer_list<Kind> kinds) {
    for (const Kind kind : kinds)
      vSlots.push_back({[this, kind] { return MakeTreeLife(world, kind); }});
  };
  const auto addRecordSet = [&](std::size_t n, bool bMortal) {
    vSlots.push_back({[this, n] { return MakeRecordSetLife(world, n); }, bMortal});
  };
  if (nProfile < 2) {
    addTrees({Kind::kCopying, Kind::kCopying, Kind::kInPlace, Kind::kInPlace, Kind::kObject,
              Kind::kArray, Kind::kHostObject, Kind::kHostArray});
    addRecordSet(world.random.Below(kRecordSetProfiles), true);
    vSlots.push_back({[this] { return std::make_unique<WriterLife>(world); }});
    vSlots.push_back({[this] { return std::make_unique<ParamsLife>(world); }});
  } else if (nProfile == 2) {
    addTrees({Kind::kCopying, Kind::kInPlace});
  } else {
    addRecordSet(nProfile - 3, false);
  }
  for (Slot& slot : vSlots)
    BeBorn(slot);
}

LifePlayer::~LifePlayer() = default;

void LifePlayer::BeBorn(Slot& slot) {
  const Aside aside;
  slot.pLife.reset();
  slot.pLife = slot.make();
  slot.pLife->nNumber = ++nBorn;
  slot.nNeed = slot.nTaken = slot.nBefore = 0;
}

std::string LifePlayer::Step() {
  Slot& slot = world.random.Of(vSlots);
  if (slot.bMortal && world.random.OneIn(80)) BeBorn(slot);
  const std::string strFault = slot.pLife->Step();
  if (!strFault.empty()) return Told(strFault);
  const std::size_t nNeed = slot.pLife->Need();
  if (slot.pLife->bRenewed) slot.nBefore = std::exchange(slot.nTaken, nNeed);
  if (nNeed > slot.nNeed) slot.nTaken += nNeed - slot.nNeed;
  slot.nNeed = nNeed;
  return world.random.OneIn(16) ? Told(CheckMemory()) : "";
}

std::string LifePlayer::CheckMemory() {
  constexpr std::size_t kEach = 16384;  // whatever the content: room that cleared containers keep
  constexpr std::size_t kTimes = 3;
  std::size_t nBound = nLiveBefore;
  for (const Slot& slot : vSlots)
    nBound += kEach + kTimes * (slot.nTaken + slot.nBefore);
  const std::size_t nLive = CountedMemory::Live();
  if (nLive <= nBound) return "";
  std::string strNeeds = std::to_string(nLive) + " bytes in use; needed now and before:";
  for (const Slot& slot : vSlots) {
    strNeeds += ' ' + std::to_string(slot.pLife->nNumber) + ": " + std::to_string(slot.nTaken) +
                " and " + std::to_string(slot.nBefore);
  }
  return strNeeds;
}

std::string LifePlayer::End() {
  for (const Slot& slot : vSlots) {
    const std::string strFault = slot.pLife->CheckAll();
    if (!strFault.empty()) return Told(strFault);
  }
  for (Slot& slot : vSlots)
    slot.pLife.reset();
  world.vTexts.clear();
  const std::size_t nLive = CountedMemory::Live();
  if (nLive == nLiveBefore) return "";
  return Told(std::to_string(nLive) + " bytes in use, " + std::to_string(nLiveBefore) + " before");
}

std::string LifePlayer::Told(const std::string& strFault) const {
  return strFault.empty() ? "" : strFault + "; " + world.diary.Text();
}

}  // namespace Support
