// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The pretty printer: where it breaks lines, and that it changes nothing else.

#include <gtest/gtest.h>

#include <string>

#include "json/JSON.h"
#include "tests/support/PlainPrettyPrint.h"
#include "tests/support/Random.h"

namespace {

TEST(PrettyPrint, BreaksLinesAtBracketsAndBetweenMembers) {
  const struct {
    const char* szText;
    const char* szExpected;
  } cases[] = {
      {"abc", "abc"},
      {"{}", "\n{\n\t\n}"},
      {R"({"a":"x,y"})", "\n{\n\t\"a\":\"x,\n\ty\"\n}"},
      {"]],[1,2", "\n]\n],\n\n[\n1,2"},  // the depth below zero is remembered
      {" [ 1\n]\t", " \n[\n\t 1\n\n]\t"},
      {R"({"a":1,"b":[1,2,{"c":null}],"d":{}})",
       "\n{\n\t\"a\":1,\n\t\"b\":\n\t[\n\t\t1,2,\n\t\t{\n\t\t\t\"c\":null\n\t\t}\n\t],\n"
       "\t\"d\":\n\t{\n\t\t\n\t}\n}"},
  };
  for (const auto& c : cases) {
    std::string output = "what it held before";
    EXPECT_EQ(&JSON_PrettyPrint(c.szText, output), &output);
    EXPECT_EQ(output, c.szExpected) << c.szText;
  }
}

TEST(PrettyPrint, FollowsTheRulesOnAnyText) {
  constexpr char szBytes[] = {'[', ']', '{', '}', ',', '"', 'x', ' ', '\n', '\xE9'};
  Support::Random random(4);
  for (int i = 0; i < 2000; ++i) {
    std::string text(random.Below(60), ' ');
    for (char& c : text) {
      c = random.Of(szBytes);
    }
    std::string output;
    ASSERT_EQ(JSON_PrettyPrint(text.c_str(), output), Plain::PrettyPrint(text)) << text;
  }
}

TEST(PrettyPrint, MayPrintATextOverItself) {
  std::string text = "[1,2]";
  JSON_PrettyPrint(text.c_str(), text);
  EXPECT_EQ(text, "\n[\n\t1,2\n]");
}

}  // namespace
