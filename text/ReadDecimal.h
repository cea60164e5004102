// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading a decimal integer as strtol and sscanf do, from a text that need not be NUL-terminated:
// the text of a parsed number runs on into the rest of the document, which may end right behind it.

#ifndef QXRECORDSET_TEXT_READDECIMAL_H
#define QXRECORDSET_TEXT_READDECIMAL_H

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>
#include <system_error>

#include "text/Bytes.h"

namespace JSON {

// White space is skipped, one sign is taken, then digits up to the first byte that is none. No
// digits give 0, a value beyond the range of Integer (a signed type) the nearest bound.
template <typename Integer>
Integer ReadDecimal(std::string_view text) {
  static_assert(std::numeric_limits<Integer>::is_signed);
  while (!text.empty() && IsCSpace(text.front())) {
    text.remove_prefix(1);
  }
  const bool bNegative = !text.empty() && text.front() == '-';
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') {
      return 0;  // from_chars takes '-' and no '+', so it would read the second sign
    }
  }
  Integer value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    return bNegative ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
  }
  return value;
}

// The same from a text that some byte ends which cannot belong to the number; nothing behind it is
// read. No text reads as 0.
template <typename Integer>
Integer ReadDecimal(const char* pText) {
  constexpr int kSurelyFit = 18;  // digits of any number that a long long holds
  if (pText == nullptr) return 0;
  const char* p = pText;
  while (IsCSpace(*p)) {
    ++p;
  }
  const char* const pNumber = p;
  const bool bNegative = *p == '-';
  if (bNegative || *p == '+') ++p;
  const char* const pDigits = p;
  long long nValue = 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    if (p - pDigits < kSurelyFit) nValue = nValue * 10 + (*p - '0');
  }
  if (p - pDigits > kSurelyFit) {
    return ReadDecimal<Integer>(std::string_view(pNumber, static_cast<std::size_t>(p - pNumber)));
  }
  using Limits = std::numeric_limits<Integer>;
  return static_cast<Integer>(
      std::clamp<long long>(bNegative ? -nValue : nValue, Limits::min(), Limits::max()));
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_READDECIMAL_H
