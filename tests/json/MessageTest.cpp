// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The message: paths, and what a copy says of its buffer. Updates, copies, parses one after the
// other and what they refuse are the business of tests/lives, what parsing and failing leave that
// of ParserTest.cpp.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "json/Items.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/Values.h"

namespace {

using JSON::JSONValue;
using JSON::Message;
using Support::Written;

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

TEST(JsonMessage, CopiesHaveABufferOfTheirOwn) {
  static const char kText[] = R"({"b":["t\u0065xt",1.5],"a":{"c":null},"s":1})";
  for (const bool bInPlace : {false, true}) {
    auto pText = std::make_unique<std::string>(kText);
    auto pSource = std::make_unique<Message>(bInPlace);
    ASSERT_TRUE(pSource->Parse(pText->c_str()));
    Message copied(*pSource);
    Message assigned(!bInPlace);
    assigned = *pSource;
    Message target(!bInPlace);
    pSource->CopyTo(target);
    pSource.reset();
    pText.reset();
    for (Message* pCopy : {&copied, &assigned, &target}) {
      EXPECT_EQ(pCopy->bInPlace, bInPlace != (pCopy == &target));
      EXPECT_EQ(pCopy->pStart, pCopy->strText.data());
      EXPECT_EQ(pCopy->pEnd, pCopy->pStart + sizeof kText - 1);
      EXPECT_EQ(pCopy->Path("b.0").pText, pCopy->pStart + 7);
    }
  }
  Message none;
  none.eType = JSON::jtNull;
  EXPECT_EQ(Message(none).eType, JSON::jtNull);
}

// Objects of two kinds in turn share two indexes, and so do their copies. Those of more kinds than
// a copy remembers are as right.
TEST(JsonMessage, CopiesShareNamesAsTheirSourceDoes) {
  const auto index = [](const JSONValue& value) {
    return JSON::Items::Data(Support::ObjectIn(value).vNameMap);
  };
  for (const int nKinds : {1, 100}) {
    std::string strText = "[";
    std::string strRow;
    for (int i = 0; i < 200; ++i) {
      const std::string strKind = std::to_string(i % nKinds);
      strRow = "{\"id" + strKind + "\":1,\"in\":{\"x\":[2],\"a" + strKind + "\":\"yyyyyyyyyyyy\"}}";
      strText += strRow + (i == 199 ? "]" : ",");
    }
    Message source;
    ASSERT_TRUE(source.Parse(strText.c_str()));
    const Message copy(source);
    const auto& rows = dynamic_cast<const JSON::ArrayValue&>(*copy.pComposite).vValues;
    EXPECT_FALSE(JSON::Items::AreHandedOut(rows));  // it owns nothing, so it is released unseen
    EXPECT_EQ(Written(copy), strText);
    for (int i = 0; i < 200 && nKinds == 1; ++i) {
      EXPECT_TRUE(index(copy[i]) == index(copy[0]) && index(source[i]) == index(source[0]));
      EXPECT_EQ(index(copy[i]["in"]), index(copy[0]["in"]));
    }
    Message changed(copy);
    changed[0]["in"].Set("new", 1);  // which the others do not get
    changed[0].Set("id0", "changed");
    EXPECT_EQ(Written(changed[0]),
              R"({"id0":"changed","in":{"x":[2],"a0":"yyyyyyyyyyyy","new":1}})");
    EXPECT_EQ(Written(changed[199]), strRow);
    EXPECT_EQ(Written(copy), strText);
  }
}

// Whatever a message was used for, again and again for a little more, takes what the last two
// contents take, and two small texts later nothing of it is kept.
TEST(JsonMessage, TakesNoMoreMemoryTheLongerItIsUsed) {
  const struct {
    const char* szName;
    void (*use)(Message& message, int n);
    std::size_t nBytes;  // that each `n` may take
  } kUses[] = {
      {"updates far behind the end",
       [](Message& m, int n) {
         m.Parse("[]");
         m.Set(n, 1);
       },
       sizeof(JSON::UnsafeJSONValue)},
      {"copies",
       [](Message& m, int n) {
         Message source;
         source.Set(n, 1);
         source.CopyTo(m);
       },
       sizeof(JSON::UnsafeJSONValue)},
      {"texts",
       [](Message& m, int n) {
         m.Parse(("[]" + std::string(static_cast<unsigned>(n) * 40, ' ')).c_str());
       },
       40},
      {"members that come and go",
       [](Message& m, int n) {
         m.Parse("{}");
         for (int i = 0; i < n / 10; ++i)
           m.Set(("s" + std::to_string(i % 40)).c_str(), "a text of more than sixteen bytes");
         m.pComposite->Clear();
       },
       1},
  };
  for (const auto& test : kUses) {
    SCOPED_TRACE(test.szName);
    Message message;
    const auto idle = [&message] {
      message.Parse("[]");
      message.Parse("[]");
      return CountedMemory::Live();
    };
    const std::size_t nBefore = idle();
    constexpr int kSize = 50000;
    for (int i = 0; i < 12; ++i) {
      test.use(message, kSize + i);
      EXPECT_LE(CountedMemory::Live(), nBefore + 8 * kSize * test.nBytes + 65536);
    }
    EXPECT_LE(idle(), nBefore + 65536);
  }
}

}  // namespace
