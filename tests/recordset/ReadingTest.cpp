// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading that changes nothing, setters of every width, and arguments that must not compile.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "tests/support/Author.h"
#include "tests/support/PlainLoad.h"

namespace {

using Set = CQXRecordSet;

// ---- What must not compile ----------------------------------------------------------------------

template <typename Value, typename = void>
struct CanSet : std::false_type {};
template <typename Value>
struct CanSet<
    Value, std::void_t<decltype(std::declval<Set&>().SetValue("name", std::declval<Value>(), 1L))>>
    : std::true_type {};

template <typename... Values>
constexpr bool kAll = (CanSet<Values>::value && ...);
template <typename... Values>
constexpr bool kAny = (CanSet<Values>::value || ...);

static_assert(kAll<const char*, char*, char (&)[2], std::string, const std::string&,
                   std::string_view, bool, Set*, CBeforeAfterRecord*, Set&>);
static_assert(kAll<short, unsigned short, int, unsigned, long, unsigned long, long long,
                   unsigned long long, std::int8_t, std::uint8_t, std::size_t>);
static_assert(!kAny<const unsigned char*, unsigned char*, const wchar_t*, const char16_t*, void*,
                    const void*, int*, const Set*, void (*)(), std::string*, volatile char*>);
static_assert(!kAny<char, wchar_t, char16_t, char32_t, float, double>);

// ---- Setters ------------------------------------------------------------------------------------

TEST(ExactValues, KeepEveryDigitOfEveryInteger) {
  Set set;
  const std::string strName = "a name of more than sixteen bytes";
  set.SetValue(strName, 4294967295U);
  set.SetValue(std::string_view(strName).substr(0, 6), LLONG_MIN, 2);
  set.SetValue("a name", ULLONG_MAX, 3);
  set.SetValue("a name", static_cast<unsigned long>(LONG_MAX), 4);
  set.SetValue("a name", 1ULL + LONG_MAX, 5);
  set.SetValue("a name", static_cast<long long>(LONG_MIN), 6);
  set.SetValue("a name", std::string_view("cut\0here", 8), 7);
  set.SetValue(std::string_view("a name\0!", 8), std::string_view(), 8);
  const bool b64 = sizeof(long) == 8;
  const std::string strMax = std::to_string(LONG_MAX);
  const std::string strBeyond = std::to_string(1ULL + LONG_MAX);
  EXPECT_EQ(set.GetView(strName), "4294967295");
  EXPECT_EQ(set.GetType(strName), b64 ? Set::QX_LONG : Set::QX_TEXT);
  const std::pair<std::string, Set::QX_TYPE> kWanted[] = {
      {"-9223372036854775808", b64 ? Set::QX_LONG : Set::QX_TEXT},
      {"18446744073709551615", Set::QX_TEXT},
      {strMax, Set::QX_LONG},
      {strBeyond, Set::QX_TEXT},
      {std::to_string(LONG_MIN), Set::QX_LONG},
      {"cut", Set::QX_TEXT},
      {"", Set::QX_TEXT}};
  long lRow = 2;
  for (const auto& [strText, eType] : kWanted) {
    EXPECT_EQ(set.GetView("a name", lRow), strText);
    EXPECT_EQ(set.GetType("a name", lRow++), eType);
  }
  EXPECT_EQ(set.GetColumnCount(), 2);
}

TEST(ExactValues, TakeNamesAsObjectsEverywhere) {
  Set set;
  const std::string strName = "n";
  const std::string_view name(strName);
  EXPECT_EQ(set.AddColumn(name), 1);
  Set inner;
  inner.SetValue(name, 7);
  set.SetValue(strName, inner);
  EXPECT_EQ(set.GetColumnIndex(strName), 1);
  EXPECT_EQ(set.GetValueAsRecordSet(name).GetValueAsLong(strName), 7);
  set.SetValue(name, "12", 2, Set::QX_LONG);
  EXPECT_EQ(set.GetValueAsLong(name, 2), 12);
  EXPECT_TRUE(set.GetValueAsBool(strName, 2));
  std::string strOut;
  set.GetValueAsStringUTF8(strOut, name, 2);
  EXPECT_EQ(strOut, set.GetValueAsString(strName, 2));
  EXPECT_EQ(set.GetType(name, 2), Set::QX_LONG);
}

// ---- Reading ------------------------------------------------------------------------------------

TEST(Reading, MakesNothingAndKnowsWhatIsNotThere) {
  Set set;
  set.SetValue("a", "x");
  set.SetValue("b", 5, 3);
  set.SetValue("n", "", 1, Set::QX_NULL);
  const std::string strBefore = set.GetString();
  const Set& read = set;
  EXPECT_FALSE(read.HasCell("b", 1));
  EXPECT_FALSE(read.HasCell("none", 1));
  EXPECT_FALSE(read.HasCell(static_cast<const char*>(nullptr), 1));
  EXPECT_FALSE(Set().HasCell("a"));
  EXPECT_TRUE(read.HasCell("n"));
  EXPECT_EQ(read.GetType("n"), Set::QX_NULL);
  EXPECT_EQ(read.GetType("b", 1), Set::QX_NULL);
  EXPECT_EQ(read.GetView("b", 1).data(), nullptr);
  EXPECT_NE(read.GetView("n").data(), nullptr);
  EXPECT_EQ(read.GetView("a").data(), set.GetValueAsString("a"));
  const long lColumn = read.GetColumnIndex("b");
  EXPECT_EQ(read.GetView(lColumn, 3), "5");
  EXPECT_EQ(read.GetColumnIndex("none"), -1);
  for (const long lNone : {-1L, 0L, 4L, LONG_MAX, LONG_MIN}) {
    EXPECT_FALSE(read.HasCell(lNone, 1));
    EXPECT_FALSE(read.HasCell(lColumn, lNone));
  }
  EXPECT_EQ(set.GetString(), strBefore);
}

// The range lists what the readers by name and row find, in dense, sparse and far-flung tables.
TEST(Reading, ListsEveryCellOfEveryRowOnce) {
  for (unsigned i = 0; i < 100; ++i) {
    Support::Random random(i);
    Set set;
    const std::uint32_t nColumns = random.OneIn(4) ? 2000 : 1 + random.Below(9);
    for (std::uint32_t n = random.Below(120); n != 0; --n) {
      const std::string strName = "c" + std::to_string(random.Below(nColumns));
      const long lRow = random.OneIn(9) ? 5000 : static_cast<long>(random.Below(40)) - 2;
      set.SetValue(strName, static_cast<int>(n), lRow);
    }
    std::size_t nListed = 0;
    const CQXRows rows = std::as_const(set).Rows();
    long lNumber = 0;
    for (const CQXRow& row : rows) {
      ASSERT_EQ(row.Number(), ++lNumber);
      long lColumn = 0;
      for (const CQXCell& cell : row) {
        ASSERT_GT(cell.lColumn, lColumn);
        lColumn = cell.lColumn;
        ASSERT_EQ(cell.name, rows.Names()[static_cast<std::size_t>(lColumn) - 1]);
        ASSERT_EQ(set.GetColumnIndex(cell.name), lColumn);
        ASSERT_EQ(cell.text.data(), set.GetView(cell.name, lNumber).data());
        ASSERT_EQ(cell.text.size(), set.GetView(cell.name, lNumber).size());
        ASSERT_EQ(cell.eType, Set::QX_LONG);
        ++nListed;
      }
    }
    ASSERT_EQ(lNumber, set.GetRowsCount());
    std::size_t nThere = 0;
    for (long lRow = 1; lRow <= set.GetRowsCount(); ++lRow)
      for (const std::string_view name : rows.Names())
        nThere += set.HasCell(name, lRow) ? 1 : 0;
    ASSERT_EQ(nListed, nThere);
  }
}

TEST(Merge, KeepsTypesThatTheTextWouldLose) {
  Set set(R"({"rows":[{"a":1,"b":2},{"a":3}]})");
  Set other;
  other.SetValue("c", "{\"k\":[1.5]}", 2);
  other.SetValue("a", "seven", 2, static_cast<Set::QX_TYPE>(7));
  other.SetValue("b", "below", -3);
  other.SetValue("d", "", 4, Set::QX_NULL);
  set.Merge(other);
  set.Merge(set);
  EXPECT_EQ(set.GetRowsCount(), 4);
  EXPECT_EQ(set.GetType("a", 2), 7);
  EXPECT_EQ(set.GetView("c", 2), "{\"k\":[1.5]}");
  EXPECT_EQ(set.GetView("b", -3), "below");
  EXPECT_EQ(set.GetView("a", 1), "1");
  EXPECT_TRUE(set.HasCell("d", 4));
  Set empty;
  empty.Merge(Set());
  EXPECT_EQ(empty.GetString(), "{}");  // written
  empty.Merge(set);
  EXPECT_EQ(Plain::Picture(empty).size(), Plain::Picture(set).size());
}

}  // namespace
