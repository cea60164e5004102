// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The typed readers of a single value, and what scalars and the empty values answer.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/GuardedBuffer.h"
#include "tests/support/Values.h"

namespace {

using JSON::JSONValue;
using JSON::UnsafeJSONValue;
using Support::ValueOf;
using Support::Written;
using namespace std::string_view_literals;

void ExpectReads(const JSONValue& value, double dExpected, bool bExpected) {
  SCOPED_TRACE("type " + std::to_string(value.eType));
  const double d = value.AsDouble();
  EXPECT_TRUE(d == dExpected || (std::isnan(d) && std::isnan(dExpected))) << d;
  const double dInt = std::isnan(dExpected) ? 0 : std::clamp<double>(dExpected, INT_MIN, INT_MAX);
  EXPECT_EQ(value.AsInt(), static_cast<int>(dInt));
  EXPECT_EQ(value.AsBoolean(), bExpected);
}

// From the text itself, whatever nLength says, up to the first byte that does not belong to it.
// Behind that byte nothing can be read.
TEST(JsonValue, ReadsNumbersAsTheCLibraryDoes) {
  std::istringstream tokens(
      "0 007 1-2 +-1 -+1 +1 - 2147483647 -1234567890 2147483648 -2147483648 -2147483649 4294967296 "
      "2.9 -2.9 "
      "0.0 -99999999999999999999999 0000000000000000000000042 1e2e3 -.e 1e+ 2147483646.999 "
      "2147483647.5 -2147483648.9 1e400 -1e400 1e-400 nan -inf 0x1p4 "
      "0.10000000000000000555111512312578270211815834045410156250000000");
  std::string strText;  // empty at first
  do {
    SCOPED_TRACE(strText);
    const long long nInteger = std::strtoll(strText.c_str(), nullptr, 10);
    const auto dInteger = static_cast<double>(std::clamp<long long>(nInteger, INT_MIN, INT_MAX));
    const double dReal = std::strtod(strText.c_str(), nullptr);
    for (const char cBehind : {'\0', ',', ']', '"'}) {
      const Support::GuardedBuffer buffer(strText + cBehind);
      for (const int nLength : {static_cast<int>(strText.size()), 0, 1, INT_MAX, -1}) {
        UnsafeJSONValue value = ValueOf(buffer.view(), JSON::jtInteger);
        value.nLength = nLength;
        ExpectReads(value, dInteger, dInteger != 0);
        EXPECT_EQ(value.AsLong64(), nInteger);
        EXPECT_EQ(Written(value), strText.substr(0, strText.find_first_not_of("+-0123456789")));
        value.eType = JSON::jtDouble;
        ExpectReads(value, dReal, dReal != 0);
        EXPECT_EQ(Written(value), strText.substr(0, strText.find_first_not_of("+-0123456789.eE")));
      }
    }
  } while (tokens >> strText);
}

TEST(JsonValue, ReadsTheOtherTypesByWhatTheySay) {
  const struct {
    JSON::Type type;
    std::string_view text;
    int nExpected;
    bool bExpected;
  } cases[] = {
      {JSON::jtBoolean, "true", 1, true},  {JSON::jtBoolean, "false", 0, false},
      {JSON::jtBoolean, {}, 0, false},     {JSON::jtInteger, {}, 0, false},
      {JSON::jtDouble, {}, 0, false},      {JSON::jtString, {}, 0, false},
      {JSON::jtString, "12", 0, true},     {JSON::jtString, "", 0, false},
      {JSON::jtString, "\0a"sv, 0, false}, {JSON::jtNull, "null", 0, false},
      {JSON::jtNone, "1", 0, false},       {JSON::jtArray, "1", 0, false},
      {JSON::jtObject, "1", 0, false},     {JSON::jtInteger, " \t12", 12, true},
  };
  for (const auto& c : cases) {
    UnsafeJSONValue value = ValueOf(c.text, c.type);
    ExpectReads(value, c.nExpected, c.bExpected);
    EXPECT_EQ(value.AsLong64(), c.nExpected);
    value.nLength = 0;  // as a host leaves it
    ExpectReads(value, c.nExpected, c.bExpected);
  }
}

TEST(JsonValue, ReadsIntegersOfSixtyFourBitsAndRealsWithoutLimit) {
  const struct {
    JSON::Type eType;
    std::string text;
    long long nLong64;
    double real;
  } kCases[] = {
      {JSON::jtInteger, "-0", 0, -0.0},
      {JSON::jtInteger, "+12", 12, 12.0},
      {JSON::jtInteger, "0x10", 0, 0.0},  // as a failed text may leave it
      {JSON::jtInteger, "-9007199254740993", -9007199254740993LL, -9007199254740992.0},
      {JSON::jtInteger, "9223372036854775808", LLONG_MAX, 9223372036854775808.0},
      {JSON::jtInteger, "-9223372036854775809", LLONG_MIN, -9223372036854775808.0},
      {JSON::jtInteger, "-" + std::string(400, '9'), LLONG_MIN, -HUGE_VAL},
      {JSON::jtDouble, "-2.99", -2, -2.99},
      {JSON::jtDouble, "9223372036854775808e0", LLONG_MAX, 9223372036854775808.0},
      {JSON::jtDouble, "-9.3e18", LLONG_MIN, -9.3e18},
      {JSON::jtDouble, "1e999", LLONG_MAX, HUGE_VAL},
      {JSON::jtBoolean, "true", 1, 1.0},
      {JSON::jtString, "12", 0, 0.0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    const std::string strText = c.text + ']';
    const UnsafeJSONValue value = ValueOf(strText.c_str(), c.eType);
    EXPECT_EQ(value.AsLong64(), c.nLong64);
    EXPECT_EQ(value.AsReal(), c.real);
    EXPECT_EQ(std::signbit(value.AsReal()), std::signbit(c.real));
  }
  EXPECT_EQ(ValueOf("nan", JSON::jtDouble).AsLong64(), 0);
  EXPECT_EQ(JSONValue(JSON::jtInteger).AsReal(), 0.0);  // without text
}

TEST(JsonValue, AnswersLookupsInScalarsWithTheEmptyValues) {
  UnsafeJSONValue scalar = ValueOf("text");
  EXPECT_EQ(scalar.Size(), 0);
  EXPECT_TRUE(&scalar["text"] == &JSONValue::NonConstNone());
  EXPECT_TRUE(&scalar[0] == &JSONValue::NonConstNone());
  EXPECT_TRUE(&std::as_const(scalar)["text"] == &JSONValue::None());
  EXPECT_TRUE(&std::as_const(scalar)[0] == &JSONValue::None());
  JSONValue& none = JSONValue::NonConstNone();
  none.InternalUpdateValue("x");
  EXPECT_EQ(&none.Set("a", 1), &JSONValue::None());
  EXPECT_EQ(&none["b"].Set(0, "text"), &JSONValue::None());
  EXPECT_EQ(none.InternalUpdateByName("a", "1", JSON::jtInteger), nullptr);
  EXPECT_NE(&JSONValue::None(), &none);
  for (const JSONValue* pValue : {&JSONValue::None(), static_cast<const JSONValue*>(&none)}) {
    ExpectReads(*pValue, 0, false);
    EXPECT_EQ(pValue->eType, JSON::jtNone);
    EXPECT_TRUE(pValue->pText == nullptr && pValue->pComposite == nullptr);
    EXPECT_EQ(Written(*pValue), " (refused)");
  }
}

}  // namespace
