// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings: what the reader takes from well-formed and from broken texts, and what the
// builder does, at random and at the edges.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "tests/support/PlainParams.h"
#include "tests/support/Random.h"

namespace {

constexpr long kFailCode = -2147467259;  // 0x80004005

void ExpectHolds(const CParamsRS& params, const char* szHeader,
                 const std::vector<std::string>& vTexts) {
  EXPECT_EQ(Plain::Difference({szHeader, vTexts}, params), "") << params.paramListRef();
}

// True when the call throws a std::exception that is nothing more special.
template <typename Call>
bool Refuses(Call call) {
  try {
    call();
  } catch (const std::exception& error) {
    return typeid(error) == typeid(std::exception);
  }
  return false;
}

// `text` as the one parameter of a parameter string.
CParamsRS OneParam(const std::string& text) {
  CParamsRS params;
  params.addHeader("H");
  params.addParam(text);
  return params;
}

TEST(ParameterString, WritesEveryKindOfParameterAsTheProtocolSays) {
  CParamsRS params(100);
  params.addHeader("CMD");
  params.addResult(0);
  params.addParam("abc");
  params.addParam(42);
  params.addParam("a;b");
  params.addResult(kFailCode);
  EXPECT_EQ(params.paramListRef(),
            "CMD;    10;0x00000000;     3;abc;     2;42;     3;a;b;    10;0x80004005");
  EXPECT_EQ(params.length(), 71);
  EXPECT_GE(params.paramListRef().capacity(), 100U);
  params.clear();
  EXPECT_EQ(params.length(), 0);
  params.addParam(std::string(999999, 'x'));
  params.addParam(std::string(1000000, 'y'));
  EXPECT_EQ(params.paramListRef().substr(0, 8), "999999;x");
  EXPECT_EQ(params.paramListRef().substr(999999 + 7, 10), ";1000000;y");
}

// Texts put together from what matters to a scan, all taken in by one object: nothing of the text
// before may be left.
TEST(ParameterString, IsTakenApartOrRefusedAsAPlainScanDoesIt) {
  static constexpr std::string_view kNumbers[] = {"     1;", "2147483648", "-99999999999999999999"};
  constexpr std::string_view bytes(";;;; 0123+-xH\t\v\r\0", 17);
  Support::Random random(3);
  CParamsRS params;
  int nRefused = 0;
  for (int i = 0; i < 100000; i += Support::kStride) {
    std::string text;
    for (std::size_t n = random.Below(16); n > 0; --n)
      text += random.OneIn(8) ? random.Of(kNumbers) : bytes.substr(random.Below(bytes.size()), 1);
    SCOPED_TRACE(text);
    const Plain::Params expected = Plain::ScanParams(text);
    ASSERT_EQ(Refuses([&] { params.SetParams(text); }), expected.bRefused);
    ASSERT_EQ(params.paramListRef(), text);
    ASSERT_EQ(Plain::Difference(expected, params), "");
    const int nCount = params.count();
    if (expected.bUnreadable) {
      ASSERT_TRUE(Refuses([&] { params.getStringParamAt(nCount - 1); }));
      ASSERT_TRUE(Refuses([&] { params.getLongParamAt(nCount - 1); }));
      ASSERT_EQ(Refuses([&] { params.getHRESULT(); }), nCount == 1);
    }
    for (const int nIndex : {-1, nCount, INT_MAX, INT_MIN}) {
      ASSERT_EQ(params.getStringParamAt(nIndex), "");
      ASSERT_EQ(params.getLongParamAt(nIndex), 0);
    }
    nRefused += expected.bRefused ? 1 : 0;
  }
  EXPECT_GT(nRefused, 10000 / Support::kStride);
  EXPECT_LT(nRefused, 90000 / Support::kStride);
}

TEST(ParameterString, ReadsALengthFieldAnywhereInsideTheText) {
  const CParamsRS params(std::string("H;    10;abcdefghij;     0;"));
  const struct {
    long lOffset, lLength, lConsumed;
  } cases[] = {{2, 10, 7}, {6, 10, 3}, {7, 0, 2}, {20, 0, 7}, {0, 0, 2}};
  for (const auto& c : cases) {
    long lConsumed = -1;
    EXPECT_EQ(params.getLength(c.lOffset, &lConsumed), c.lLength) << c.lOffset;
    EXPECT_EQ(lConsumed, c.lConsumed) << c.lOffset;
  }
  for (const long lOffset : {1L, 8L, 26L, 27L, 28L, -1L, LONG_MAX, LONG_MIN}) {
    EXPECT_TRUE(Refuses([&] { params.getLength(lOffset, nullptr); })) << lOffset;
  }
}

long ScannedResult(const std::string& text) {
  unsigned int nCode = 0;
  std::sscanf(text.c_str(), "0x%08X", &nCode);
  return static_cast<std::int32_t>(nCode);
}

TEST(ResultCode, IsReadAsSscanfReadsIt) {
  // Ten bytes of what matters to the pattern "0x%08X", in every order that chance brings.
  constexpr std::string_view bytes = "0x0x0123456789abcdefABCDEF+- \tZ";
  Support::Random random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text = i % 4 == 0 ? "" : "0x";
    while (text.size() < 10)
      text += bytes[random.Below(bytes.size())];
    const CParamsRS params = OneParam(text);
    ASSERT_EQ(params.getHRESULT(), ScannedResult(text)) << text;
    ASSERT_EQ(CParamsRS::getHRESULT(params.paramListRef()), ScannedResult(text)) << text;
  }
}

TEST(ResultCode, IsMinusOneOrZeroWhereThereIsNone) {
  const struct {
    std::string text;
    long lMember, lStatic;
  } cases[] = {
      {"", -1, -1},
      {"CMD;", -1, -1},
      {"H;    11;0x800040055", -1, -1},
      {"H;    10;0x8000", -1, 0x8000},  // the text ends early: not ten bytes, yet readable
      {"    10;0x00000005;    10;0x00000007", -1, -1},  // the length field passes for the header
      {"H;    12;" + std::string("0x80004005\0\0", 12), kFailCode, -1},
      {"H;10 ;0x00000009 ", 0x9, 0x9},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CParamsRS(c.text).getHRESULT(), c.lMember) << c.text;
    EXPECT_EQ(CParamsRS::getHRESULT(c.text), c.lStatic) << c.text;
  }
  // Texts that only the static reader accepts.
  EXPECT_EQ(CParamsRS::getHRESULT("no separator"), -1);
  EXPECT_EQ(CParamsRS::getHRESULT("10"), 0);
}

TEST(ParameterBuilder, ReadsBackWhatWentIn) {
  for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
    Support::Random random(nSeed);
    Plain::Built built;
    for (int i = 0; i < 60; ++i) {
      built.Step(random);
      ASSERT_EQ(random.OneIn(2) ? built.Difference() : "", "") << nSeed << ' ' << i;
    }
  }
}

TEST(ParameterBuilder, AppendsReadyMadeSegments) {
  CParamsRS params;
  params.addHeader("CMD");
  params.append("     2;xy;     1;z");
  params.append("");
  EXPECT_EQ(params.paramListRef(), "CMD;     2;xy;     1;z;");
  EXPECT_TRUE(Refuses([&] { params.append("     1;a;b"); }));
  EXPECT_EQ(params.paramListRef(), "CMD;     2;xy;     1;z;;     1;a;b");
  EXPECT_EQ(params.count(), 4);
  EXPECT_EQ(params.getStringParamAt(2), "a");
}

TEST(ParameterBuilder, MayBeGivenItsOwnText) {
  CParamsRS params = OneParam("x");
  const std::string before = params.paramList();
  params.addParam(params.paramListRef());
  params.SetParams(params.paramListRef());
  ExpectHolds(params, "H", {"x", before});
  params.SetParams("000001;x");
  params.append(params.paramListRef());
  params.addHeader(params.paramListRef());
  ExpectHolds(params, "000001;x;000001;x", {"x", "x"});
}

}  // namespace
