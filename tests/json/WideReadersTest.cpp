// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers beyond 32 bits: AsLong64() and AsReal() beside what the C library reads.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "json/JSONMessage.h"

namespace {

struct Case {
  const char* szText;  // a JSON value
  long long nLong64;
  double real;
};

const Case kCases[] = {
    {"0", 0, 0.0},
    {"-0", 0, -0.0},
    {"+12", 12, 12.0},
    {"2147483648", 2147483648LL, 2147483648.0},
    {"-9007199254740993", -9007199254740993LL, -9007199254740992.0},
    {"9223372036854775807", LLONG_MAX, 9223372036854775808.0},
    {"9223372036854775808", LLONG_MAX, 9223372036854775808.0},
    {"-9223372036854775809", LLONG_MIN, -9223372036854775808.0},
    {"123456789012345678901234567890", LLONG_MAX, 123456789012345678901234567890.0},
    {"1.9e3", 1900, 1900.0},
    {"-2.99", -2, -2.99},
    {"9.3e18", LLONG_MAX, 9.3e18},
    {"-9.3e18", LLONG_MIN, -9.3e18},
    {"1e999", LLONG_MAX, HUGE_VAL},
    {"true", 1, 1.0},
    {"false", 0, 0.0},
    {"null", 0, 0.0},
    {"\"12\"", 0, 0.0},
    {"[12]", 0, 0.0},
};

TEST(WideReaders, ReadIntegersOfSixtyFourBitsAndRealsWithoutLimit) {
  for (const Case& wanted : kCases) {
    SCOPED_TRACE(wanted.szText);
    JSON::Message message;
    ASSERT_TRUE(message.Parse((std::string("[") + wanted.szText + "]").c_str()));
    EXPECT_EQ(message[0].AsLong64(), wanted.nLong64);
    EXPECT_EQ(message[0].AsReal(), wanted.real);
    EXPECT_EQ(std::signbit(message[0].AsReal()), std::signbit(wanted.real));
  }
  JSON::Message message;
  ASSERT_TRUE(message.Parse(("[-" + std::string(400, '9') + "]").c_str()));
  EXPECT_EQ(message[0].AsReal(), -HUGE_VAL);
  EXPECT_EQ(JSON::JSONValue::None().AsLong64(), 0);
  EXPECT_EQ(JSON::JSONValue(JSON::jtInteger).AsReal(), 0.0);  // without text
  message.InternalUpdateByOrdinal(0, "nan", JSON::jtDouble);
  EXPECT_EQ(message[0].AsLong64(), 0);
}

// A failed text may leave a number in front of bytes that another reader would take along.
TEST(WideReaders, StopWhereTheNumberStops) {
  JSON::Message message;
  EXPECT_FALSE(message.Parse("[0x10]"));
  EXPECT_EQ(message[0].AsReal(), 0.0);
  EXPECT_EQ(message[0].AsLong64(), 0);
}

}  // namespace
