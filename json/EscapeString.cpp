// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The string escaping as hosts call it; see text/Escape.h.

#include <cstddef>
#include <cstring>
#include <string>

#include "json/JSON.h"
#include "json/JSONSerialize.h"
#include "text/Escape.h"

void JSON::EscapeString(std::string& output, const char* text) { AppendEscaped(output, text); }

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is given
int JSON_EscapeString(char** ppDest, char* pDestEnd, const char* pszText) {
  std::string escaped;
  JSON::EscapeString(escaped, pszText);
  // A room that is not positive holds nothing, so the comparison is made with the sign.
  const std::ptrdiff_t nRoom = pDestEnd - *ppDest;
  if (static_cast<std::ptrdiff_t>(escaped.size()) + 1 >= nRoom) return 0;
  std::memcpy(*ppDest, escaped.c_str(), escaped.size() + 1);
  return 1;
}
