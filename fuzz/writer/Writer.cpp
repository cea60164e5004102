// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer. Input: choices of calls, in order for the most part. After each call the
// text must be the plain writer's; in the end, with all that is open closed, it is valid JSON or,
// after a call out of order, empty. A foreign library is the judge of what is valid.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainWriter.h"

namespace {

// The judge refuses bytes that are no UTF-8; the writer passes them on.
std::string WithoutUtf8(std::string strText) {
  std::replace_if(
      strText.begin(), strText.end(), [](char c) { return (c & 0x80) != 0; }, 'x');
  return strText;
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  Support::Random random(input);
  JSON::Serialize writer(static_cast<int>(random.Below(3)) * 64);
  Plain::Writer model;
  int nTopLevel = 0;  // containers opened outside of all others
  while (!random.UsedUp() || model.Depth() != 0) {
    const Plain::Call call =
        random.UsedUp() ? Plain::Closing(model) : Plain::SomeCall(random, model);
    if (model.Depth() == 0 && (call.cCall == '{' || call.cCall == '[')) ++nTopLevel;
    Plain::Apply(writer, call);
    model.Apply(call);
    ExpectEqual(writer.String(), model.String(), "the text of the plain writer");
  }
  Expect(model.Failed() || nTopLevel != 1 || nlohmann::json::accept(WithoutUtf8(writer.String())),
         "the text is valid JSON");
}
