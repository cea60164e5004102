// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Objects and arrays by themselves, made and filled without a message: lookups and their indexes,
// copying, clearing. That everything is released shows when the tests run under the leak checker.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "json/JSONMessage.h"
#include "tests/support/Random.h"

namespace {

using JSON::ArrayValue;
using JSON::CompositeValue;
using JSON::Message;
using JSON::ObjectValue;
using JSON::UnsafeJSONValue;

std::string Written(const CompositeValue& container) {
  std::string strWritten;
  EXPECT_TRUE(container.Serialize(strWritten));
  return strWritten;
}

// A string value whose text outlives the container (or comes to nothing).
UnsafeJSONValue Text(const char* text) {
  UnsafeJSONValue value(JSON::jtString);
  value.pText = text;
  value.nLength = static_cast<int>(std::strlen(text));
  return value;
}

void Add(ArrayValue& array, UnsafeJSONValue value) { array.AddValue(value); }
void Add(ObjectValue& object, const char* name, UnsafeJSONValue value) {
  UnsafeJSONValue nameValue = Text(name);
  object.AddName(nameValue);
  object.AddValue(value);
}

// What is looked up in a parsed object is held against the plain parser; see ParserTest.cpp.
TEST(JsonObject, LooksUpTheRestByRule) {
  Message message;
  ASSERT_TRUE(message.Parse(R"({"abc":1,"a":2,"":3})"));
  const auto& object = dynamic_cast<const ObjectValue&>(*message.pComposite);
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

// Names of 0 to 19 bytes from few letters and NULs: many are equal, many only up to a NUL, and many
// in their first 16 bytes. The index is brought up to date now and then.
TEST(JsonObject, FindsTheFirstOfEachNameAmongMany) {
  Support::Random random(1);
  std::vector<std::string> vNames(3000);
  ObjectValue object(0);
  for (std::string& name : vNames) {
    name.assign(random.Below(20), 'a');
    for (int i = 0; i < 4 && !name.empty(); ++i)
      name[random.Below(name.size())] = "\xE4z"[random.Below(3)];
    UnsafeJSONValue value(JSON::jtString);
    value.pText = name.data();
    value.nLength = static_cast<int>(name.size());
    object.AddName(value);
    object.AddValue(value);
    if (random.OneIn(3)) object.Sort();
  }
  object.Sort();
  for (std::size_t i = 0; i < vNames.size(); ++i) {
    const std::string& name = vNames[i];
    const auto first = std::find_if(vNames.begin(), vNames.end(), [&](const std::string& other) {
      return other.size() == name.size() &&
             std::strncmp(other.data(), name.data(), name.size()) == 0;
    });
    ASSERT_EQ(object.OrdinalOf(name.data(), static_cast<int>(name.size())), first - vNames.begin());
    ASSERT_EQ(object.NameAt(static_cast<int>(i)), name.data());
  }
}

// So is what is looked up in arrays of strings, and, in in tests/lives, after changes.
TEST(JsonArray, IndexesItsStrings) {
  ArrayValue array(4);
  EXPECT_TRUE(array.MakeMap());
  EXPECT_EQ(array.OrdinalOf(nullptr, -1), 0);
  for (const char* text : {"x", "yz", "x", ""})
    Add(array, Text(text));
  EXPECT_EQ(array.OrdinalOf("x", 0), 3);
  EXPECT_EQ(array.NameAt(4), nullptr);
  EXPECT_EQ(array.NameAt(-1), nullptr);
  EXPECT_TRUE(std::is_sorted(array.vOrdinalMap.begin(), array.vOrdinalMap.end(),
                             ArrayValue::OrdinalMap::Less));
  EXPECT_EQ(array.vValues[2].nNameIndex, 2);
  array.UpdateByOrdinal(4, nullptr, JSON::jtString);  // counts as the empty text
  EXPECT_EQ(array.vOrdinalMap.size(), 0u);
  EXPECT_EQ(array.OrdinalOf("", -1), 3);
}

TEST(JsonContainer, TakesOneOfItsOwnElementsOnceMore) {
  Message message;
  ASSERT_TRUE(message.Parse(R"([["a","b"]])"));
  auto& array = dynamic_cast<ArrayValue&>(*message[0].pComposite);
  for (int i = 0; i < 30; ++i)
    array.AddValue(*array.GetByOrdinal(i));
  EXPECT_EQ(array.GetByOrdinal(31)->AsBoolean(), true);
  EXPECT_EQ(array.vValues.at(31).pText, array.vValues.at(1).pText);
  EXPECT_EQ(array.vValues.rbegin()->pText, array.vValues.at(31).pText);
  EXPECT_THROW(array.vValues.at(32), std::out_of_range);
}

struct Counting : ArrayValue {
  ArrayValue* Clone(std::ptrdiff_t nDelta) const override {
    ++nClones;
    return ArrayValue::Clone(nDelta);
  }
  mutable int nClones = 0;
};

TEST(JsonContainer, CopiesTheHostsOwnKindsByTheirClone) {
  auto* const pCounting = new Counting;
  Add(*pCounting, Text("x"));
  UnsafeJSONValue child(JSON::jtArray);
  child.pComposite = pCounting;
  ArrayValue source;
  Add(source, child);
  const std::unique_ptr<ArrayValue> pClone(source.Clone(0));
  EXPECT_EQ(Written(*pClone), R"([["x"]])");
  EXPECT_EQ(pCounting->nClones, 1);
}

TEST(JsonContainer, MovesForeignTextsWhenItIsCopied) {
  char texts[2][12] = {"name\0text\0", "NAME\0TEXT\0"};
  ObjectValue source(4);
  Add(source, texts[0], Text(texts[0] + 5));
  source.UpdateByName("own", "own", JSON::jtString);
  UnsafeJSONValue textless(JSON::jtNull);
  Add(source, texts[0] + 1, textless);
  const std::unique_ptr<CompositeValue> pClone(source.Clone(texts[1] - texts[0]));
  EXPECT_EQ(Written(*pClone), R"({"NAME":"TEXT","own":"own","AME":null})");
  EXPECT_EQ(pClone->GetByOrdinal(0)->pText, texts[1] + 5);
  EXPECT_EQ(pClone->GetByOrdinal(2)->pText, nullptr);
  // An array is added to what is there.
  ArrayValue all(0);
  source.avValues.CopyTo(all, 0);
  source.avValues.CopyTo(all, texts[1] - texts[0]);
  EXPECT_EQ(Written(all), R"(["text","own",null,"TEXT","own",null])");
}

}  // namespace
