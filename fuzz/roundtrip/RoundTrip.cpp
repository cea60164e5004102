// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parse, write, parse again. Input: a text. What the tree of an accepted text writes is accepted,
// too, and from then on text, types and sizes stay the same; a copy of the document writes the
// same.

#include "fuzz/common/Fuzz.h"
#include "json/JSONMessage.h"

namespace {

bool Parse(JSON::Message& message, const std::string& text) {
  return message.Parse(text.data(), static_cast<int>(text.size()));
}

std::string Written(const JSON::JSONValue& value) {
  std::string strText;
  Fuzz::Expect(value.Serialize(strText), "the result of Serialize");
  return strText;
}

// Types and sizes of a tree.
std::string Outline(const JSON::JSONValue& value) {
  std::string strOutline = std::to_string(value.eType);
  if (value.pComposite == nullptr) return strOutline;
  strOutline += '(';
  for (int i = 0; i < value.Size(); ++i)
    strOutline += Outline(*value.GetByOrdinal(i));
  return strOutline + ')';
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  JSON::Message first;
  if (!Parse(first, std::string(input))) {
    std::string strLeft;
    first.Serialize(strLeft);  // whatever it is
    return;
  }
  const std::string strText = Written(first);
  JSON::Message second;
  Expect(Parse(second, strText), "what was written is accepted");
  ExpectEqual(Outline(second), Outline(first), "types and sizes stay the same");
  ExpectEqual(Written(second), strText, "the text stays the same");

  const JSON::Message copy(second);
  Expect(Parse(second, "[]"), "an empty array is accepted");
  ExpectEqual(Written(copy), strText, "a copy writes the same");
}
