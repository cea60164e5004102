// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a record set costs in memory, that it costs no more after long use, and that it survives
// when there is none left.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>

#include "recordset/QXRecordSet.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace {

using CountedMemory::Live;

std::string RowsText(int nRows) {
  std::string text = "{\"rows\":[";
  for (int i = 0; i < nRows; ++i) {
    const std::string n = std::to_string(100000 + i);
    text += i == 0 ? "{" : ",{";
    for (const char c : std::string("abcdefghi")) {
      text += std::string("\"") + c + "\":\"" + n + c + "\",";
    }
    text += "\"j\":" + n + '}';
  }
  return text + "]}";
}

TEST(RecordSetMemory, IsSmallBesideTheTexts) {
  constexpr int kRows = 20000;
  constexpr std::size_t kCells = kRows * 10;
  constexpr std::size_t kTextBytes = kRows * (9 * 7 + 6);
  const std::string text = RowsText(kRows);
  const std::size_t nBefore = Live();
  auto pSet = std::make_unique<CQXRecordSet>(text);
  const std::size_t nUsed = Live() - nBefore;
  EXPECT_LE((nUsed - kTextBytes) / kCells, sizeof(void*) == 8 ? 24u : 16u);
  pSet.reset();
  EXPECT_EQ(Live(), nBefore);
}

TEST(RecordSetMemory, DoesNotGrowWithUse) {
  const std::string text = RowsText(50);
  Support::Random random(1);
  const struct {
    const char* szName;
    std::function<void(CQXRecordSet&)> use;
  } kUses[] = {
      {"overwriting",
       [&](CQXRecordSet& set) {
         set.SetValue("a", std::string(random.Below(400), 'x'), 1 + random.Below(20));
       }},
      {"reading", [&](CQXRecordSet& set) { set.GetValueAsLong("a", 1 + random.Below(1000)); }},
      {"loading", [&](CQXRecordSet& set) { set.SetString(text); }},
      {"clearing and loading",
       [&](CQXRecordSet& set) {
         set.Clear();
         set.SetString(text);
       }},
      {"writing", [&](CQXRecordSet& set) { set.GetString(); }},
      {"assigning",
       [&](CQXRecordSet& set) { set = CQXRecordSet(set); }},  // NOLINT: a copy is meant
  };
  for (const auto& use : kUses) {
    SCOPED_TRACE(use.szName);
    CQXRecordSet set(text);
    for (int i = 0; i < 300; ++i)
      use.use(set);
    for (int i = 0; i < 2000 && set.GetRowsCount() < 1000; ++i)
      use.use(set);
    const std::size_t nLiveAfterSome = Live();
    for (int i = 0; i < 4000; ++i)
      use.use(set);
    EXPECT_LE(Live(), nLiveAfterSome + 8192);
  }
}

TEST(RecordSetMemory, IsGivenBackByClear) {
  const std::string text = RowsText(5000);
  CQXRecordSet set;
  const std::size_t nBefore = Live();
  set.SetString(text);
  set.Clear();
  EXPECT_EQ(Live(), nBefore);
  set.SetString("{\"a\":1}");
  set.Clear();
  EXPECT_LT(Live(), nBefore + 65536);
}

// Every allocation of every operation fails once. What comes out is whole: it can be read, written,
// copied and destroyed, and the cells that the operation was not about are as they were.
TEST(RecordSetMemory, MayRunOutAtAnyAllocation) {
  const std::string strBase = RowsText(3);
  const std::string strLong(300, 'y');
  const std::string strMore =
      R"({"rows":[{"new":"a long text that needs memory"},{"a":{"b":[1]}}]})";
  const struct {
    const char* szName;
    std::function<void(CQXRecordSet&)> use;
  } kUses[] = {
      {"set", [&](CQXRecordSet& set) { set.SetValue("a", strLong, 2); }},
      {"set in a new column", [&](CQXRecordSet& set) { set.SetValue("new column", strLong, 2); }},
      {"set far away", [&](CQXRecordSet& set) { set.SetValue("a", strLong, 100000000); }},
      {"set many",
       [&](CQXRecordSet& set) {
         for (long i = 0; i < 40; ++i)
           set.SetValue(std::to_string(i).c_str(), strLong, 80 - 2 * i);
       }},
      {"read", [&](CQXRecordSet& set) { set.GetValueAsString("a", -5); }},
      {"read a nested one", [&](CQXRecordSet& set) { set.GetValueAsRecordSet("nested", 1); }},
      {"list", [&](CQXRecordSet& set) { set.GetColumnName(0); }},
      {"write", [&](CQXRecordSet& set) { set.GetString(); }},
      {"dump", [&](CQXRecordSet& set) { set.Dump(); }},
      {"load", [&](CQXRecordSet& set) { set.SetString(strMore); }},
      {"copy", [&](CQXRecordSet& set) { CQXRecordSet(set).SetValue("a", 1L); }},
      {"assign", [&](CQXRecordSet& set) { set = CQXRecordSet(strMore); }},
  };
  for (const auto& use : kUses) {
    SCOPED_TRACE(use.szName);
    const std::size_t nBefore = Live();
    long nAllocations = 0;
    for (bool bRanOut = true; bRanOut; ++nAllocations) {
      CQXRecordSet set(strBase);
      const char* const pText = set.GetValueAsString("d", 3);
      set.SetValue("nested", "{\"x\":1}", 1);
      bool bThrew = false;
      CountedMemory::FailAfter(nAllocations);
      try {
        use.use(set);
      } catch (const std::bad_alloc&) {
        bThrew = true;
      }
      bRanOut = CountedMemory::StopFailing();
      if (set.GetColumnCount() >= 10) {
        EXPECT_EQ(set.GetValueAsString("d", 3), pText);
        EXPECT_STREQ(pText, "100002d");
        EXPECT_STREQ(CQXRecordSet(set).GetValueAsString("j", 1), "100000");
      }
      if (bThrew && set.GetRowsCount() == 3) {
        EXPECT_EQ(set.GetString().find(strLong), std::string::npos);
      }
      set.SetValue("a", "z", 1);
      EXPECT_STREQ(set.GetValueAsString("a", 1), "z");
      ASSERT_LT(nAllocations, 1000);
    }
    EXPECT_GT(nAllocations, 1);
    EXPECT_LE(Live(), nBefore + 1000) << "nothing leaks";
  }
}

}  // namespace
