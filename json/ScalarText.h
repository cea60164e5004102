// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How far the text of a scalar reaches. It ends before the first byte that does not
// belong to the value: behind a parsed text follows the rest of its document, and a host that
// writes the fields of a value need not give a length.

#ifndef QXRECORDSET_JSON_SCALARTEXT_H
#define QXRECORDSET_JSON_SCALARTEXT_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "json/JSONValue.h"
#include "text/Bytes.h"

namespace JSON {

// The bytes that belong to a number, from its first one on. REQUIRES: a byte behind them that does
// not.
inline std::string_view NumberAt(const char* pText, bool (*belongs)(char)) {
  const char* p = pText;
  while (belongs(*p)) {
    ++p;
  }
  return {pText, static_cast<std::size_t>(p - pText)};
}

// The text of a value that is no container; without a text the empty one. A boolean is "true" when
// it begins with 't'.
inline std::string_view ScalarText(const JSONValue& value) {
  if (value.pText == nullptr) return {};
  switch (value.eType) {
    case jtString:
      return value.pText;
    case jtInteger:
      return NumberAt(value.pText, IsIntegerByte);
    case jtDouble:
      return NumberAt(value.pText, IsRealByte);
    case jtBoolean:
      return *value.pText == 't' ? "true" : "false";
    case jtNull:
      return *value.pText == 'n' ? "null" : "";
    default:
      return {};
  }
}

// A private copy, as values and names own it: NUL-terminated, released with delete[].
inline char* NewText(std::string_view text) {
  char* const pCopy = new char[text.size() + 1];
  *std::copy(text.begin(), text.end(), pCopy) = '\0';
  return pCopy;
}

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SCALARTEXT_H
