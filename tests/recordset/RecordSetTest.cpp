// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the random tests beside it (LoadDifferentialTest.cpp) and tests/lives do not reach: numbers
// at the bounds of a long, wide text, the before/after record, memory, and the walk over a parsed
// object.

#include "recordset/QXRecordSet.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "tests/support/CountedMemory.h"

namespace {

static_assert(std::is_nothrow_move_constructible_v<CQXRecordSet>);
static_assert(std::is_nothrow_move_assignable_v<CQXRecordSet>);
static_assert(std::has_virtual_destructor_v<CQXRecordSet>);

TEST(RecordSet, HoldsNumbersWithinTheBoundsOfLong) {
  const std::string strMax = std::to_string(LONG_MAX);
  const std::string strMin = std::to_string(LONG_MIN);
  const std::string strBounds = "{\"a\":" + strMax + ",\"b\":" + strMin + ",\"c\":" + strMin + "}";
  for (const std::string& beyond : {strMax + '0', std::string(strMax.size(), '9')}) {
    const std::string text = "{\"a\":" + beyond + ",\"b\":-" + beyond + ",\"c\":" + strMin + "}";
    CQXRecordSet set(text);
    EXPECT_EQ(set.GetString(), strBounds);
    set.SetValue("a", beyond.c_str(), 1, CQXRecordSet::QX_LONG);
    EXPECT_EQ(set.GetValueAsLong("a"), LONG_MAX);
    EXPECT_EQ(set.GetString(), strBounds);
    EXPECT_EQ(CQXRecordSet("{\"o\":" + text + "}").GetString(), "{\"o\":" + strBounds + "}");
  }
}

TEST(RecordSet, ForgetsItsColumnsWhenItIsCleared) {
  CQXRecordSet set;
  set.SetValue("a", 1);
  set.SetValue("b", 2);
  set.Clear();
  EXPECT_EQ(set.AddColumn(""), 1);
  EXPECT_TRUE(set.GetColumnCount() == 1 && set.GetColumnIndex("a") == -1);
}

// A text that is asked for again is not built again unless it has changed.
TEST(RecordSet, TextFollowsEachChange) {
  CQXRecordSet set(R"({"rows":[{"a":1,"b":"x"},{"a":2}]})");
  const std::function<void()> kChanges[] = {
      [&] { set.SetString(set.GetStringRef()); },
      [&] { set.SetValue("a", 3L, 1); },
      [&] { set.GetValueAsString("b", 2); },  // makes a null cell
      [&] { set.GetValueAsString("b", 1000); },
      [&] { set.SetValue("a", "1", 0); },
      [&] { set.SetString(R"({"rows":[{},{},{"c":true}]})"); },
      [&] { set.SetString("refused"); },
      [&] { set = *&set; },
      [&] { set = CQXRecordSet(R"({"d":4})"); },
      [&] { set.Clear(); },
      [&] { set.AddColumn("e"); },
      [&] { set.SetString("{}"); },
      [&] { set.SetString(R"({"e":5})"); },
  };
  for (const auto& change : kChanges) {
    const std::string* const pText = &set.GetString();
    EXPECT_EQ(set.GetString().data(), pText->data());
    change();
    EXPECT_EQ(set.GetString(), CQXRecordSet(set).GetString()) << &change - kChanges;
  }
  EXPECT_EQ(set.GetString(), R"({"e":5})");
}

TEST(WideText, GoesThereAndBackAndEndsAtANul) {
  const std::string text = "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80";
  EXPECT_EQ(CQXRecordSet::UTF8ToWide(text), L"gr\u00FC\u00DF \U0001F600");
  EXPECT_EQ(CQXRecordSet::WideToUTF8(CQXRecordSet::UTF8ToWide(text)), text);
  EXPECT_EQ(CQXRecordSet::UTF8ToWide(std::string("a\0b", 3)), L"a");
  EXPECT_EQ(CQXRecordSet::WideToUTF8(std::wstring(L"a\0b", 3)), "a");
  EXPECT_EQ(CQXRecordSet::UTF8ToWide("\xFF"), L"") << "refused";
}

TEST(BeforeAfterRecord, ConvertsAndCountsWhatItTookOver) {
  CBeforeAfterRecord record;
  std::string strBefore = "old";
  std::string strAfter = "12 \"text\"";
  record.SetFieldValues("t", strBefore, strAfter);
  record.SetFieldValues("l", 2L, 1L);
  record.SetFieldValues("b", false, true);
  EXPECT_EQ(record.GetString(), R"({"b":true,"l":1,"t":"12 \"text\""})");
  CBeforeAfterRecord other;
  other = static_cast<const CQXRecordSet&>(record);
  EXPECT_TRUE(other.IsChanged() && other.IsChanged("no column") && other.GetChangeCount() == 3);
  long lBefore = 77;
  long lAfter = 78;
  bool bBefore = true;
  bool bAfter = false;
  other.GetFieldValues("t", lBefore, lAfter);
  other.GetFieldValues("l", bBefore, bAfter);
  other.GetFieldValuesUTF8("none", strBefore, strAfter);
  EXPECT_TRUE(bAfter && bBefore && lBefore == 77 && lAfter == 12);
  EXPECT_TRUE(strBefore == "old" && strAfter.empty());
}

// Nine texts of 7 bytes and an integer of 6 in each row: a cell and its share of the row, the NUL
// behind a text, and little that lies unused.
TEST(RecordSetMemory, IsSmallBesideTheTexts) {
  constexpr double kBytesPerCell = sizeof(void*) == 8 ? 21.5 : 16;
  for (const int nRows : {1000, 3000, 20000}) {
    SCOPED_TRACE(std::to_string(nRows) + " rows");
    std::string text = "{\"rows\":[";
    for (long i = 1; i <= nRows; ++i) {
      const std::string n = std::to_string(100000 + i);
      text += (i > 1 ? ",{\"j\":" : "{\"j\":") + n;
      for (const char c : std::string("abcdefghi"))
        text.append(",\"").append(1, c).append("\":\"").append(n).append(1, c).append("\"");
      text += '}';
    }
    text += "]}";
    const std::size_t nBefore = CountedMemory::Live();
    auto pSet = std::make_unique<CQXRecordSet>(text);
    const auto nUsed = static_cast<int>(CountedMemory::Live() - nBefore);
    EXPECT_LE((nUsed - nRows * (9 * 7 + 6)) / (10.0 * nRows), kBytesPerCell);
    pSet.reset();
    EXPECT_EQ(CountedMemory::Live(), nBefore);
  }
}

TEST(RecordSetMemory, DoesNotGrowWithUse) {
  using Set = CQXRecordSet;
  static const std::pair<const char*, void (*)(Set & set, int n)> kUses[] = {
      {"texts that change",
       [](Set& set, int n) {
         set.SetValue("a", std::string(static_cast<unsigned>(n % 300), 'x'), n % 50);
       }},
      {"the text of all", [](Set& set, int n) { set.SetValue("b", n), set.GetString(); }},
      {"loads",
       [](Set& set, int) { set.Clear(), set.SetString(R"({"rows":[{"a":1},{"b":"x"}]})"); }},
      {"other columns", [](Set& set, int n) { set.Clear(), set.SetValue(std::to_string(n), n); }},
      {"assignments", [](Set& set, int) { set = Set(set); }},
  };
  for (const auto& [szName, use] : kUses) {
    Set set(R"({"rows":[{"a":1},{"a":"some text"}]})");
    std::size_t nFirst = 0;
    for (int i = 0; i < 6000; ++i) {
      use(set, i);
      if (i == 1000) nFirst = CountedMemory::Live();
    }
    EXPECT_LE(CountedMemory::Live(), nFirst + 16384) << szName;
  }
}

// ---- The walk over a parsed object -------------------------------------------------------------

TEST(WalkObject, WritesBracesOnlyWhenItIsOutermost) {
  JSON::Message message;
  ASSERT_TRUE(message.Parse(R"({"a":{"b":1},"":"x"})"));
  JSON::Serialize outer(0);
  json_walk_obj(outer, &message, 0);
  EXPECT_EQ(outer.String(), R"({"a":{"b":1},"":"x"})");
  JSON::Serialize inner(0);
  inner.OO().N("first").V(0);
  json_walk_obj(inner, message.GetByName("a", -1), 1);
  EXPECT_EQ(inner.OC().String(), R"({"first":0,"b":1})");
}

TEST(WalkObject, GoesAsDeepAsTheTreeAndTakesUpdatedValues) {
  constexpr int kDeep = 5000;
  JSON::Message message;
  JSON::JSONValue* pValue = &message;
  std::string strExpected;
  for (int i = 0; i < kDeep; ++i) {
    pValue->Set("o", 1);
    pValue = &(*pValue)["o"];
    strExpected += "{\"o\":";
  }
  pValue->Set("s", static_cast<const char*>(nullptr));
  pValue->Set("b", true);
  pValue->InternalUpdateByName("i", "12:", JSON::jtInteger);
  JSON::Serialize writer(0);
  json_walk_obj(writer, &message, 0);
  EXPECT_EQ(writer.String(),
            strExpected + "{\"s\":null,\"b\":true,\"i\":12" + std::string(kDeep + 1, '}'));
}

}  // namespace
