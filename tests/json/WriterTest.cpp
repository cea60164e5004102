// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer: every short sequence of calls beside the plain writer, the ends of texts
// and numbers, and its allocations. Long sequences, and memory that runs out, are the business of
// tests/lives.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>

#include "json/JSONSerialize.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/PlainWriter.h"

namespace {

using namespace std::string_view_literals;

TEST(Writer, TakesNumbersAndRawTextsToTheirEnds) {
  JSON::Serialize numbers(0);
  numbers.AO().V(0).V(INT_MIN).V(4000000000UL).V(LLONG_MIN).V(ULLONG_MAX);
  numbers.V(1e6).V(-0.0).V(-1.23456e-300).V(LONG_MIN).V(ULONG_MAX).AC();
  EXPECT_EQ(numbers.String(),
            "[0,-2147483648,4000000000,-9223372036854775808,18446744073709551615,"
            "1e+06,-0,-1.23456e-300," +
                std::to_string(LONG_MIN) + ',' + std::to_string(ULONG_MAX) + ']');
  JSON::Serialize raw(0);
  raw.AO().JS_N("987", 2).JS_N(nullptr, 3).JS_N("", 3).JS_N("", 0).JS_N("987", 0);
  raw.JS_N("987", INT_MIN).JS_N("[1]x", 3).JS_N("1\0002", 3).JS(nullptr).AC();
  EXPECT_EQ(raw.String(), "[98,null,null,null,,,[1],1\0002,null]"sv);
  JSON::Serialize views(0);
  views.OO().N("name"sv.substr(0, 2)).V("text"sv.substr(1, 2)).N("n\0x"sv).V("\0"sv);
  views.N(""sv).V(std::string_view()).N("c").V("a very long text, a NUL\0, and more"sv).OC();
  EXPECT_EQ(views.String(), R"({"na":"ex","n":"","":"","c":"a very long text, a NUL"})");
}

void Apply(JSON::Serialize& writer, char cCall) {
  if (cCall == '{') writer.OO();
  if (cCall == '}') writer.OC();
  if (cCall == '[') writer.AO();
  if (cCall == ']') writer.AC();
  if (cCall == 'N') writer.N("x");
  if (cCall == 'V') writer.V("x");
  if (cCall == '~') writer.V(nullptr);
  if (cCall == 'A') writer.AppendString("x");
}

// In order or not: after an error nothing mends it.
void ExpectAlikeThroughAllCalls(const JSON::Serialize& writer, const Plain::Writer& model,
                                int nCalls) {
  ASSERT_EQ(writer.String(), model.String());
  for (const char c : nCalls > 0 ? "{}[]NV~A"sv : ""sv) {
    JSON::Serialize next(0);
    Plain::Writer nextModel = model;
    next = writer;
    Apply(next, c);
    nextModel.Apply({c, "x"});
    ASSERT_NO_FATAL_FAILURE(ExpectAlikeThroughAllCalls(next, nextModel, nCalls - 1)) << c;
  }
}

TEST(Writer, FollowsItsRulesThroughEveryShortSequence) {
  ExpectAlikeThroughAllCalls(JSON::Serialize(0), Plain::Writer(), 6);
}

TEST(Writer, AllocatesWhatIsReservedAndGrowsGeometrically) {
  for (const int nReserve : {INT_MIN, 0, 1, 2000000}) {
    JSON::Serialize writer(nReserve);
    const std::size_t nBefore = CountedMemory::Allocations();
    writer.AO();
    for (int i = 0; i < 200000; ++i)
      writer.V(i);
    EXPECT_EQ(writer.AC().String().size(), 1288891U);
    EXPECT_LT(CountedMemory::Allocations() - nBefore, nReserve > 1 ? 1U : 16U);
    // After an error nothing is written any more.
    const std::size_t nThen = CountedMemory::Allocations();
    for (int i = 0; i < 100000; ++i)
      writer.AC().AO().N("name").V("text").V(1);
    EXPECT_EQ(CountedMemory::Allocations(), nThen);
  }
}

}  // namespace
