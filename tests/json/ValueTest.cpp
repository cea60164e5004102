// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The typed readers of a single value, and what scalars and the empty values answer.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "tests/support/GuardedBuffer.h"

namespace {

using JSON::JSONValue;
using JSON::Type;
using JSON::UnsafeJSONValue;

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

UnsafeJSONValue MakeValue(Type type, const char* text, int length) {
  UnsafeJSONValue value(type);
  value.pText = text;
  value.nLength = length;
  return value;
}

struct Reading {
  Type type;
  std::string_view text;
  int nInt;
  double nDouble;
  bool bBoolean;
};

constexpr Reading kReadings[] = {
    {JSON::jtInteger, "0", 0, 0, false},
    {JSON::jtInteger, "007", 7, 7, true},
    {JSON::jtInteger, "1-2", 1, 1, true},
    {JSON::jtInteger, "+-1", 0, 0, false},
    {JSON::jtInteger, "-", 0, 0, false},
    {JSON::jtInteger, "", 0, 0, false},
    {JSON::jtInteger, " \t12", 12, 12, true},
    {JSON::jtInteger, "2147483647", kMax, kMax, true},
    {JSON::jtInteger, "2147483648", kMax, kMax, true},
    {JSON::jtInteger, "-2147483648", kMin, kMin, true},
    {JSON::jtInteger, "-2147483649", kMin, kMin, true},
    {JSON::jtInteger, "-99999999999999999999999", kMin, kMin, true},
    {JSON::jtInteger, "4294967296", kMax, kMax, true},
    {JSON::jtInteger, "0000000000000000000000042", 42, 42, true},
    {JSON::jtDouble, "2.9", 2, 2.9, true},
    {JSON::jtDouble, "-2.9", -2, -2.9, true},
    {JSON::jtDouble, "0.0", 0, 0, false},
    {JSON::jtDouble, "1e2e3", 100, 100, true},
    {JSON::jtDouble, "-.e", 0, 0, false},
    {JSON::jtDouble, "", 0, 0, false},
    {JSON::jtDouble, "2147483646.999", kMax - 1, 2147483646.999, true},
    {JSON::jtDouble, "2147483647.5", kMax, 2147483647.5, true},
    {JSON::jtDouble, "-2147483648.9", kMin, -2147483648.9, true},
    {JSON::jtDouble, "1e400", kMax, kInfinite, true},
    {JSON::jtDouble, "-1e400", kMin, -kInfinite, true},
    {JSON::jtDouble, "1e-400", 0, 0, false},
    {JSON::jtDouble, "0.10000000000000000555111512312578270211815834045410156250000000", 0, 0.1,
     true},
    {JSON::jtDouble, "1797693134862315700000000000000000000.0e272", kMax, 1.7976931348623157e308,
     true},
    {JSON::jtBoolean, "true", 1, 1, true},
    {JSON::jtBoolean, "false", 0, 0, false},
    {JSON::jtBoolean, "", 0, 0, false},
    {JSON::jtString, "12", 0, 0, true},
    {JSON::jtString, "false", 0, 0, true},
    {JSON::jtString, "", 0, 0, false},
    {JSON::jtString, std::string_view("\0a", 2), 0, 0, false},
    {JSON::jtNull, "null", 0, 0, false},
    {JSON::jtNone, "1", 0, 0, false},
    {JSON::jtArray, "1", 0, 0, false},
    {JSON::jtObject, "1", 0, 0, false},
};

void CheckReading(const JSONValue& value, const Reading& test) {
  SCOPED_TRACE("type " + std::to_string(test.type) + ": " + std::string(test.text));
  EXPECT_EQ(value.AsInt(), test.nInt);
  EXPECT_EQ(value.AsDouble(), test.nDouble);
  EXPECT_EQ(value.AsBoolean(), test.bBoolean);
}

// And nothing behind it: neither where nothing can be read, nor where more digits follow.
TEST(JsonValue, ReadsItsTextByItsType) {
  for (const Reading& test : kReadings) {
    const bool bString = test.type == JSON::jtString;
    Support::GuardedBuffer atEnd(bString ? std::string(test.text) + '\0' : std::string(test.text));
    const auto nLength = static_cast<int>(test.text.size());
    CheckReading(MakeValue(test.type, atEnd.data(), nLength), test);
    std::string strWritten;
    EXPECT_EQ(MakeValue(test.type, atEnd.data(), nLength).Serialize(strWritten),
              test.type != JSON::jtNone);
    if (bString) continue;
    const std::string strMore = std::string(test.text) + "9e9";
    CheckReading(MakeValue(test.type, strMore.c_str(), nLength), test);
  }
}

TEST(JsonValue, ReadsWhatOnlyUpdatesCanStore) {
  EXPECT_EQ(MakeValue(JSON::jtDouble, "nan", 3).AsInt(), 0);
  EXPECT_TRUE(std::isnan(MakeValue(JSON::jtDouble, "nan", 3).AsDouble()));
  EXPECT_TRUE(MakeValue(JSON::jtDouble, "nan", 3).AsBoolean());
  EXPECT_EQ(MakeValue(JSON::jtDouble, "-inf", 4).AsInt(), kMin);
  EXPECT_EQ(MakeValue(JSON::jtDouble, "0x1p4", 5).AsDouble(), 16);
  for (const Type type : {JSON::jtInteger, JSON::jtDouble, JSON::jtBoolean, JSON::jtString}) {
    CheckReading(UnsafeJSONValue(type), {type, "no text", 0, 0, false});
  }
}

TEST(JsonValue, AnswersLookupsInScalarsWithTheEmptyValues) {
  JSON::Message message;
  ASSERT_TRUE(message.Parse("[\"text\",[7]]"));
  JSONValue& scalar = message[0];
  const JSONValue& constant = scalar;
  EXPECT_EQ(scalar.Size(), 0);
  EXPECT_EQ(scalar.GetByName("text", -1), nullptr);
  EXPECT_EQ(&scalar["a"], &JSONValue::NonConstNone());
  EXPECT_EQ(&constant["a"], &JSONValue::None());
  EXPECT_EQ(&constant[0], &JSONValue::None());
  EXPECT_EQ(&message[1][-1], &JSONValue::NonConstNone());
  EXPECT_EQ(&message[1][1], &JSONValue::NonConstNone());
}

TEST(JsonValue, IsAssignedFieldByField) {
  UnsafeJSONValue source = MakeValue(JSON::jtInteger, "12", 2);
  source.nNameIndex = 3;
  source.bOwnsText = true;
  UnsafeJSONValue value;
  value = source;
  CheckReading(value, {JSON::jtInteger, "12", 12, 12, true});
  EXPECT_EQ(value.nNameIndex, 3);
  EXPECT_TRUE(value.bOwnsText);
}

TEST(JsonValue, KeepsTheEmptyValuesEmpty) {
  JSONValue& none = JSONValue::NonConstNone();
  none.InternalUpdateValue("x");
  EXPECT_EQ(none.pText, nullptr);
  EXPECT_NE(&JSONValue::None(), &none);
  EXPECT_EQ(&none.Set("a", 1), &JSONValue::None());
  EXPECT_EQ(&none["b"].Set(0, "text"), &JSONValue::None());
  EXPECT_EQ(&none.SetNull(0), &JSONValue::None());
  EXPECT_EQ(none.InternalUpdateByName("a", "1", JSON::jtInteger), nullptr);
  EXPECT_EQ(none.InternalUpdateByOrdinal(0, "1", JSON::jtInteger), nullptr);
  for (const JSONValue* pValue : {&JSONValue::None(), static_cast<const JSONValue*>(&none)}) {
    CheckReading(*pValue, {JSON::jtNone, "empty value", 0, 0, false});
    EXPECT_EQ(pValue->eType, JSON::jtNone);
    EXPECT_EQ(pValue->pText, nullptr);
    EXPECT_EQ(pValue->pComposite, nullptr);
    std::string strWritten;
    EXPECT_FALSE(pValue->Serialize(strWritten));
    EXPECT_EQ(strWritten, "");
  }
}

}  // namespace
