// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer. Input: choices of calls, in order for the most part. After each call the
// text must be the plain writer's; in the end, with all that is open closed, it is valid JSON or,
// after a call out of order, empty. A foreign library is the judge of what is valid.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "fuzz/common/Fuzz.h"
#include "tests/support/lives/WriterLife.h"

namespace {

// The judge refuses bytes that are no UTF-8; the writer passes them on.
std::string WithoutUtf8(std::string strText) {
  std::replace_if(
      strText.begin(), strText.end(), [](char c) { return (c & 0x80) != 0; }, 'x');
  return strText;
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  Support::World world{Support::Random(input), 300};
  Support::WriterLife life(world);
  while (!world.random.UsedUp())
    ExpectNone(life.Step());
  ExpectNone(life.CheckAll());
  const std::string strText = life.OneText();
  Expect(strText.empty() || nlohmann::json::accept(WithoutUtf8(strText)), "the text is valid JSON");
}
