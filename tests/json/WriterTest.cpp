// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer beside the plain writer: every short sequence of calls, long ones of any
// depth with memory running out in between, the ends of texts and numbers, and its allocations.

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>
#include <string_view>

#include "json/JSONSerialize.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/PlainWriter.h"
#include "tests/support/Random.h"

namespace {

using JSON::Serialize;
using namespace std::string_view_literals;

TEST(Writer, TakesNumbersAndRawTextsToTheirEnds) {
  Serialize numbers(0);
  numbers.AO().V(0).V(INT_MIN).V(4000000000UL).V(LLONG_MIN).V(ULLONG_MAX);
  numbers.V(1e6).V(-0.0).V(-1.23456e-300).V(LONG_MIN).V(ULONG_MAX).AC();
  EXPECT_EQ(numbers.String(),
            "[0,-2147483648,4000000000,-9223372036854775808,18446744073709551615,"
            "1e+06,-0,-1.23456e-300," +
                std::to_string(LONG_MIN) + ',' + std::to_string(ULONG_MAX) + ']');
  Serialize raw(0);
  raw.AO().JS_N("987", 2).JS_N(nullptr, 3).JS_N("", 3).JS_N("", 0).JS_N("987", 0);
  raw.JS_N("987", INT_MIN).JS_N("[1]x", 3).JS_N("1\0002", 3).JS(nullptr).AC();
  EXPECT_EQ(raw.String(), "[98,null,null,null,,,[1],1\0002,null]"sv);
  Serialize views(0);
  views.OO().N("name"sv.substr(0, 2)).V("text"sv.substr(1, 2)).N("n\0x"sv).V("\0"sv);
  views.N(""sv).V(std::string_view()).N("c").V("a very long text, a NUL\0, and more"sv).OC();
  EXPECT_EQ(views.String(), R"({"na":"ex","n":"","":"","c":"a very long text, a NUL"})");
}

// In order or not: after an error nothing mends it.
void ExpectAlikeThroughAllCalls(const Serialize& writer, const Plain::Writer& model, int nCalls) {
  ASSERT_EQ(writer.String(), model.String());
  for (const char c : nCalls > 0 ? "{}[]NV~A"sv : ""sv) {
    Serialize next(0);
    Plain::Writer nextModel = model;
    next = writer;
    Plain::Apply(next, {c, "x"});
    nextModel.Apply({c, "x"});
    ASSERT_NO_FATAL_FAILURE(ExpectAlikeThroughAllCalls(next, nextModel, nCalls - 1)) << c;
  }
}

TEST(Writer, FollowsItsRulesThroughEveryShortSequence) {
  ExpectAlikeThroughAllCalls(Serialize(0), Plain::Writer(), 6);
}

// The call, with memory for nBefore allocations. A failure leaves no trace.
bool Succeeds(Serialize& writer, const Plain::Call& call, long nBefore) {
  CountedMemory::FailAfter(nBefore);
  try {
    Plain::Apply(writer, call);
  } catch (const std::bad_alloc&) {
  }
  return !CountedMemory::StopFailing();
}

TEST(Writer, GoesOnAtAnyDepthAlsoWhenMemoryRanOut) {
  for (unsigned nSeed = 0; nSeed < 300; nSeed += Support::kStride) {
    Support::Random random(nSeed);
    Serialize writer(0);
    Plain::Writer model;
    for (int i = 0; i < 300 || model.Depth() != 0; ++i) {
      const Plain::Call call = i < 300 ? Plain::SomeCall(random, model) : Plain::Closing(model);
      if (random.OneIn(8)) writer = Serialize(writer);  // no room to spare
      for (long n = random.OneIn(4) ? 0 : LONG_MAX; !Succeeds(writer, call, n); ++n) {
      }
      model.Apply(call);
      ASSERT_EQ(writer.String(), model.String()) << "seed " << nSeed;
    }
  }
}

TEST(Writer, AllocatesWhatIsReservedAndGrowsGeometrically) {
  for (const int nReserve : {INT_MIN, 0, 1, 2000000}) {
    Serialize writer(nReserve);
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
