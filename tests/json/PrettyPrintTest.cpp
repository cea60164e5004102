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
  std::string output = "what it held before";
  EXPECT_EQ(&JSON_PrettyPrint(R"({"a":1,"b":[1,2,{"c":null}],"d":{}})", output), &output);
  EXPECT_EQ(output,
            "\n{\n\t\"a\":1,\n\t\"b\":\n\t[\n\t\t1,2,\n\t\t{\n\t\t\t\"c\":null\n\t\t}\n\t],\n"
            "\t\"d\":\n\t{\n\t\t\n\t}\n}");
}

TEST(PrettyPrint, FollowsTheRulesOnAnyTextAlsoOverItself) {
  constexpr char szBytes[] = {'[', ']', '{', '}', ',', '"', 'x', ' ', '\n', '\xE9'};
  Support::Random random(4);
  for (int i = 0; i < 2000; ++i) {
    std::string text(random.Below(60), ' ');
    for (char& c : text)
      c = random.Of(szBytes);
    const std::string before = text;
    ASSERT_EQ(JSON_PrettyPrint(text.c_str(), text), Plain::PrettyPrint(before)) << before;
  }
}

}  // namespace
