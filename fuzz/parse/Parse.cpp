// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The parser. Input: a text. A copying and an in-place message parse it, with an unreadable page
// right behind its last byte, and both must give what the plain parser gives: result, tree, cursor,
// the bytes left in the buffer, lookups. What the previous input left in them takes part.

#include <cstring>

#include "fuzz/common/Fuzz.h"
#include "tests/support/SideBySide.h"

void Fuzz::Run(std::string_view input) {
  static Support::SideBySide parsers;
  if (input.empty()) return;
  ExpectNone(parsers.Check(input));

  // Without a length the text runs to its NUL.
  const std::string strInput(input.substr(0, input.find('\0')));
  JSON::Message toNul;
  const Plain::Document document = Plain::Parse(strInput);
  Expect(toNul.Parse(strInput.c_str(), -1) == document.bAccepted, "the result without a length");
  if (document.bRoot) ExpectNone(Plain::Difference(document, toNul));
}
