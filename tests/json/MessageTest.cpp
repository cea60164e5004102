// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The message: paths, what each update stores and refuses, copies and assignments, and what a
// message keeps from one parse to the next.

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

TEST(JsonMessage, StoresEachKindAsItsText) {
  Message message;
  const auto Check = [&](const JSONValue& stored, JSON::Type type, const char* text) {
    EXPECT_EQ(&stored, message.GetByOrdinal(message.Size() - 1));
    EXPECT_EQ(stored.eType, type);
    EXPECT_STREQ(stored.pText, text);
    EXPECT_EQ(stored.nLength, text == nullptr ? 0 : static_cast<int>(std::string(text).size()));
  };
  Check(message.Set("a", true), JSON::jtBoolean, "true");
  EXPECT_EQ(message.eType, JSON::jtObject);
  EXPECT_EQ(message.Size(), 1);
  Check(message.Set("b", false), JSON::jtBoolean, "false");
  Check(message.Set("c", "a \"text\"\n"), JSON::jtString, "a \"text\"\n");
  Check(message.Set("d", static_cast<const char*>(nullptr)), JSON::jtString, nullptr);
  Check(message.Set("e", 3.14159265), JSON::jtDouble, "3.14159");
  Check(message.Set("f", -1e100), JSON::jtDouble, "-1e+100");
  Check(message.Set("g", ULLONG_MAX), JSON::jtInteger, "18446744073709551615");
  Check(message.Set("h", ULONG_MAX), JSON::jtInteger, std::to_string(ULONG_MAX).c_str());
  Check(message.Set("i", LONG_MIN), JSON::jtInteger, std::to_string(LONG_MIN).c_str());
  Check(message.Set("j", INT_MIN), JSON::jtInteger, "-2147483648");
  Check(message.SetNull("k"), JSON::jtNull, nullptr);
  EXPECT_EQ(Written(message), R"({"a":true,"b":false,"c":"a \"text\"\n","d":"","e":3.14159,)"
                              R"("f":-1e+100,"g":18446744073709551615,"h":)" +
                                  std::to_string(ULONG_MAX) + ",\"i\":" + std::to_string(LONG_MIN) +
                                  R"(,"j":-2147483648,"k":null})");
  EXPECT_FALSE(message["d"].AsBoolean());

  Message list;
  list.Set(3, 1.5);
  EXPECT_EQ(list.eType, JSON::jtArray);
  list.Set(0, true);
  list.Set(1, "x");
  list.Set(4, 2ull);
  list.Set(5, 3ul);
  list.Set(6, -4l);
  list.Set(7, -5);
  list.SetNull(1);
  EXPECT_EQ(Written(list), "[true,null,null,1.5,2,3,-4,-5]");
}

TEST(JsonMessage, ChangesValuesInPlace) {
  Message message;
  ASSERT_TRUE(message.Parse(R"({"a":{"x":1},"b":[1,[2]],"a":3,"s":"text"})"));
  EXPECT_EQ(message.Set("a", 7).nNameIndex, 0);  // the first of its name, its container gone
  EXPECT_TRUE(dynamic_cast<ObjectValue&>(*message.pComposite).bSorted);
  message["b"].Set(1, false);
  message.Set(3, "other");
  EXPECT_EQ(Written(message), R"({"a":7,"b":[1,false],"a":3,"s":"other"})");
  // Scalars become containers and keep their text.
  message["s"].Set("new", 1);
  message["b"][0].Set(1, 2);
  EXPECT_STREQ(message["s"].pText, "other");
  message.Set("t", "appended");
  EXPECT_EQ(Written(message), R"({"a":7,"b":[[null,2],false],"a":3,"s":{"new":1},"t":"appended"})");
  // Texts and names may come from what is replaced.
  message.Set("s", message["s"].pText);
  message.Set(message.pComposite->NameAt(4), message.pComposite->NameAt(4));
  message["s"].Set(1, message["t"].pText);
  message.Set("s", message["s"][1].pText);
  EXPECT_EQ(Written(message), R"({"a":7,"b":[[null,2],false],"a":3,"s":"t","t":"t"})");
}

TEST(JsonMessage, RefusesUpdatesThatFitNowhere) {
  Message message;
  ASSERT_TRUE(message.Parse(R"({"a":1,"b":[2],"c":3,"d":4})"));
  const std::string strBefore = Written(message);
  const JSONValue* pNone = &JSONValue::None();
  EXPECT_EQ(&message.Set(4, 5), pNone);
  EXPECT_EQ(&message.Set(-1, 5), pNone);
  EXPECT_EQ(&message.Set(static_cast<const char*>(nullptr), 5), pNone);
  EXPECT_EQ(&message["b"].Set("0", 5), pNone);
  EXPECT_EQ(&message["b"].Set(-1, 5), pNone);
  EXPECT_EQ(&message["x"].Set("y", 5), pNone);
  EXPECT_EQ(message.InternalUpdateByOrdinal(INT_MIN, "5", JSON::jtInteger), nullptr);
  EXPECT_EQ(Written(message), strBefore);
  // A scalar becomes an empty container all the same.
  EXPECT_EQ(&message["a"].SetNull(static_cast<const char*>(nullptr)), pNone);
  EXPECT_EQ(&message["c"].SetNull(-1), pNone);
  EXPECT_EQ(Written(message), R"({"a":{},"b":[2],"c":[],"d":4})");
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

TEST(JsonMessage, CopiesAreIndependent) {
  static const char kText[] = R"({"b":["t\u0065xt",1.5],"a":{"c":null},"s":1})";
  const std::string strExpected = R"({"b":["text",1.5,7],"a":{"c":null,"new":"own"},"s":1})";
  for (const bool bInPlace : {false, true}) {
    auto pText = std::make_unique<std::string>(kText);
    auto pSource = std::make_unique<Message>(bInPlace);
    ASSERT_TRUE(pSource->Parse(pText->c_str()));
    (*pSource)["b"].Set(2, 7);
    (*pSource)["a"].Set("new", "own");
    Message copied(*pSource);
    Message assigned(!bInPlace);
    ASSERT_TRUE(Message(assigned).bInPlace == !bInPlace);
    assigned.Set("old", "released");
    EXPECT_EQ(&(assigned = *pSource), &assigned);
    Message target(!bInPlace);
    target.Set(0, "released");
    pSource->CopyTo(target);
    EXPECT_EQ(copied.bInPlace, bInPlace);
    EXPECT_EQ(assigned.bInPlace, bInPlace);
    EXPECT_EQ(target.bInPlace, !bInPlace);
    EXPECT_EQ(copied.strText, std::string(pSource->pStart, pSource->pEnd));
    pSource->Set("b", 0);
    (*pSource)["a"].Set("c", 0);
    pSource.reset();
    pText.reset();
    for (Message* pCopy : {&copied, &assigned, &target}) {
      EXPECT_EQ(Written(*pCopy), strExpected);
      EXPECT_EQ(pCopy->eType, JSON::jtObject);
      EXPECT_EQ(pCopy->pComposite->eType, JSON::jtInvalid);
      EXPECT_EQ(pCopy->pStart, pCopy->strText.data());
      EXPECT_EQ(pCopy->pEnd, pCopy->strText.data() + sizeof kText - 1);
      EXPECT_EQ(pCopy->Path("b.0").pText, pCopy->pStart + 7);
      EXPECT_EQ(pCopy->Path("a.new").pText, pCopy->Path("a")["new"].pText);
    }
    // Copies of copies, assignment to itself, and further use.
    Message second(copied);
    Message& same = second;
    second = same;
    copied.Set("b", 1);
    EXPECT_EQ(Written(second), strExpected);
    target = Message();
    EXPECT_EQ(Written(target), "null");
    EXPECT_EQ(target.eType, JSON::jtInvalid);
    Message empty;
    empty.CopyTo(second);
    EXPECT_EQ(second.pComposite, nullptr);
    second.Set(0, 1);
    EXPECT_EQ(Written(second), "[1]");
  }
}

TEST(JsonMessage, UsesTheRootOfTheSameKindAgain) {
  Message message;
  ASSERT_TRUE(message.Parse("[1,{\"a\":[2]}]"));
  const JSON::CompositeValue* pArray = message.pComposite;
  message[1].Set("a", "owned");
  ASSERT_TRUE(message.Parse(" [\"x\"]"));
  EXPECT_EQ(message.pComposite, pArray);
  EXPECT_EQ(Written(message), "[\"x\"]");
  ASSERT_TRUE(message.Parse("{\"a\":1}"));
  EXPECT_EQ(message.eType, JSON::jtObject);
  const JSON::CompositeValue* pObject = message.pComposite;
  message.Set("owned", "owned");
  ASSERT_FALSE(message.Parse("{\"b\":"));
  EXPECT_EQ(message.pComposite, pObject);
  ASSERT_TRUE(message.Parse("{\"owned\":2}"));
  EXPECT_EQ(message.pComposite, pObject);
  EXPECT_EQ(Written(message), "{\"owned\":2}");
  // A root made by an update is one of its kind.
  Message built;
  built.Set(0, 1);
  pArray = built.pComposite;
  ASSERT_TRUE(built.Parse("[2]"));
  EXPECT_EQ(built.pComposite, pArray);
  EXPECT_EQ(built.pComposite->eType, JSON::jtArray);
  // A copy can parse like any other message.
  Message copy(built);
  ASSERT_TRUE(copy.Parse("[[3]]"));
  EXPECT_EQ(Written(copy), "[[3]]");
  EXPECT_EQ(Written(built), "[2]");
}

TEST(JsonMessage, ARefusedTextEmptiesACopyingMessageAndLeavesAnotherAlone) {
  for (const char* refused : {" 12", "", " ", "x[1]"}) {
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
    EXPECT_EQ(Written(copying), "null");
    EXPECT_EQ(&copying.Path("a"), &JSONValue::None());
    EXPECT_EQ(Written(Message(copying)), "null");
    EXPECT_EQ(Written(inPlace), R"({"a":"text"})");
    EXPECT_EQ(inPlace.pStart, strFirst.data());
    EXPECT_EQ(inPlace.pEnd, pEnd);
    EXPECT_EQ(Written(Message(inPlace)), R"({"a":"text"})");
    copying.Set("n", 1);
    EXPECT_EQ(Written(copying), R"({"n":1})");
  }
}

TEST(JsonMessage, StopsWritingAtAnEmptyValue) {
  Message message;
  ASSERT_TRUE(message.Parse("[1,[2,3]]"));
  message[1].InternalUpdateByOrdinal(1, nullptr, JSON::jtNone);
  std::string strWritten = ">";
  EXPECT_FALSE(message.Serialize(strWritten));
  EXPECT_EQ(strWritten, ">[1,[2,");
}

}  // namespace
