// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The message: paths, copies, and what a message keeps from one parse to the next. Updates and what
// they refuse are the business of UpdateModelTest.cpp.

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
    const char* value;  // null: nothing
  } kCases[] = {
      {"a.b.1", "20"},
      {"a.b.2.c", "true"},
      {"a.b.x", "10"},
      {"a.b.", "10"},
      {"a.x", nullptr},
      {"a.b.1.c", nullptr},
      {"a.b.3", nullptr},
      {"a.b.-1", nullptr},
      {"", nullptr},
      {nullptr, nullptr},
      {".d", "5"},
      {".", "6"},
      {".d.e", nullptr},
      {"..d", nullptr},
      {"a..", "3"},
      {"a.", R"({"":3})"},
      {"a.b.x.y", nullptr},
      {"a.b.2", R"({"c":true})"},
      {"e.0.1", "9"},
      {"e..1", "9"},
      {"f.g", nullptr},
      {"b", nullptr},
      {"a.b.99999999999", nullptr},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.path == nullptr ? "null" : test.path);
    const JSONValue& found = message.Path(test.path);
    if (test.value == nullptr) {
      EXPECT_EQ(&found, &JSONValue::None());
    } else {
      EXPECT_EQ(Written(found), test.value);
    }
  }
}

TEST(JsonMessage, StoresTheEndsOfEveryRange) {
  Message message;
  const JSONValue& stored = message.Set("a", ULLONG_MAX);
  EXPECT_EQ(stored.eType, JSON::jtInteger);
  EXPECT_EQ(stored.nLength, 20);
  message.Set("b", ULONG_MAX);
  message.Set("c", LONG_MIN);
  message.Set("d", INT_MIN);
  message.Set("e", -1e100);
  EXPECT_EQ(Written(message), R"({"a":18446744073709551615,"b":)" + std::to_string(ULONG_MAX) +
                                  ",\"c\":" + std::to_string(LONG_MIN) +
                                  R"(,"d":-2147483648,"e":-1e+100})");
  Message list;
  list.Set(1, ULLONG_MAX);
  list.Set(0, ULONG_MAX);
  EXPECT_EQ(Written(list), '[' + std::to_string(ULONG_MAX) + ",18446744073709551615]");
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
  static const struct {
    const char* name;
    int nOrdinal;
    const char* text;  // after Set(name, 3)
  } kCases[] = {{"lost", 2, R"({"first":1,"second":2,"lost":3})"},
                {"new", 2, R"({"first":1,"second":2,"new":3})"},
                {"first", 0, R"({"first":3,"second":2})"}};
  for (const auto& test : kCases) {
    Message message;
    ASSERT_FALSE(message.Parse(R"({"first":1,"second":2,"lost":?)"));
    const auto& object = dynamic_cast<const ObjectValue&>(*message.pComposite);
    EXPECT_EQ(object.OrdinalOf("lost", -1), 2);  // sorted in front of the others
    EXPECT_EQ(object.vNameMap.size(), 3u);
    EXPECT_EQ(object.NameAt(2), nullptr);
    message.Set(test.name, 3);
    EXPECT_EQ(object.vNameMap.size(), static_cast<std::size_t>(object.Size()));
    EXPECT_EQ(object.OrdinalOf(test.name, -1), test.nOrdinal);
    EXPECT_EQ(Written(message), test.text);
  }
}

TEST(JsonMessage, DropsANameWithoutValueThatWasChanged) {
  Message message;
  ASSERT_FALSE(message.Parse(R"({"lost":?)"));
  auto& root = dynamic_cast<ObjectValue&>(*message.pComposite);
  root.vNameMap[0].UpdateName("owned");
  EXPECT_EQ(root.UpdateByOrdinal(0, "1", JSON::jtInteger), nullptr);  // which changes nothing
  EXPECT_STREQ(root.vNameMap.at(0).pName, "owned");
  message.Set("a", 1);
  EXPECT_EQ(Written(message), R"({"a":1})");
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
    EXPECT_EQ(copied.bInPlace, bInPlace);
    EXPECT_EQ(assigned.bInPlace, bInPlace);
    EXPECT_EQ(target.bInPlace, !bInPlace);
    pSource.reset();
    pText.reset();
    for (Message* pCopy : {&copied, &assigned, &target}) {
      EXPECT_EQ(Written(*pCopy), R"({"b":["text",1.5],"a":{"c":null,"new":"own"},"s":1})");
      EXPECT_EQ(pCopy->pComposite->eType, JSON::jtInvalid);
      EXPECT_EQ(pCopy->pStart, pCopy->strText.data());
      EXPECT_EQ(pCopy->pEnd, pCopy->strText.data() + sizeof kText - 1);
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
  EXPECT_EQ(message.eType, JSON::jtObject);
  pRoot = message.pComposite;
  message.Set("owned", "owned");
  ASSERT_FALSE(message.Parse("{\"b\":"));
  ASSERT_TRUE(message.Parse("{\"owned\":2}"));
  EXPECT_EQ(message.pComposite, pRoot);
  EXPECT_EQ(Written(message), "{\"owned\":2}");
}

TEST(JsonMessage, ARefusedTextEmptiesACopyingMessageAndLeavesAnotherAlone) {
  for (const auto& [refused, nStop] : {std::pair{" 12", 1}, {"", 0}, {" ", 1}, {"x[1]", 0}}) {
    std::string strFirst = R"({"a":"t\u0065xt"})";
    std::string strRefused = refused;
    Message copying;
    Message inPlace(true);
    ASSERT_TRUE(copying.Parse(strFirst.c_str()));
    ASSERT_TRUE(inPlace.Parse(strFirst.c_str()));
    const char* pEnd = inPlace.pEnd;
    EXPECT_FALSE(copying.Parse(refused));
    EXPECT_FALSE(inPlace.Parse(strRefused.c_str()));
    EXPECT_EQ(copying.eType, JSON::jtInvalid);
    EXPECT_EQ(copying.pComposite, nullptr);
    EXPECT_EQ(copying.strText, refused);
    EXPECT_EQ(copying.pCursor, copying.pStart + nStop);
    EXPECT_EQ(Written(copying), "null");
    EXPECT_EQ(&copying.Path("a"), &JSONValue::None());
    EXPECT_EQ(Written(Message(copying)), "null");
    EXPECT_EQ(Written(inPlace), R"({"a":"text"})");
    EXPECT_EQ(inPlace.pStart, strFirst.data());
    EXPECT_EQ(inPlace.pEnd, pEnd);
    EXPECT_EQ(Written(Message(inPlace)), R"({"a":"text"})");
    copying.Set("n", 1);
    EXPECT_EQ(Written(copying), R"({"n":1})");
    Message empty(true);
    EXPECT_FALSE(empty.Parse(strRefused.c_str()));
    EXPECT_EQ(empty.pCursor, strRefused.c_str() + nStop);
  }
  Message message;
  EXPECT_FALSE(message.Parse("\0[1]", 4));
  EXPECT_EQ(message.pCursor, message.pStart);
}

}  // namespace
