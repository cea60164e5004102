// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The record set seen by a host: state, columns, cells of every kind, nested record sets, the dump
// and the before/after record. ModelTest.cpp goes through long sequences of these calls.

#include <gtest/gtest.h>

#include <climits>
#include <cwchar>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "recordset/QXRecordSet.h"

namespace {

const std::string kLongMax = std::to_string(LONG_MAX);
const std::string kLongMin = std::to_string(LONG_MIN);

void ExpectCleared(CQXRecordSet& set) {
  EXPECT_EQ(set.GetRowsCount(), 0);
  EXPECT_EQ(set.GetColumnCount(), 0);
  EXPECT_STREQ(set.GetColumnName(0), "");
  EXPECT_EQ(set.GetColumnIndex("a"), -1);
  EXPECT_STREQ(set.GetValueAsString("a", 1), "");
  EXPECT_EQ(set.GetValueAsLong("a", 1), 0);
  EXPECT_EQ(set.GetString(), "");
  EXPECT_EQ(set.GetStringRef(), "");
  EXPECT_EQ(set.Dump(), "");
}

// Two rows, three columns, and a text already built.
CQXRecordSet Example() {
  CQXRecordSet set;
  set.SetValue("b", 5L, 1);
  set.SetValue("a", "x", 1);
  set.SetValue("c", true, 2);
  set.GetString();
  return set;
}
constexpr char szExample[] = R"({"rows":[{"a":"x","b":5},{"c":true}]})";

TEST(RecordSet, IsClearedUntilItIsWritten) {
  CQXRecordSet set;
  ExpectCleared(set);
  set.SetValue("a", static_cast<const char*>(nullptr), 1);
  set.SetValue(nullptr, "x", 1);
  set.SetValue("a", static_cast<CQXRecordSet*>(nullptr), 1);
  ExpectCleared(set);
  set = Example();
  set.Clear();
  ExpectCleared(set);
  EXPECT_EQ(set.AddColumn("a"), 1);
  EXPECT_EQ(set.GetString(), "") << "a column alone is no change";
  set.SetValue("a", 1L, 0);
  EXPECT_EQ(set.GetString(), "{}");
  EXPECT_EQ(set.Dump(), "");
}

TEST(RecordSet, NumbersColumnsByAgeAndListsThemByName) {
  CQXRecordSet set;
  set.SetValue("b", 5L, 1);
  set.SetValue("a", true, 1);
  EXPECT_EQ(set.GetColumnIndex("b"), 1);
  EXPECT_EQ(set.GetColumnIndex("a"), 2);
  EXPECT_EQ(set.GetColumnIndex("A"), -1);
  EXPECT_EQ(set.AddColumn("b"), 1);
  EXPECT_EQ(set.AddColumn(""), 3);
  EXPECT_EQ(set.GetColumnCount(), 3);
  const std::pair<long, const char*> kNames[] = {{0, ""},  {1, "a"},       {2, "b"},      {3, ""},
                                                 {-1, ""}, {LONG_MAX, ""}, {LONG_MIN, ""}};
  for (const auto& [position, name] : kNames) {
    EXPECT_STREQ(set.GetColumnName(position), name) << position;
  }
  EXPECT_EQ(set.AddColumn(nullptr), -1);
  EXPECT_EQ(set.GetColumnIndex(nullptr), -1);
  EXPECT_STREQ(set.GetValueAsString(nullptr, 1), "");
  EXPECT_EQ(set.GetColumnCount(), 3);
}

TEST(RecordSet, KeepsEachKindOfValueAsTextAndReadsItAsANumber) {
  CQXRecordSet set;
  set.SetValue("long", -7L);
  set.SetValue("least", LONG_MIN);
  set.SetValue("int", 5);
  set.SetValue("true", true);
  set.SetValue("false", false);
  set.SetValue("string", std::string("abc\0def", 7));
  set.SetValue("number 4", "4", 1, static_cast<CQXRecordSet::QX_TYPE>(4));
  set.SetValue("null", "n", 1, CQXRecordSet::QX_NULL);
  const struct {
    const char* szName;
    std::string strText;
    long lValue;
  } kCells[] = {{"long", "-7", -7},
                {"least", kLongMin, LONG_MIN},
                {"int", "5", 5},
                {"true", "1", 1},
                {"false", "0", 0},
                {"string", "abc", 0},
                {"number 4", "4", 4},
                {"null", "n", 0},
                // Texts that the general setter takes.
                {"1", "", 0},
                {"2", "true", 0},
                {"3", "12abc", 12},
                {"4", " \t\n\v\f\r+12", 12},
                {"5", "- 3", 0},
                {"6", "+-3", 0},
                {"7", "1e3", 1},
                {"8", "0x10", 0},
                {"9", "{\"a\":1}", 0},
                {"10", "007", 7},
                {"11", kLongMax + "0", LONG_MAX},
                {"12", kLongMin + "0", LONG_MIN}};
  for (const auto& cell : kCells) {
    SCOPED_TRACE(cell.szName);
    if (set.GetColumnIndex(cell.szName) < 0) set.SetValue(cell.szName, cell.strText.c_str());
    std::string strOut = "old";
    set.GetValueAsStringUTF8(strOut, cell.szName);
    EXPECT_EQ(strOut, cell.strText);
    EXPECT_EQ(set.GetValueAsLong(cell.szName), cell.lValue);
    EXPECT_EQ(set.GetValueAsBool(cell.szName), cell.lValue != 0);
  }
}

TEST(RecordSet, OverwritesACellWithTextOfItsOwn) {
  CQXRecordSet set;
  set.SetValue("a", "some text, long enough to lie outside of everything");
  set.SetValue("a", set.GetValueAsString("a") + 5, 1, CQXRecordSet::QX_LONG);
  EXPECT_STREQ(set.GetValueAsString("a"), "text, long enough to lie outside of everything");
  set.SetValue("b", set.GetValueAsString("a") + 6);
  set.SetValue(set.GetValueAsString("b"), set.GetColumnName(0));
  EXPECT_STREQ(set.GetValueAsString("long enough to lie outside of everything"), "a");
  set.SetString(set.GetStringRef());
  set.GetString();
  set.SetString(set.GetStringRef());
  EXPECT_STREQ(set.GetValueAsString("b"), "long enough to lie outside of everything");
}

TEST(RecordSet, MakesANullCellWhenAMissingOneIsRead) {
  CQXRecordSet set;
  set.SetValue("a", 1L, 1);
  set.SetValue("b", 2L, 2);
  EXPECT_STREQ(set.GetValueAsString("b", 1), "");
  EXPECT_STREQ(set.GetValueAsString("c", 1), "");
  EXPECT_EQ(set.GetValueAsLong("b", 4), 0) << "beyond the row count";
  EXPECT_EQ(set.GetString(), R"({"rows":[{"a":1,"b":null},{"b":2}]})");
  set.SetValue("a", 1L, LONG_MAX);
  EXPECT_EQ(set.GetRowsCount(), LONG_MAX);
}

// That the cells are all there is ModelTest's business.
TEST(RecordSet, IsCopiedMovedAndAssigned) {
  CQXRecordSet set = Example();
  const char* const pText = set.GetValueAsString("a", 1);
  CQXRecordSet copy(set);
  EXPECT_EQ(copy.GetStringRef(), szExample);
  EXPECT_NE(copy.GetValueAsString("a", 1), pText);
  copy = set;
  EXPECT_EQ(copy.GetStringRef(), "");
  EXPECT_EQ(copy.GetString(), szExample);
  copy = *&copy;
  EXPECT_EQ(copy.GetStringRef(), "");

  CQXRecordSet moved(std::move(set));
  ExpectCleared(set);  // NOLINT: a moved-from record set is cleared
  EXPECT_EQ(moved.GetValueAsString("a", 1), pText);
  EXPECT_EQ(moved.GetStringRef(), szExample);
  copy = std::move(moved);
  ExpectCleared(moved);  // NOLINT
  EXPECT_EQ(copy.GetValueAsString("a", 1), pText);
  EXPECT_EQ(copy.GetStringRef(), "") << "a text goes along only into a new record set";
  copy = std::move(*&copy);
  EXPECT_EQ(copy.GetString(), szExample);

  CQXRecordSet cleared;
  EXPECT_EQ(CQXRecordSet(cleared).GetString(), "") << "a copy has the state of the source";
  copy = cleared;
  EXPECT_EQ(copy.GetString(), "{}") << "an assigned one counts as written";
  copy = CQXRecordSet();
  EXPECT_EQ(copy.GetString(), "{}");
  static_assert(std::is_nothrow_move_constructible_v<CQXRecordSet>);
  static_assert(std::is_nothrow_move_assignable_v<CQXRecordSet>);
  static_assert(std::has_virtual_destructor_v<CQXRecordSet>);
}

// ---- Nested record sets ------------------------------------------------------------------------

TEST(NestedRecordSet, IsASnapshotThatKeepsAllRows) {
  CQXRecordSet inner;
  inner.SetValue("a", 1L, 1);
  inner.SetValue("a", 2L, 2);
  CQXRecordSet outer;
  outer.SetValue("inner", inner);
  inner.SetValue("a", 3L, 1);
  EXPECT_STREQ(outer.GetValueAsString("inner"), R"({"rows":[{"a":1},{"a":2}]})");
  CQXRecordSet taken = outer.GetValueAsRecordSet("inner");
  EXPECT_EQ(taken.GetRowsCount(), 2);
  EXPECT_EQ(taken.GetValueAsLong("a", 2), 2);
  EXPECT_EQ(outer.GetString(), R"({"inner":{"rows":null}})");
}

TEST(NestedRecordSet, PassesThroughTheTextWithOneRow) {
  CQXRecordSet inner("{\"y\":\"z\",\"x\":1}");
  CQXRecordSet outer;
  outer.SetValue("inner", &inner, 1);
  EXPECT_EQ(outer.GetString(), R"({"inner":{"x":1,"y":"z"}})");
  CQXRecordSet received(outer.GetStringRef());
  EXPECT_STREQ(received.GetValueAsString("inner"), R"({"x":1,"y":"z"})");
  received.SetValue("self", received);
  EXPECT_STREQ(received.GetValueAsString("self"), R"({"inner":{"x":1,"y":"z"}})");
}

TEST(NestedRecordSet, IsEmptyWhenTheCellHoldsNone) {
  CQXRecordSet cleared;
  CQXRecordSet outer("{\"rows\":[{\"t\":\"text\",\"n\":5},{}, {\"t\":1}]}");
  outer.SetValue("cleared", cleared);
  EXPECT_EQ(outer.GetValueAsRecordSet("cleared").GetString(), "{}");
  EXPECT_EQ(outer.GetValueAsRecordSet("t").GetString(), "{}");
  EXPECT_EQ(outer.GetValueAsRecordSet("no column").GetString(), "{}");
  EXPECT_EQ(outer.GetColumnIndex("no column"), -1);
  EXPECT_EQ(outer.GetValueAsRecordSet("n", 2).GetString(), "{}");
  EXPECT_EQ(outer.GetString(), R"({"rows":[{"cleared":"","n":5,"t":"text"},{"n":null},{"t":1}]})");
}

// ---- Dump and wide text ------------------------------------------------------------------------

TEST(Dump, ShowsEveryColumnInEveryRow) {
  CQXRecordSet set;
  set.SetValue("b", 5L, 1);
  set.SetValue("a", "x\ny", 1);
  set.SetValue("b", 7L, 2);
  set.SetValue("b", "", 3);
  set.SetValue("b", 8L, 5);
  set.SetValue("b", 9L, 0);
  const std::string strExpected =
      "Row 1\n\tField (a): x\ny\n\tField (b): 5\n"
      "Row 2\n\tField (a): \n\tField (b): 7\n"
      "Row 3\n\tField (a): \n\tField (b): \n"
      "Row 4\n\tField (a):\n\tField (b):\n"
      "Row 5\n\tField (a): \n\tField (b): 8\n";
  EXPECT_EQ(set.Dump(), strExpected);
  set.GetValueAsString("b", 4);
  EXPECT_NE(set.Dump().find("Row 4\n\tField (a): \n\tField (b): \n"), std::string::npos);
}

TEST(WideText, GoesThereAndBackAndEndsAtANul) {
  const std::string text = "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80";
  EXPECT_EQ(CQXRecordSet::UTF8ToWide(text), L"gr\u00FC\u00DF \U0001F600");
  EXPECT_EQ(CQXRecordSet::WideToUTF8(CQXRecordSet::UTF8ToWide(text)), text);
  EXPECT_EQ(CQXRecordSet::UTF8ToWide(std::string("a\0b", 3)), L"a");
  EXPECT_EQ(CQXRecordSet::WideToUTF8(std::wstring(L"a\0b", 3)), "a");
  EXPECT_EQ(CQXRecordSet::UTF8ToWide(""), L"");
  EXPECT_EQ(CQXRecordSet::WideToUTF8(L""), "");
  EXPECT_EQ(CQXRecordSet::UTF8ToWide("\xFF"), L"") << "refused";
}

// ---- The before/after record -------------------------------------------------------------------

TEST(BeforeAfterRecord, KeepsTheAfterValuesInRowOne) {
  CBeforeAfterRecord record;
  ExpectCleared(record);
  EXPECT_FALSE(record.IsChanged());
  EXPECT_EQ(record.GetChangeCount(), 0);
  EXPECT_TRUE(record.IsChanged("no column"));

  std::string strBefore = "old";
  std::string strAfter = "12 \"text\"";
  record.SetFieldValues("t", strBefore, strAfter);
  record.SetFieldValues("l", 2L, 1L);
  record.SetFieldValues("b", false, true);
  EXPECT_EQ(record.GetString(), R"({"b":true,"l":1,"t":"12 \"text\""})");
  EXPECT_TRUE(record.IsChanged());
  EXPECT_EQ(record.GetChangeCount(), 3);

  const struct {
    const char* szName;
    const char* szText;
    long lValue;
  } kFields[] = {{"t", "12 \"text\"", 12}, {"l", "1", 1}, {"b", "1", 1}, {"none", "", 0}};
  for (const auto& field : kFields) {
    long lBefore = 77;
    long lAfter = 78;
    bool bBefore = true;
    bool bAfter = field.lValue == 0;
    std::string strUTF8;
    record.GetFieldValues(field.szName, strBefore, strAfter);
    record.GetFieldValuesUTF8(field.szName, strBefore, strUTF8);
    record.GetFieldValues(field.szName, lBefore, lAfter);
    record.GetFieldValues(field.szName, bBefore, bAfter);
    EXPECT_EQ(strAfter, field.szText);
    EXPECT_EQ(strUTF8, field.szText);
    EXPECT_EQ(lAfter, field.lValue);
    EXPECT_EQ(bAfter, field.lValue != 0);
    EXPECT_TRUE(strBefore == "old" && lBefore == 77 && bBefore);
  }
}

TEST(BeforeAfterRecord, TakesOverAnyRecordSet) {
  CBeforeAfterRecord record;
  record = Example();
  EXPECT_EQ(record.GetChangeCount(), 3);
  EXPECT_EQ(record.GetString(), szExample);
  CBeforeAfterRecord other;
  other = record;
  EXPECT_EQ(other.GetStringRef(), "");
  EXPECT_EQ(other.GetString(), szExample);
  EXPECT_EQ(CBeforeAfterRecord(std::move(other)).GetString(), szExample);
}

}  // namespace
