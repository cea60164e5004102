// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings: what the builder writes, what the reader takes from well-formed and from
// broken texts, and that no text makes the scan hang or read outside.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "params/CParamsX.h"
#include "tests/support/PlainParams.h"
#include "tests/support/Random.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kExample =
    "CMD;    10;0x00000000;     3;abc;     2;42;     3;a;b;    10;0x80004005";
constexpr long kFailCode = -2147467259;  // 0x80004005

Texts AllTexts(const CParamsRS& params) {
  Texts texts;
  for (int i = 0; i < params.count(); ++i)
    texts.push_back(params.getStringParamAt(i));
  return texts;
}

void ExpectHolds(const CParamsRS& params, const std::string& header, const Texts& texts) {
  EXPECT_EQ(params.getHeader(), header);
  EXPECT_EQ(AllTexts(params), texts);
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

TEST(ParameterString, WritesAndReadsEveryKindOfParameter) {
  CParamsRS sender(100);
  sender.addHeader("CMD");
  sender.addResult(0);
  sender.addParam("abc");
  sender.addParam(42);
  sender.addParam("a;b");
  sender.addResult(kFailCode);
  EXPECT_EQ(sender.paramListRef(), kExample);
  EXPECT_EQ(sender.length(), 71);
  const CParamsRS receiver(sender.paramList());
  for (const CParamsRS* pParams : {&std::as_const(sender), &receiver}) {
    ExpectHolds(*pParams, "CMD", {"0x00000000", "abc", "42", "a;b", "0x80004005"});
    EXPECT_EQ(pParams->getLongParamAt(2), 42);
  }
}

long ScannedResult(const std::string& text) {
  unsigned int nCode = 0;
  std::sscanf(text.c_str(), "0x%08X", &nCode);
  return static_cast<std::int32_t>(nCode);
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
    ASSERT_EQ(params.getHeader(), expected.strHeader);
    const int nCount = params.count();
    ASSERT_EQ(nCount, static_cast<int>(expected.vTexts.size()));
    for (int k = 0; k < nCount - (expected.bUnreadable ? 1 : 0); ++k) {
      const std::string& strText = expected.vTexts[static_cast<std::size_t>(k)];
      ASSERT_EQ(params.getStringParamAt(k), strText);
      ASSERT_EQ(params.getLongParamAt(k), std::strtol(strText.c_str(), nullptr, 10));
    }
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

// A result code is its lower 32 bits.
TEST(ParameterBuilder, WritesTheEndsOfEveryRange) {
  for (const long lValue : {0L, 1L, -1L, kFailCode, 0x7FFFFFFFL, LONG_MAX, LONG_MIN}) {
    char szCode[16];
    std::snprintf(szCode, sizeof szCode, "0x%08X", static_cast<unsigned int>(lValue));
    CParamsRS params;
    params.addResult(lValue);
    params.addParam(lValue);
    ExpectHolds(params, "", {szCode, std::to_string(lValue)});
    EXPECT_EQ(params.getHRESULT(), static_cast<std::int32_t>(lValue));
    EXPECT_EQ(params.getLongParamAt(1), lValue);
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

TEST(ParameterBuilder, AppendsReadyMadeSegments) {
  CParamsRS params;
  params.addHeader("CMD");
  params.append("     2;xy;     1;z");
  EXPECT_EQ(params.paramListRef(), "CMD;     2;xy;     1;z");
  ExpectHolds(params, "CMD", {"xy", "z"});
  params.append("");
  EXPECT_EQ(params.paramListRef(), "CMD;     2;xy;     1;z;");
  EXPECT_EQ(params.count(), 2);
  EXPECT_TRUE(Refuses([&] { params.append("     1;a;b"); }));
  EXPECT_EQ(params.paramListRef(), "CMD;     2;xy;     1;z;;     1;a;b");
  EXPECT_EQ(params.count(), 4);
  EXPECT_EQ(params.getStringParamAt(2), "a");
}

TEST(ParameterBuilder, PutsOrReplacesTheHeaderInFrontOfTheParameters) {
  CParamsRS params;
  params.addHeader("");
  EXPECT_EQ(params.length(), 0);
  params.addParam("first");
  for (const char* szHeader : {"CMD", "A longer header than before", "x"}) {
    params.addHeader(szHeader);
    params.addHeader("");
    EXPECT_EQ(params.paramListRef(), std::string(szHeader) + ";     5;first");
    ExpectHolds(params, szHeader, {"first"});
  }
}

TEST(ParameterBuilder, MayBeGivenItsOwnText) {
  CParamsRS params = OneParam("x");
  const std::string before = params.paramList();
  params.addParam(params.paramListRef());
  ExpectHolds(params, "H", {"x", before});
  params.SetParams(params.paramListRef());
  ExpectHolds(params, "H", {"x", before});
  params.SetParams("000001;x");
  params.append(params.paramListRef());
  ExpectHolds(params, "", {"x", "x"});
  params.addHeader(params.paramListRef());
  EXPECT_EQ(params.getHeader(), "000001;x;000001;x");
  EXPECT_EQ(AllTexts(params), (Texts{"x", "x"}));
}

TEST(ParameterBuilder, WidensTheLengthFieldOfLongTexts) {
  CParamsRS params;
  params.addParam(std::string(999999, 'x'));
  params.addParam(std::string(1000000, 'y'));
  EXPECT_EQ(params.paramListRef().substr(0, 8), "999999;x");
  EXPECT_EQ(params.paramListRef().substr(999999 + 7, 10), ";1000000;y");
}

TEST(ParameterObject, CopiesAndMovesWithoutSharingAnything) {
  CParamsRS source(std::string("H;     1;x"));  // so short that it lies inside the string object
  EXPECT_EQ(source.getStringParamAt(0), "x");
  CParamsRS copy(source);
  CParamsRS assigned(kExample);
  assigned = source;
  source.SetParams("I;     2;yz");
  ExpectHolds(copy, "H", {"x"});
  ExpectHolds(assigned, "H", {"x"});

  CParamsRS moved(std::move(copy));
  ExpectHolds(moved, "H", {"x"});
  ExpectHolds(copy, "", {});  // NOLINT(bugprone-use-after-move): left empty
  moved = std::move(source);
  ExpectHolds(moved, "I", {"yz"});
  ExpectHolds(source, "", {});  // NOLINT(bugprone-use-after-move): left empty

  moved.clear();
  moved.dump();
  EXPECT_EQ(moved.length(), 0);
  moved.addParam("again");
  ExpectHolds(moved, "", {"again"});
}

TEST(ParameterObject, ReservesOnlyWhatThereIs) {
  EXPECT_GE(CParamsRS(1000).paramListRef().capacity(), 1000U);
  EXPECT_EQ(CParamsRS(LONG_MIN).length(), 0);
  EXPECT_THROW(CParamsRS{LONG_MAX}, std::bad_alloc);
}

}  // namespace
