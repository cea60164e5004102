// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer. Its calls are written down as scripts: one token per call, separated by
// blanks, the first character says which call, the rest is its text; see Plain::Call.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JSONSerialize.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/PlainWriter.h"
#include "tests/support/Random.h"

namespace {

using Plain::Apply;
using Plain::Call;

std::vector<Call> Script(std::string_view script) {
  std::vector<Call> vCalls;
  while (!script.empty()) {
    const std::string_view token = script.substr(0, script.find(' '));
    script.remove_prefix(std::min(token.size() + 1, script.size()));
    vCalls.push_back({token[0], std::string(token.substr(1))});
  }
  return vCalls;
}

std::string Written(std::string_view script) {
  JSON::Serialize writer(0);
  for (const Call& call : Script(script))
    Apply(writer, call);
  return writer.String();
}

TEST(Writer, WritesWhatIsCalledInOrder) {
  const struct {
    const char* szScript;
    const char* szText;
  } cases[] = {
      {"{ Na #1 Nb [ Vx ~ [ ] ] }", "{\"a\":1,\"b\":[\"x\",null,[]]}"},
      {"[ { Na [ ] Nb { } } { } [ { } ] ]", "[{\"a\":[],\"b\":{}},{},[{}]]"},
      {"[ ] [ #1 #2 ] { Na ~ }", "[][1,2]{\"a\":null}"},
      {"[ ~ J Jnull J[1,2] Atrue J\"\\u0041\" ]", "[null,null,null,[1,2],true,\"\\u0041\"]"},
      {"{ N Ve\"s\\c N\" V }", "{\"\":\"e\\\"s\\\\c\",\"\\\"\":\"\"}"},
      // An empty text appended takes a place, but writes nothing there.
      {"[ A A #1 ]", "[,,1]"},
      {"{ Na A Nb A }", "{\"a\":,\"b\":}"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Written(c.szScript), c.szText) << c.szScript;
}

TEST(Writer, RefusesWhatIsOutOfOrderForGood) {
  const char* const scripts[] = {"{ #1",   "{ A", "{ {", "{ ]", "[ Na", "[ }",   "{ Na Na",
                                 "{ Na }", "}",   "]",   "Na",  "#1",   "[ ] ]", "{ Na { } #1"};
  for (const std::string strScript : scripts) {
    // Nothing mends it: neither what would have been right, nor closing all, nor a new start.
    for (const char* szTail : {"", " }", " ]", " #1 }", " } } }", " { }", " [ ]"}) {
      EXPECT_EQ(Written(strScript + szTail), "") << strScript << szTail;
    }
  }
}

TEST(Writer, TakesEveryKindOfNumber) {
  JSON::Serialize writer(0);
  writer.AO().V(0).V(INT_MIN).V(-5L).V(4000000000UL).V(LLONG_MIN).V(ULLONG_MAX);
  writer.V(2.5).V(1e6).V(-0.0).V(-1.23456e-300).AC();
  EXPECT_EQ(writer.String(),
            "[0,-2147483648,-5,4000000000,-9223372036854775808,18446744073709551615,"
            "2.5,1e+06,-0,-1.23456e-300]");
  const std::string strLongs = std::to_string(LONG_MIN) + ',' + std::to_string(ULONG_MAX);
  JSON::Serialize longs(0);
  EXPECT_EQ(longs.AO().V(LONG_MIN).V(ULONG_MAX).AC().String(), '[' + strLongs + ']');
}

TEST(Writer, TakesRawTextOfAGivenLength) {
  const struct {
    const char* szJson;
    int nLength;
    std::string strText;
  } cases[] = {
      {"987", 2, "98"},
      {nullptr, 3, "null"},
      {"", 3, "null"},
      {"", 0, "null"},
      {"987", 0, ""},
      {"987", INT_MIN, ""},
      {"[1]x", 3, "[1]"},
      {"1\0"
       "2",
       3,
       {"1\0"
        "2",
        3}},
  };
  for (const auto& c : cases) {
    JSON::Serialize writer(0);
    EXPECT_EQ(writer.AO().JS_N(c.szJson, c.nLength).V(7).AC().String(), '[' + c.strText + ",7]");
  }
  JSON::Serialize writer(0);
  EXPECT_EQ(writer.AO().JS(nullptr).AC().String(), "[null]");
}

TEST(Writer, AViewEndsAtItsEndOrItsNul) {
  using namespace std::string_view_literals;
  JSON::Serialize writer(0);
  writer.OO().N("name"sv.substr(0, 2)).V("text"sv.substr(1, 2)).N("n\0x"sv).V("\0"sv);
  writer.N(std::string_view())
      .V(std::string_view())
      .N("c")
      .V("a very long text, a NUL\0, and more"sv)
      .OC();
  EXPECT_EQ(writer.String(), R"({"na":"ex","n":"","":"","c":"a very long text, a NUL"})");
}

// A text that is plain, needs escapes, is empty or is longer than all the room there is.
std::string RandomText(Support::Random& random) {
  std::string strText(random.OneIn(100) ? random.Below(20000) : random.Below(40), 'x');
  const std::size_t nRarity = random.OneIn(4) ? 5 : 10000;
  for (char& c : strText) {
    c = static_cast<char>(random.OneIn(nRarity) ? 1 + random.Below(255) : 'a' + random.Below(26));
  }
  return strText;
}

// Mostly in order, and mostly one of `calls`.
Call RandomCall(Support::Random& random, const Plain::Writer& model, std::string_view calls) {
  constexpr std::string_view all = "{}[]NNVV~#JA";
  char c = random.Of(calls);
  if (!model.Failed() && !random.OneIn(500)) {
    while (!model.Allowed(c))
      c = random.Of(all);
  }
  if (c != '#') return {c, RandomText(random)};
  return {c, std::to_string(static_cast<int>(random.Below(2000000)) - 1000000)};
}

TEST(Writer, FollowsItsRulesThroughRandomCalls) {
  std::size_t nComplete = 0;
  std::size_t nDeepest = 0;
  for (unsigned nSeed = 0; nSeed < 2000; ++nSeed) {
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    Support::Random random(nSeed);
    const bool bDeep = random.OneIn(10);
    const std::size_t nCalls = random.Below(bDeep ? 250 : 60);
    const std::size_t nCopyAt = random.Below(nCalls + 1);
    JSON::Serialize writer(static_cast<int>(random.Below(3) * 700));
    std::optional<JSON::Serialize> copied;
    Plain::Writer model;
    // At the end, all that is open is closed; mostly.
    for (std::size_t i = 0; i < nCalls || (model.Depth() != 0 && !random.OneIn(1000)); ++i) {
      if (i == nCopyAt) copied = writer;  // both go on from here, each on its own
      const Call call = RandomCall(random, model, i >= nCalls ? "}]" : bDeep ? "{[" : "V");
      Apply(writer, call);
      if (copied) Apply(*copied, call);
      model.Apply(call);
      ASSERT_EQ(writer.String(), model.String());
      nDeepest = std::max(nDeepest, model.Depth());
    }
    if (copied) {
      ASSERT_EQ(copied->String(), model.String());
    }
    nComplete += model.String().empty() ? 0 : 1;
  }
  EXPECT_GT(nComplete, 1000U);
  EXPECT_GT(nDeepest, 64U);
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

// The call, with memory for nBefore allocations.
bool Succeeds(JSON::Serialize& writer, const Call& call, int nBefore) {
  CountedMemory::FailAfter(nBefore);
  try {
    Apply(writer, call);
  } catch (const std::bad_alloc&) {
  }
  return !CountedMemory::StopFailing();
}

TEST(Writer, ACallThatRunsOutOfMemoryLeavesNoTrace) {
  std::string strScript = "[ #1 { Na";
  for (int i = 0; i < 70; ++i)
    strScript += i % 2 == 0 ? " [ #1" : " { Nk";
  for (int i = 70; i-- > 0;)
    strScript += i % 2 == 0 ? " ]" : i == 69 ? " ~ }" : " }";
  std::vector<Call> vCalls = Script(strScript + " Nb Vtext Nc J[] } ]");
  const std::string strLong(3000, 'x');
  for (Call& call : vCalls) {
    if (call.strText == "b") call.strText = strLong + '\n' + strLong;
    if (call.strText == "text") call.strText = std::string(100000, '\n');
  }
  Plain::Writer model;
  for (const Call& call : vCalls)
    model.Apply(call);

  JSON::Serialize writer(0);
  int nFailures = 0;
  for (std::size_t i = 0; i < vCalls.size(); ++i) {
    for (int nBefore = 0;; ++nBefore) {
      JSON::Serialize attempt(writer);
      if (Succeeds(attempt, vCalls[i], nBefore)) {
        writer = attempt;
        break;
      }
      ++nFailures;
      for (std::size_t j = i; j < vCalls.size(); ++j)
        Apply(attempt, vCalls[j]);
      ASSERT_EQ(attempt.String(), model.String()) << "call " << i << ", allocation " << nBefore;
    }
  }
  EXPECT_EQ(writer.String(), model.String());
  EXPECT_GT(nFailures, 8);
}

}  // namespace
