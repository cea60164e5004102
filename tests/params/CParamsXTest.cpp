// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings: what the builder writes, what the reader takes from well-formed and from
// broken texts, and that no text makes the scan hang or read outside.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "params/CParamsX.h"
#include "tests/support/Random.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kExample =
    "CMD;    10;0x00000000;     3;abc;     2;42;     3;a;b;    10;0x80004005";
constexpr long kFailCode = -2147467259;  // 0x80004005

Texts AllTexts(const CParamsRS& params) {
  Texts texts;
  for (int i = 0; i < params.count(); ++i) {
    texts.push_back(params.getStringParamAt(i));
  }
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

TEST(ParameterString, TakesTextsApartAtTheirLengthFields) {
  const struct {
    std::string text;
    std::string header;
    Texts texts;
  } cases[] = {
      {"", "", {}},
      {"CMD;", "CMD", {}},
      {"A;B;     1;x", "A", {"", "x"}},
      {"000005;hello;     1;7", "", {"hello", "7"}},
      {"     5;hello;     1;7", "     5", {"", "7"}},
      {"H;     0;;     1;x", "H", {"", "x"}},
      {"H;2;xy;+1;z", "H", {"xy", "z"}},
      {"H;\t\n\v\f\r 1;x", "H", {"x"}},
      {"H;     2;xy?     1;z", "H", {"xy", "z"}},  // any byte separates
      {"H;     2;xy;", "H", {"xy"}},
      {"H;     9;xy;z", "H", {"xy;z"}},
      {"H;2147483647;xy", "H", {"xy"}},
      {"H;99999999999999999999999;xy", "H", {"xy"}},
      {"H; 12abc;0123456789ab;1;x", "H", {"0123456789ab", "x"}},
      {std::string("H;     3;a\0b;     1;x", 21), "H", {std::string("a\0b", 3), "x"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CParamsRS params(c.text);
    ExpectHolds(params, c.header, c.texts);
    EXPECT_EQ(params.paramListRef(), c.text);
    params.SetParams(kExample);
    params.SetParams(c.text);  // nothing of the text before is left
    ExpectHolds(params, c.header, c.texts);
  }
}

TEST(ParameterString, RefusesMalformedLengthFieldsButKeepsWhatItTookIn) {
  const struct {
    std::string text;
    int nCount;          // parameters counted, the malformed one included
    bool bLastReadable;  // a negative length reads to the end
  } cases[] = {
      {"abc", 1, false},
      {"123456", 1, false},
      {"H;x", 1, false},
      {"H;     1;x;y", 2, false},
      {"H;     1;x;;", 2, false},
      {"H;;", 1, false},
      {"H;-4;", 1, true},
      {"H;1;x;-1;rest", 2, true},
      {"H;-99999999999999999999;rest", 1, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CParamsRS params(kExample);
    EXPECT_TRUE(Refuses([&] { params.SetParams(c.text); }));
    EXPECT_EQ(params.paramListRef(), c.text);
    ASSERT_EQ(params.count(), c.nCount);
    if (c.bLastReadable) {
      const std::string rest = c.text.substr(c.text.rfind(';') + 1);
      EXPECT_EQ(params.getStringParamAt(c.nCount - 1), rest);
    } else {
      EXPECT_TRUE(Refuses([&] { params.getStringParamAt(c.nCount - 1); }));
      EXPECT_TRUE(Refuses([&] { params.getLongParamAt(c.nCount - 1); }));
      EXPECT_EQ(Refuses([&] { params.getHRESULT(); }), c.nCount == 1);
    }
  }
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

TEST(ParameterString, ReadsIntegersAsStrtolDoes) {
  for (const std::string text : {"",
                                 "-42",
                                 "+42",
                                 "007",
                                 " \t\n\v\f\r7",
                                 "12x",
                                 "x12",
                                 "-",
                                 "--1",
                                 "+-1",
                                 "- 1",
                                 "0x10",
                                 "2147483647",
                                 "2147483648",
                                 "-2147483648",
                                 "-2147483649",
                                 "9223372036854775807",
                                 "9223372036854775808",
                                 "-9223372036854775809",
                                 "99999999999999999999999"}) {
    EXPECT_EQ(OneParam(text).getLongParamAt(0), std::strtol(text.c_str(), nullptr, 10)) << text;
  }
  for (const long lValue : {0L, -1L, LONG_MAX, LONG_MIN}) {
    CParamsRS params;
    params.addParam(lValue);
    EXPECT_EQ(params.getStringParamAt(0), std::to_string(lValue));
  }
}

TEST(ParameterString, GivesNothingForAnIndexOutOfRange) {
  CParamsRS params;
  for (int nCount = 0; nCount < 2; ++nCount) {
    for (const int nIndex : {-1, nCount, INT_MAX, INT_MIN}) {
      EXPECT_EQ(params.getStringParamAt(nIndex), "");
      EXPECT_EQ(params.getLongParamAt(nIndex), 0);
    }
    params.addParam("7");
  }
}

TEST(ResultCode, IsReadAsSscanfReadsIt) {
  // Ten bytes of what matters to the pattern "0x%08X", in every order that chance brings.
  constexpr char szBytes[] = "0x0x0123456789abcdefABCDEF+- \tZ";
  Support::Random random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text = i % 4 == 0 ? "" : "0x";
    while (text.size() < 10) {
      text += szBytes[random.Below(sizeof szBytes - 1)];
    }
    unsigned int nCode = 0;
    std::sscanf(text.c_str(), "0x%08X", &nCode);
    const CParamsRS params = OneParam(text);
    ASSERT_EQ(params.getHRESULT(), static_cast<std::int32_t>(nCode)) << text;
    ASSERT_EQ(CParamsRS::getHRESULT(params.paramListRef()), static_cast<std::int32_t>(nCode))
        << text;
  }
}

TEST(ResultCode, IsWrittenAsEightDigitsOfItsLower32Bits) {
  for (const long lCode : {0L, 1L, -1L, kFailCode, 0x7FFFFFFFL, LONG_MAX, LONG_MIN}) {
    char szExpected[16];
    std::snprintf(szExpected, sizeof szExpected, "0x%08X", static_cast<unsigned int>(lCode));
    CParamsRS params;
    params.addResult(lCode);
    EXPECT_EQ(params.getStringParamAt(0), szExpected);
    EXPECT_EQ(params.getHRESULT(), static_cast<std::int32_t>(lCode));
  }
}

TEST(ResultCode, IsMinusOneOrZeroWhereThereIsNone) {
  const struct {
    std::string text;
    long lMember, lStatic;
  } cases[] = {
      {"", -1, -1},
      {"CMD;", -1, -1},
      {"H;     3;abc", -1, -1},
      {"H;    11;0x800040055", -1, -1},
      {"H;    10;0xZZZZZZZZ", 0, 0},
      {"H;    10;0X80004005", 0, 0},
      {"H;    10;0x8000", -1, 0x8000},  // the text ends early: not ten bytes, yet readable
      {"000010;0xFFFFFFFF", -1, -1},
      {"    10;0x00000005;    10;0x00000007", -1, -1},  // the length field passes for the header
      {"H;    12;" + std::string("0x80004005\0\0", 12), kFailCode, -1},
      {"H;    10;" + std::string("0x8000\0\0\0\0", 10), -1, 0x8000},
      {"H;    10;     3;abc", 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(CParamsRS(c.text).getHRESULT(), c.lMember);
    EXPECT_EQ(CParamsRS::getHRESULT(c.text), c.lStatic);
  }
  // Texts that only the static reader accepts.
  EXPECT_EQ(CParamsRS::getHRESULT("no separator"), -1);
  EXPECT_EQ(CParamsRS::getHRESULT("H;    10"), 0);
  EXPECT_EQ(CParamsRS::getHRESULT("10"), 0);
  EXPECT_EQ(CParamsRS::getHRESULT("H;10 ;0x00000009"), 9);
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
  const Texts example = AllTexts(CParamsRS(kExample));
  CParamsRS source(std::string("H;     1;x"));  // so short that it lies inside the string object
  EXPECT_EQ(source.getStringParamAt(0), "x");
  CParamsRS copy(source);
  CParamsRS assigned(kExample);
  assigned = source;
  source.SetParams(kExample);
  ExpectHolds(copy, "H", {"x"});
  ExpectHolds(assigned, "H", {"x"});

  CParamsRS moved(std::move(copy));
  ExpectHolds(moved, "H", {"x"});
  ExpectHolds(copy, "", {});  // NOLINT(bugprone-use-after-move): left empty
  moved = std::move(source);
  ExpectHolds(moved, "CMD", example);
  ExpectHolds(source, "", {});  // NOLINT(bugprone-use-after-move): left empty

  moved.clear();
  moved.dump();
  EXPECT_EQ(moved.length(), 0);
  ExpectHolds(moved, "", {});
  moved.addParam("again");
  ExpectHolds(moved, "", {"again"});
}

TEST(ParameterObject, ReservesOnlyWhatThereIs) {
  EXPECT_GE(CParamsRS(1000).paramListRef().capacity(), 1000U);
  EXPECT_EQ(CParamsRS(LONG_MIN).length(), 0);
  EXPECT_THROW(CParamsRS{LONG_MAX}, std::bad_alloc);
}

TEST(ParameterString, ReadsBackWhateverWasBuilt) {
  constexpr char szBytes[] = {';', ';', '0', ' ', 'x', '\0', '\xFF'};
  Support::Random random(2);
  for (int i = 0; i < 300; ++i) {
    const std::string header = "H" + std::to_string(i);
    CParamsRS built;
    built.addHeader(header);
    Texts texts(random.Below(6));
    for (std::string& text : texts) {
      text.resize(random.Below(40));
      std::generate(text.begin(), text.end(), [&] { return random.Of(szBytes); });
      built.addParam(text);
    }
    ExpectHolds(CParamsRS(built.paramListRef()), header, texts);
  }
}

}  // namespace
