// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The message: paths, and what a copy says of its buffer. Updates, copies, parses one after the
// other and what they refuse are the business of tests/lives, what parsing and failing leave that
// of ParserTest.cpp.

#include <gtest/gtest.h>

#include <memory>
#include <string>

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
}

}  // namespace
