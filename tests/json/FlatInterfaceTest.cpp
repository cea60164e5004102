// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface: every reader on every kind of value, by each way of finding it. That a C
// program can use it is tested by tests/chost.

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "json/JSON.h"
#include "json/JSONMessage.h"

namespace {

// A handle that releases itself.
class FlatInterface : public testing::Test {
 protected:
  ~FlatInterface() override { JSON_FreeMessage(handle); }

  JSON_HANDLE handle = JSON_AllocMessage();
};

// A null string is no string; for comparing and printing it gets a text of its own.
std::string Shown(const char* szText) { return szText == nullptr ? "(null)" : szText; }

TEST_F(FlatInterface, ReadsEveryKindOfValueByOrdinalNameAndPath) {
  const struct {
    const char* szName;
    int nNull;
    const char* szString;
    int nInt;
    double dDouble;
    unsigned long long nUnsigned;
  } cases[] = {
      {"a", 1, nullptr, 0, 0.0, 0},
      {"b", 0, "x\"\xC3\xA9", 0, 0.0, 0},
      {"c", 0, nullptr, 1, 1.0, 1},
      {"d", 0, nullptr, 3, 3.9, 3},
      {"e", 0, nullptr, -1, -1.0, ULLONG_MAX},
      {"f", 0, "12", 0, 0.0, 0},
      {"o", 0, nullptr, 0, 0.0, 0},
      {"g", 0, nullptr, 0, 0.0, 0},
      {"h", 0, nullptr, INT_MAX, INT_MAX, 99999999999},
      {"missing", 0, nullptr, 0, 0.0, 0},
  };
  ASSERT_EQ(JSON_ParseMessage(handle, R"({"a":null,"b":"x\"\u00e9","c":true,"d":3.9,"e":-1,)"
                                      R"("f":"12","o":{"p":7},"g":false,"h":99999999999} rest)"),
            1);
  EXPECT_EQ(JSON_MessageSize(handle), 9);
  int nOrdinal = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szName);
    EXPECT_EQ(JSON_IsOrdinalNull(handle, nOrdinal), c.nNull);
    EXPECT_EQ(JSON_IsNameNull(handle, c.szName), c.nNull);
    EXPECT_EQ(JSON_IsPathNull(handle, c.szName), c.nNull);
    EXPECT_EQ(Shown(JSON_GetOrdinalAsString(handle, nOrdinal)), Shown(c.szString));
    EXPECT_EQ(Shown(JSON_GetNameAsString(handle, c.szName)), Shown(c.szString));
    EXPECT_EQ(Shown(JSON_GetPathAsString(handle, c.szName)), Shown(c.szString));
    EXPECT_EQ(JSON_GetOrdinalAsInt(handle, nOrdinal), c.nInt);
    EXPECT_EQ(JSON_GetNameAsInt(handle, c.szName), c.nInt);
    EXPECT_EQ(JSON_GetPathAsInt(handle, c.szName), c.nInt);
    EXPECT_EQ(JSON_GetOrdinalAsDouble(handle, nOrdinal), c.dDouble);
    EXPECT_EQ(JSON_GetNameAsDouble(handle, c.szName), c.dDouble);
    EXPECT_EQ(JSON_GetPathAsDouble(handle, c.szName), c.dDouble);
    EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, nOrdinal), c.nUnsigned);
    EXPECT_EQ(JSON_GetNameAsUnsignedLong64(handle, c.szName), c.nUnsigned);
    ++nOrdinal;
  }
  EXPECT_EQ(JSON_GetPathAsInt(handle, "o.p"), 7);
  EXPECT_EQ(JSON_GetOrdinalAsInt(handle, -1), 0);
  EXPECT_EQ(JSON_IsPathNull(handle, ""), 0);
  EXPECT_EQ(JSON_IsPathNull(handle, nullptr), 0);
  EXPECT_EQ(JSON_IsNameNull(handle, nullptr), 1);  // the first member
  ASSERT_EQ(JSON_ParseMessage(handle, "[5,null,6]"), 1);
  EXPECT_EQ(JSON_GetNameAsInt(handle, "2"), 6);
  EXPECT_EQ(JSON_IsPathNull(handle, "1"), 1);
  EXPECT_EQ(JSON_GetNameAsInt(handle, nullptr), 0);  // nothing
}

TEST_F(FlatInterface, ReadsUnsignedIntegersAsSscanfDoes) {
  for (const char* szToken :
       {"007", "+5", "-5", "+-1", "--1", "1-2", "-", "5+", "9223372036854775807",
        "9223372036854775808", "18446744073709551615", "-9223372036854775808",
        "-9223372036854775809", "99999999999999999999999999"}) {
    long long nExpected = 0;
    std::sscanf(szToken, "%lld", &nExpected);
    ASSERT_EQ(JSON_ParseMessage(handle, ("[" + std::string(szToken) + "]").c_str()), 1) << szToken;
    EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, 0),
              static_cast<unsigned long long>(nExpected))
        << szToken;
  }
}

TEST_F(FlatInterface, LimitsRealNumbersToTheUnsignedRange) {
  const struct {
    const char* szToken;
    unsigned long long nExpected;
  } cases[] = {
      {"0.9", 0},
      {"-0.9", 0},
      {"-1.0", 0},
      {"-1e300", 0},
      {"2e0", 2},
      {"9223372036854775807.5", 1ULL << 63},
      {"9223372036854775808.0", 1ULL << 63},
      {"18446744073709549568.0", ULLONG_MAX - 2047},  // the last double below 2^64
      {"18446744073709551616.0", ULLONG_MAX},
      {"1e400", ULLONG_MAX},
  };
  for (const auto& c : cases) {
    const std::string text = "[true," + std::string(c.szToken) + "]";
    ASSERT_EQ(JSON_ParseMessage(handle, text.c_str()), 1) << c.szToken;
    EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, 1), c.nExpected) << c.szToken;
  }
  auto* const pMessage = reinterpret_cast<JSON::Message*>(handle);
  pMessage->InternalUpdateByOrdinal(1, "nan", JSON::jtDouble);
  EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, 1), 0U);
}

TEST_F(FlatInterface, FindsNothingBeforeAParseAndKeepsWhatAFailedOneLeft) {
  for (const char* szText : {"", "12"}) {
    EXPECT_EQ(JSON_ParseMessage(handle, szText), 0);
    EXPECT_EQ(JSON_MessageSize(handle), 0);
    EXPECT_EQ(JSON_GetNameAsString(handle, "a"), nullptr);
    EXPECT_EQ(JSON_IsNameNull(handle, "a"), 0);
    EXPECT_EQ(JSON_IsOrdinalNull(handle, 0), 0);
    EXPECT_EQ(JSON_GetPathAsDouble(handle, "a"), 0.0);
    EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, 0), 0U);
  }
  EXPECT_EQ(JSON_ParseMessage(handle, R"({"a":1,"b":2,"c")"), 0);
  EXPECT_EQ(JSON_MessageSize(handle), 2);
  EXPECT_EQ(JSON_ParseMessage(handle, nullptr), 0);  // changes nothing
  EXPECT_EQ(JSON_GetPathAsInt(handle, "b"), 2);
  JSON_FreeMessage(nullptr);
  // The handle is the message of C++.
  reinterpret_cast<JSON::Message*>(handle)->Set("s", static_cast<const char*>(nullptr));
  EXPECT_EQ(JSON_GetNameAsString(handle, "s"), nullptr);
}

TEST(FlatEscape, WritesOnlyWhatFitsWithOneByteToSpare) {
  constexpr char szExpected[] = "a\\\"\\n";  // 5 bytes
  for (int nRoom = -1; nRoom < 9; ++nRoom) {
    char buffer[] = "##########";
    char* pDest = buffer + 1;
    const int nWritten = JSON_EscapeString(&pDest, pDest + nRoom, "a\"\n");
    EXPECT_EQ(nWritten, nRoom >= 7 ? 1 : 0) << nRoom;
    EXPECT_EQ(pDest, buffer + 1);
    EXPECT_STREQ(pDest, nWritten == 1 ? szExpected : "#########") << nRoom;
    EXPECT_EQ(buffer[0], '#');
    EXPECT_STREQ(buffer + 7, "###");
  }
}

}  // namespace
