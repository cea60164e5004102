// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings. Input, by its first byte: choices of building calls, whose result must read
// back as what went in; or a text, which must be taken apart, or refused, as a plain scan does it.

#include <exception>

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainParams.h"

namespace {

void ReadText(const std::string& text) {
  const Plain::Params content = Plain::ScanParams(text);
  CParamsRS params;
  bool bRefused = false;
  try {
    params.SetParams(text);
  } catch (const std::exception&) {
    bRefused = true;
  }
  Fuzz::Expect(bRefused == content.bRefused, "whether the text is refused");
  Fuzz::ExpectEqual(params.paramListRef(), text, "the text");
  Fuzz::ExpectNone(Plain::Difference(content, params));
  Fuzz::ExpectNone(Plain::Difference(content, CParamsRS(params)));
  CParamsRS::getHRESULT(text);
  try {
    params.getHRESULT();
    params.append(text);
  } catch (const std::exception&) {  // as the header allows
  }
}

void Build(std::string_view input) {
  Support::Random random(input);
  Plain::Built built;
  while (!random.UsedUp()) {
    built.Step(random);
    Fuzz::ExpectNone(built.Difference());
  }
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  if (input.empty()) return ReadText("");
  if (input[0] == 'b') return Build(input.substr(1));
  ReadText(std::string(input.substr(1)));
}
