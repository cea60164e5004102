// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The message: paths, copies, and what a message keeps from one parse to the next. Updates and what
// they refuse are the business of tests/lives, what parsing and failing leave that of
// ParserTest.cpp.

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

#include "json/JSONMessage.h"

namespace {

using JSON::JSONValue;
using JSON::Message;
using JSON::ObjectValue;

std::string Written(const JSONValue& value) {
  std::string strWritten;
  EXPECT_TRUE(value.Serialize(strWritten));
  return strWritten;
}

TEST(JsonMessage, FollowsPaths) {
  Message message;
  EXPECT_EQ(&message.Path("a"), &JSONValue::None());
  ASSERT_TRUE(message.Parse(R"({"a":{"b":[10,20,{"c":true}],"":{"":3},"b.x":4},".d":5,".":6,"":7,
                               "e":[[8,9]],"f.g":0})"));
  static const struct {
    const char* path;
    const char* value;
  } kCases[] = {
      {"a.b.1", "20"},
      {"a.b.2.c", "true"},
      {".d", "5"},
      {".", "6"},
      {"a..", "3"},
      {"a.", R"({"":3})"},
      {"e..1", "9"},
      // In an array a name is read as an ordinal, by strtol.
      {"a.b.x", "10"},
      {"a.b.", "10"},
      {"a.b. +1", "20"},
      {"a.b.-0", "10"},
  };
  for (const auto& test : kCases)
    EXPECT_EQ(Written(message.Path(test.path)), test.value) << test.path;
  for (const char* szPath : {"a.x", "a.b.1.c", "a.b.3", "a.b.-1", "", ".d.e", "..d", "a.b.x.y",
                             "f.g", "b", "a.b.4294967297", "a.b.18446744073709551617"}) {
    EXPECT_EQ(&message.Path(szPath), &JSONValue::None()) << szPath;
  }
  EXPECT_EQ(&message.Path(nullptr), &JSONValue::None());
  EXPECT_EQ(message["e"].GetByName(nullptr, -1), nullptr);
  EXPECT_EQ(message["a"]["b"].GetByName("12", 1), nullptr);  // the length does not matter here
}

TEST(JsonMessage, StoresTheEndsOfEveryRange) {
  Message message;
  message.Set("a", ULLONG_MAX);
  message.Set("b", ULONG_MAX);
  message.Set("c", LONG_MIN);
  const std::string strUnsigned = std::to_string(ULONG_MAX);
  EXPECT_EQ(Written(message), R"({"a":18446744073709551615,"b":)" + strUnsigned +
                                  ",\"c\":" + std::to_string(LONG_MIN) + '}');
  Message list;
  EXPECT_EQ(list.Set(1, ULLONG_MAX).eType, JSON::jtInteger);
  list.Set(0, ULONG_MAX);
  EXPECT_EQ(Written(list), '[' + strUnsigned + ",18446744073709551615]");
}

TEST(JsonMessage, ChangesTheNamesOfOneObjectAlone) {
  Message message;
  ASSERT_TRUE(message.Parse(R"([{"b":1,"a":2},{"b":3,"a":4},{"b":5,"a":6}])"));
  auto& object = dynamic_cast<ObjectValue&>(*message[1].pComposite);
  object.vNameMap[0].UpdateName("changed");
  object.vNameMap[0].UpdateName(object.vNameMap[0].pName + 1);  // from what it replaces
  object.Sort();
  message[2].Set("c", 7);
  EXPECT_EQ(Written(message), R"([{"b":1,"a":2},{"b":3,"hanged":4},{"b":5,"a":6,"c":7}])");
  EXPECT_EQ(message.Path("1.hanged").AsInt(), 4);
  EXPECT_EQ(message.Path("0.a").AsInt() + message.Path("2.a").AsInt(), 8);
}

TEST(JsonMessage, DropsANameWithoutValueAtTheNextUpdate) {
  Message message;
  ASSERT_FALSE(message.Parse(R"({"first":1,"lost":?)"));
  auto& root = dynamic_cast<ObjectValue&>(*message.pComposite);
  EXPECT_EQ(root.OrdinalOf("lost", -1), 1);  // sorted in front of the other
  EXPECT_EQ(root.NameAt(1), nullptr);
  root.vNameMap[0].UpdateName("owned");
  EXPECT_EQ(root.UpdateByOrdinal(1, "1", JSON::jtInteger), nullptr);  // which changes nothing
  EXPECT_STREQ(root.vNameMap.at(0).pName, "owned");
  message.Set("first", 2);
  EXPECT_EQ(root.vNameMap.size(), 1U);
  EXPECT_EQ(Written(message), R"({"first":2})");
}

TEST(JsonMessage, CopiesHaveABufferOfTheirOwn) {
  static const char kText[] = R"({"b":["t\u0065xt",1.5],"a":{"c":null},"s":1})";
  for (const bool bInPlace : {false, true}) {
    auto pText = std::make_unique<std::string>(kText);
    auto pSource = std::make_unique<Message>(bInPlace);
    ASSERT_TRUE(pSource->Parse(pText->c_str()));
    (*pSource)["a"].Set("new", "own");
    Message copied(*pSource);
    Message assigned(!bInPlace);
    assigned = *pSource;
    Message target(!bInPlace);
    pSource->CopyTo(target);
    pSource.reset();
    pText.reset();
    for (Message* pCopy : {&copied, &assigned, &target}) {
      EXPECT_EQ(pCopy->bInPlace, bInPlace != (pCopy == &target));
      EXPECT_EQ(Written(*pCopy), R"({"b":["text",1.5],"a":{"c":null,"new":"own"},"s":1})");
      EXPECT_EQ(pCopy->pComposite->eType, JSON::jtInvalid);
      EXPECT_EQ(pCopy->pStart, pCopy->strText.data());
      EXPECT_EQ(pCopy->pEnd, pCopy->pStart + sizeof kText - 1);
      EXPECT_EQ(pCopy->Path("b.0").pText, pCopy->pStart + 7);
    }
  }
}

TEST(JsonMessage, UsesTheRootOfTheSameKindAgain) {
  Message message;
  message.Set(0, 1);  // a root made by an update is one of its kind
  const JSON::CompositeValue* pRoot = message.pComposite;
  ASSERT_TRUE(message.Parse(" [\"x\"]"));
  EXPECT_EQ(message.pComposite, pRoot);
  EXPECT_EQ(pRoot->eType, JSON::jtArray);
  ASSERT_TRUE(message.Parse("{\"a\":1}"));
  pRoot = message.pComposite;
  message.Set("owned", "owned");
  ASSERT_FALSE(message.Parse("{\"b\":"));
  ASSERT_TRUE(message.Parse("{\"owned\":2}"));
  EXPECT_EQ(message.pComposite, pRoot);
  EXPECT_EQ(Written(message), "{\"owned\":2}");
}

}  // namespace
