// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The pretty printer. Input: any text. The result is the plain printer's; without line breaks and
// tabs it is the text without them, so every byte was copied, in order; printing a text over itself
// makes no difference.

#include <algorithm>

#include "fuzz/common/Fuzz.h"
#include "json/JSON.h"
#include "tests/support/PlainPrettyPrint.h"

namespace {

std::string WithoutBreaks(std::string strText) {
  const auto IsBreak = [](char c) { return c == '\n' || c == '\t'; };
  strText.erase(std::remove_if(strText.begin(), strText.end(), IsBreak), strText.end());
  return strText;
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  std::string strText(input.substr(0, input.find('\0')));
  std::string strPretty = "what it held before";
  JSON_PrettyPrint(strText.c_str(), strPretty);
  ExpectEqual(WithoutBreaks(strPretty), WithoutBreaks(strText), "every byte, in order");
  ExpectEqual(strPretty, Plain::PrettyPrint(strText), "line breaks and tabs");
  JSON_PrettyPrint(strText.c_str(), strText);
  ExpectEqual(strText, strPretty, "a text over itself");
}
