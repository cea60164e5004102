// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer beside the plain one of tests/support, which says what a Plain::Call is.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <new>
#include <string>
#include <string_view>

#include "json/JSONSerialize.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/PlainWriter.h"
#include "tests/support/Random.h"

namespace {

using Plain::Apply;
using Plain::Call;
using namespace std::string_view_literals;

TEST(Writer, TakesEveryKindOfNumber) {
  JSON::Serialize writer(0);
  writer.AO().V(0).V(INT_MIN).V(-5L).V(4000000000UL).V(LLONG_MIN).V(ULLONG_MAX);
  writer.V(2.5).V(1e6).V(-0.0).V(-1.23456e-300).V(LONG_MIN).V(ULONG_MAX).AC();
  EXPECT_EQ(writer.String(),
            "[0,-2147483648,-5,4000000000,-9223372036854775808,18446744073709551615,"
            "2.5,1e+06,-0,-1.23456e-300," +
                std::to_string(LONG_MIN) + ',' + std::to_string(ULONG_MAX) + ']');
}

TEST(Writer, TakesRawTextOfAGivenLength) {
  JSON::Serialize writer(0);
  writer.AO().JS_N("987", 2).JS_N(nullptr, 3).JS_N("", 3).JS_N("", 0).JS_N("987", 0);
  writer.JS_N("987", INT_MIN).JS_N("[1]x", 3).JS_N("1\0002", 3).JS(nullptr).AC();
  EXPECT_EQ(writer.String(), "[98,null,null,null,,,[1],1\0002,null]"sv);
}

TEST(Writer, AViewEndsAtItsEndOrItsNul) {
  JSON::Serialize writer(0);
  writer.OO().N("name"sv.substr(0, 2)).V("text"sv.substr(1, 2)).N("n\0x"sv).V("\0"sv);
  writer.N(""sv).V(std::string_view()).N("c").V("a very long text, a NUL\0, and more"sv).OC();
  EXPECT_EQ(writer.String(), R"({"na":"ex","n":"","":"","c":"a very long text, a NUL"})");
}

// In order or not: after an error nothing mends it.
void ExpectAlikeThroughAllCalls(const JSON::Serialize& writer, const Plain::Writer& model,
                                int nCalls) {
  ASSERT_EQ(writer.String(), model.String());
  for (const char c : nCalls > 0 ? "{}[]NV~A"sv : ""sv) {
    JSON::Serialize next(0);
    Plain::Writer nextModel = model;
    next = writer;
    Apply(next, {c, "x"});
    nextModel.Apply({c, "x"});
    ASSERT_NO_FATAL_FAILURE(ExpectAlikeThroughAllCalls(next, nextModel, nCalls - 1)) << c;
  }
}

TEST(Writer, FollowsItsRulesThroughEveryShortSequence) {
  ExpectAlikeThroughAllCalls(JSON::Serialize(0), Plain::Writer(), 6);
}

// A text that is plain, needs escapes, is empty or is longer than all the room there is.
std::string RandomText(Support::Random& random) {
  std::string strText(random.OneIn(100) ? random.Below(20000) : random.Below(40), 'x');
  const std::size_t nRarity = random.OneIn(4) ? 5 : 10000;
  for (char& c : strText)
    c = static_cast<char>(random.OneIn(nRarity) ? 1 + random.Below(255) : 'a' + random.Below(26));
  return strText;
}

// A call in order, mostly one of `calls`.
Call RandomCall(Support::Random& random, const Plain::Writer& model, std::string_view calls) {
  constexpr std::string_view all = "{}[]NNVV~#JA";
  char c = random.Of(calls);
  while (!model.Allowed(c))
    c = random.Of(all);
  if (c != '#') return {c, RandomText(random)};
  return {c, std::to_string(static_cast<int>(random.Below(2000000)) - 1000000)};
}

// The call, with memory for nBefore allocations.
bool Succeeds(JSON::Serialize& writer, const Call& call, int nBefore) {
  CountedMemory::FailAfter(nBefore);
  try {
    Apply(writer, call);
  } catch (const std::bad_alloc&) {
  }
  return !CountedMemory::StopFailing();
}

// And a copy goes on by itself, also when a call on it has run out of memory, which leaves no
// trace.
TEST(Writer, FollowsItsRulesThroughLongSequences) {
  std::size_t nDeepest = 0;
  int nFailures = 0;
  for (unsigned nSeed = 0; nSeed < 1000; ++nSeed) {
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    Support::Random random(nSeed);
    const bool bDeep = random.OneIn(10);
    const std::size_t nCalls = random.Below(bDeep ? 250 : 60);
    const std::size_t nCopyAt = random.Below(nCalls + 1);
    JSON::Serialize writer(static_cast<int>(random.Below(3) * 700));
    JSON::Serialize copied(0);
    Plain::Writer model;
    // At the end, all that is open is closed.
    for (std::size_t i = 0; i < nCalls || model.Depth() != 0; ++i) {
      const Call call = RandomCall(random, model, i >= nCalls ? "}]" : bDeep ? "{[" : "V");
      if (i == nCopyAt) copied = writer;
      if (i > nCopyAt && random.OneIn(4)) copied = JSON::Serialize(copied);  // no room to spare
      for (int nBefore = 0; i >= nCopyAt && !Succeeds(copied, call, nBefore); ++nBefore)
        ++nFailures;
      Apply(writer, call);
      model.Apply(call);
      ASSERT_EQ(writer.String(), model.String());
      nDeepest = std::max(nDeepest, model.Depth());
    }
    if (nCopyAt < nCalls) {
      ASSERT_EQ(copied.String(), model.String());
    }
  }
  EXPECT_GT(nDeepest, 64U);
  EXPECT_GT(nFailures, 500);
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
