// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a record set costs in memory, and that it costs no more after long use.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "recordset/QXRecordSet.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace {

using CountedMemory::Live;

// Nine texts of 7 bytes and an integer of 6 in each row.
std::string RowsText(int nRows) {
  CQXRecordSet set;
  for (long i = 1; i <= nRows; ++i) {
    const std::string n = std::to_string(100000 + i);
    for (const char c : std::string("abcdefghi"))
      set.SetValue(std::string(1, c).c_str(), n + c, i);
    set.SetValue("j", 100000 + i, i);
  }
  return set.GetString();
}

// A cell and its share of the row, the NUL behind a text, and little that lies unused.
TEST(RecordSetMemory, IsSmallBesideTheTexts) {
  constexpr double kBytesPerCell = sizeof(void*) == 8 ? 21.5 : 16;
  for (const int nRows : {1000, 3000, 20000}) {
    SCOPED_TRACE(std::to_string(nRows) + " rows");
    const int nTextBytes = nRows * (9 * 7 + 6);
    const std::string text = RowsText(nRows);
    const std::size_t nBefore = Live();
    auto pSet = std::make_unique<CQXRecordSet>(text);
    const auto nUsed = static_cast<int>(Live() - nBefore);
    EXPECT_LE((nUsed - nTextBytes) / (10.0 * nRows), kBytesPerCell);
    pSet.reset();
    EXPECT_EQ(Live(), nBefore);
  }
}

TEST(RecordSetMemory, DoesNotGrowWithUse) {
  const std::string text = RowsText(50);
  Support::Random random(1);
  const std::function<void(CQXRecordSet&)> kUses[] = {
      [&](CQXRecordSet& set) {
        set.SetValue("a", std::string(random.Below(400), 'x'), 1 + random.Below(20));
      },
      [&](CQXRecordSet& set) { set.GetValueAsLong("a", 1 + random.Below(1000)); },
      [&](CQXRecordSet& set) { set.SetString(text); },
      [&](CQXRecordSet& set) {
        set.Clear();
        set.SetString(text);
      },
      [&](CQXRecordSet& set) { set.GetString(); },
      [&](CQXRecordSet& set) { set = CQXRecordSet(set); },  // NOLINT: a copy is meant
  };
  for (const auto& use : kUses) {
    SCOPED_TRACE(&use - kUses);
    CQXRecordSet set(text);
    std::size_t nLiveAfterSome = 0;
    for (int i = 0; i < 6000; ++i) {
      if (i == 2000) nLiveAfterSome = Live();
      use(set);
    }
    EXPECT_LE(Live(), nLiveAfterSome + 8192);
  }
}

// A cleared record set is ready for as much again, but not for the most it ever held.
TEST(RecordSetMemory, IsKeptForOneTime) {
  const std::string text = RowsText(5000);
  CQXRecordSet set;
  const std::size_t nBefore = Live();
  set.SetString(text);
  const std::size_t nLoaded = Live();
  set.Clear();
  EXPECT_LE(Live(), nLoaded);
  set.SetString(text);
  EXPECT_LE(Live(), nLoaded + 4096);
  set.Clear();
  set.SetString("{\"a\":1}");
  set.Clear();
  EXPECT_LT(Live(), nBefore + 4096);
  set = CQXRecordSet();
  EXPECT_EQ(Live(), nBefore);
}

}  // namespace
