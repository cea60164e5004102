// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Setters of every width, arguments that must not compile, and the ends of what readers of a
// constant know. That they find each cell, and list it once, is the business of tests/lives.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "tests/support/PlainLoad.h"

namespace {

using Set = CQXRecordSet;

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

TEST(ExactValues, KeepEveryDigitOfEveryInteger) {
  Set set;
  const std::string strName = "a name of more than sixteen bytes";
  const std::string_view name = std::string_view(strName).substr(0, 6);
  set.SetValue(name, LLONG_MIN, 1);
  set.SetValue(name, ULLONG_MAX, 2);
  set.SetValue("a name", static_cast<unsigned long>(LONG_MAX), 3);
  set.SetValue("a name", 1ULL + LONG_MAX, 4);
  set.SetValue("a name", static_cast<long long>(LONG_MIN), 5);
  set.SetValue("a name", std::string_view("cut\0here", 8), 6);
  set.SetValue(std::string_view("a name\0!", 8), std::string_view(), 7);
  set.SetValue(strName, 4294967295U);
  const Set::QX_TYPE eWide = sizeof(long) == 8 ? Set::QX_LONG : Set::QX_TEXT;
  const std::pair<std::string, Set::QX_TYPE> kWanted[] = {
      {"-9223372036854775808", eWide},
      {"18446744073709551615", Set::QX_TEXT},
      {std::to_string(LONG_MAX), Set::QX_LONG},
      {std::to_string(1ULL + LONG_MAX), Set::QX_TEXT},
      {std::to_string(LONG_MIN), Set::QX_LONG},
      {"cut", Set::QX_TEXT},
      {"", Set::QX_TEXT}};
  long lRow = 0;
  for (const auto& [strText, eType] : kWanted) {
    EXPECT_EQ(set.GetView(name, ++lRow), strText);
    EXPECT_EQ(set.GetType(name, lRow), eType);
  }
  EXPECT_TRUE(set.GetView(strName) == "4294967295" && set.GetType(strName) == eWide);
  EXPECT_TRUE(set.GetColumnIndex(strName) == set.AddColumn(strName) && set.GetColumnCount() == 2);
  EXPECT_EQ(set.GetValueAsLong(strName), set.GetValueAsLong(std::string_view(strName)));
}

TEST(Reading, KnowsWhatIsNotThere) {
  Set set(R"({"rows":[{"a":"x","n":null},{},{"b":5}]})");
  const Set& read = set;
  const long lColumn = read.GetColumnIndex("b");
  EXPECT_EQ(read.GetView(lColumn, 3), "5");
  EXPECT_EQ(read.GetColumnIndex(std::string_view("b\0", 2)), lColumn) << "up to its NUL";
  EXPECT_EQ(read.GetView("b", 1).data(), nullptr);
  EXPECT_NE(read.GetView("n").data(), nullptr);
  EXPECT_EQ(read.GetView("a").data(), set.GetValueAsString("a"));
  EXPECT_FALSE(read.HasCell(static_cast<const char*>(nullptr), 1) || Set().HasCell("a"));
  for (const long lNone : {-1L, 0L, 4L, LONG_MAX, LONG_MIN})
    EXPECT_FALSE(read.HasCell(lNone, 1) || read.HasCell(lColumn, lNone)) << lNone;
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
  EXPECT_EQ(set.GetType("a", 2), 7);
  EXPECT_EQ(set.GetView("b", -3), "below");
  EXPECT_EQ(set.GetString(),
            R"({"rows":[{"a":1,"b":2},{"a":"seven","c":{"k":null}},{},{"d":null}]})");
  Set empty;
  empty.Merge(Set());
  EXPECT_EQ(empty.GetString(), "{}");  // written
  empty.Merge(set);
  EXPECT_EQ(Plain::Picture(empty).size(), Plain::Picture(set).size());
}

}  // namespace
