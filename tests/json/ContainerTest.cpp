// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Objects and arrays by themselves: lookups that neither the plain parser (ParserTest.cpp) nor
// tests/lives ask for, and the order of names.

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/support/Values.h"

namespace {

using JSON::ArrayValue;
using JSON::Message;
using JSON::ObjectValue;
using JSON::UnsafeJSONValue;
using Support::ObjectIn;
using Support::ValueOf;

TEST(JsonObject, LooksUpNullsAndBoundsByRule) {
  Message message;
  ASSERT_TRUE(message.Parse(R"({"abc":1,"a":2,"":3})"));
  const ObjectValue& object = ObjectIn(message);
  EXPECT_EQ(object.OrdinalOf("abc", 0), 2);
  EXPECT_EQ(object.OrdinalOf(nullptr, 7), 0);
  EXPECT_EQ(object.GetByName(nullptr, -1), object.GetByOrdinal(0));
  for (const int nOrdinal : {-1, 3}) {
    EXPECT_EQ(object.GetByOrdinal(nOrdinal), nullptr);
    EXPECT_EQ(object.NameAt(nOrdinal), nullptr);
  }
  EXPECT_FALSE(object.MakeMap());
  EXPECT_EQ(ObjectValue(0).GetByName(nullptr, -1), nullptr);
  EXPECT_EQ(ObjectValue(0).GetByName("a", -1), nullptr);
}

TEST(JsonArray, LooksUpNullsAndBoundsByRule) {
  ArrayValue array(4);
  EXPECT_TRUE(array.MakeMap());
  EXPECT_EQ(array.OrdinalOf(nullptr, -1), 0);
  for (const char* text : {"x", "yz", "x", ""}) {
    UnsafeJSONValue value = ValueOf(text);
    array.AddValue(value);
  }
  EXPECT_EQ(array.OrdinalOf("x", 0), 3);
  EXPECT_EQ(array.NameAt(4), nullptr);
  EXPECT_EQ(array.NameAt(-1), nullptr);
  EXPECT_TRUE(std::is_sorted(array.vOrdinalMap.begin(), array.vOrdinalMap.end(),
                             ArrayValue::OrdinalMap::Less));
  array.UpdateByOrdinal(4, nullptr, JSON::jtString);  // counts as the empty text
  EXPECT_EQ(array.vOrdinalMap.size(), 0u);
  EXPECT_EQ(array.OrdinalOf("", -1), 3);
}

// Rows that repeat the names of the row before them refer to one index, until one of them changes.
TEST(JsonShapes, ShareTheNamesOfRowsThatRepeatThem) {
  static const struct {
    const char* szMechanism;
    const char* szRow;
    bool bShared;
  } kRows[] = {
      {"the same names", R"({"b":3,"a":4})", true},
      {"with white space", R"({ "b" : 3, "a":4 })", true},
      {"another order", R"({"a":4,"b":3})", false},
      {"one name less", R"({"b":3})", false},
      {"one name more", R"({"b":3,"a":4,"c":5})", false},
      {"a name that goes on", R"({"b":3,"aa":4})", false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.szMechanism);
    Message message;
    const std::string strFirst = R"({"b":1,"a":2})";
    const std::string strTail(64, ' ');  // close to its end a text is read with more care
    const std::string strText = '[' + strFirst + ',' + strFirst + ',' + row.szRow + ']' + strTail;
    ASSERT_TRUE(message.Parse(strText.c_str()));
    const auto indexOf = [&](int i) {
      return &*std::as_const(ObjectIn(message[i]).vNameMap).begin();
    };
    EXPECT_EQ(indexOf(0), indexOf(1));
    EXPECT_EQ(indexOf(0) == indexOf(2), row.bShared);
    ObjectIn(message[1]).vNameMap[0].UpdateName("changed");
    ObjectIn(message[1]).Sort();
    EXPECT_EQ(Support::Written(message[0]), strFirst);
    EXPECT_EQ(message[1]["changed"].AsInt(), 2);
    EXPECT_EQ(message[2]["b"].AsInt(), 3);
  }
}

TEST(JsonSequence, TakesOneOfItsOwnElementsOnceMore) {
  Message message;
  ASSERT_TRUE(message.Parse(R"([["a","b"]])"));
  ArrayValue& array = Support::ArrayIn(message[0]);
  for (int i = 0; i < 30; ++i)
    array.AddValue(*array.GetByOrdinal(i));
  EXPECT_EQ(array.vValues.at(31).pText, array.vValues.at(1).pText);
  EXPECT_THROW(array.vValues.at(32), std::out_of_range);
}

}  // namespace
