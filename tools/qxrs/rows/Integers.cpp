// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Integers as text.

#include "tools/qxrs/rows/Integers.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace qxrs {

namespace {

template <typename Integer>
bool IsPlain(std::string_view strText) {
  Integer nValue = 0;
  const char* const pEnd = strText.data() + strText.size();
  const auto result = std::from_chars(strText.data(), pEnd, nValue);
  if (result.ec != std::errc() || result.ptr != pEnd) {
    return false;
  }
  const std::string_view strDigits = strText.substr(strText.front() == '-' ? 1 : 0);
  return strDigits.front() != '0' || strText == "0";
}

}  // namespace

bool IsPlainInteger(std::string_view strText, LongSize eSize) {
  return eSize == LongSize::Bits32 ? IsPlain<std::int32_t>(strText) : IsPlain<long>(strText);
}

std::string PlainInteger(std::string_view strText) {
  const bool bNegative = !strText.empty() && strText.front() == '-';
  if (bNegative || (!strText.empty() && strText.front() == '+')) {
    strText.remove_prefix(1);
  }
  strText = strText.substr(0, strText.find_first_not_of("0123456789"));
  const std::size_t nZeros = std::min(strText.find_first_not_of('0'), strText.size());
  strText.remove_prefix(nZeros);
  if (strText.empty()) {
    return "0";
  }
  return (bNegative ? "-" : "") + std::string(strText);
}

}  // namespace qxrs
