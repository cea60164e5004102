// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A tree writes itself as compact JSON text. Scalars are written from the text they hold, numbers
// as far as their bytes can belong to one.

#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "json/Storage.h"

namespace JSON {
namespace {

bool IsIntegerByte(char c) { return (c >= '0' && c <= '9') || c == '+' || c == '-'; }
bool IsRealByte(char c) { return IsIntegerByte(c) || c == '.' || c == 'e' || c == 'E'; }

void AppendNumber(std::string& output, const JSONValue& value, bool (*isByte)(char)) {
  std::size_t n = 0;
  const std::size_t nLength = static_cast<std::size_t>(value.nLength);
  while (n < nLength && isByte(value.pText[n])) {
    ++n;
  }
  output.append(value.pText, n);
}

void AppendQuoted(std::string& output, const char* pText) {
  output += '"';
  if (pText != nullptr) {
    EscapeString(output, pText);
  }
  output += '"';
}

}  // namespace

bool JSONValue::Serialize(std::string& output) const {
  if (eType == jtNone) {
    return false;
  }
  if (pComposite != nullptr) {
    return pComposite->Serialize(output);
  }
  switch (eType) {
    case jtString:
      AppendQuoted(output, pText);
      break;
    case jtInteger:
      AppendNumber(output, *this, IsIntegerByte);
      break;
    case jtDouble:
      AppendNumber(output, *this, IsRealByte);
      break;
    case jtBoolean:
      output += nLength > 0 && pText[0] == 't' ? "true" : "false";
      break;
    default:
      output += "null";
      break;
  }
  return true;
}

bool ArrayValue::Serialize(std::string& output) const {
  output += '[';
  const UnsafeJSONValue* const pValues = Storage::Values(*this);
  for (std::size_t i = 0; i < vValues.size(); ++i) {
    if (i != 0) {
      output += ',';
    }
    if (!pValues[i].Serialize(output)) {
      return false;
    }
  }
  output += ']';
  return true;
}

bool ObjectValue::Serialize(std::string& output) const {
  if (!bSorted) {
    Sort();
  }
  output += '{';
  const UnsafeJSONValue* const pValues = Storage::Values(avValues);
  const NameMap* const pNames = Storage::Names(*this);
  const std::size_t nNames = vNameMap.size();
  for (std::size_t i = 0; i < avValues.vValues.size(); ++i) {
    if (i != 0) {
      output += ',';
    }
    const std::size_t nName = static_cast<std::size_t>(pValues[i].nNameIndex);
    AppendQuoted(output, nName < nNames ? pNames[nName].pName : nullptr);
    output += ':';
    if (!pValues[i].Serialize(output)) {
      return false;
    }
  }
  output += '}';
  return true;
}

}  // namespace JSON
