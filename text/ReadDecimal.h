// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Integers of numbers as text, as strtol and sscanf read them, and of reals. A text need not be
// NUL-terminated: behind a parsed number follows the rest of its document.

#ifndef QXRECORDSET_TEXT_READDECIMAL_H
#define QXRECORDSET_TEXT_READDECIMAL_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>
#include <type_traits>

#include "text/Bytes.h"

namespace JSON {

// White space is skipped, one sign is read, then digits up to the first byte that is none. No
// digits give 0, a value beyond the range of Integer (a signed type) the nearest bound. Nothing at
// or behind pEnd is read; without a pEnd, some byte behind the number has to end it.
template <typename Integer>
Integer ReadDecimal(const char* p, const char* pEnd) {
  using Magnitude = std::make_unsigned_t<Integer>;
  // A value above this is out of range as soon as any digit follows.
  constexpr Magnitude kMostToExtend = (std::numeric_limits<Magnitude>::max() - 9) / 10;
  const auto peek = [&p, pEnd] { return p != pEnd ? *p : '\0'; };
  while (IsCSpace(peek())) {
    ++p;
  }
  const bool bNegative = peek() == '-';
  if (bNegative || peek() == '+') ++p;
  Magnitude nValue = 0;
  for (; IsDigit(peek()); ++p) {
    const auto nDigit = static_cast<Magnitude>(*p - '0');
    nValue = std::min(nValue, kMostToExtend) * 10 + nDigit;
  }
  const Magnitude nMost = std::numeric_limits<Integer>::max() + Magnitude{bNegative};
  nValue = std::min(nValue, nMost);
  return static_cast<Integer>(bNegative ? 0 - nValue : nValue);
}

template <typename Integer>
Integer ReadDecimal(std::string_view text) {
  return ReadDecimal<Integer>(text.data(), text.data() + text.size());
}

// No text reads as 0. Nearly all numbers have less than ten digits, which 32 bits hold.
template <typename Integer>
Integer ReadDecimal(const char* pText) {
  constexpr std::ptrdiff_t kSurelyFit = 9;
  if (pText == nullptr) return 0;
  const bool bNegative = *pText == '-';
  const char* const pDigits = pText + (bNegative ? 1 : 0);
  const char* p = pDigits;
  int nValue = 0;
  for (; IsDigit(*p) && p - pDigits < kSurelyFit; ++p) {
    nValue = nValue * 10 + (*p - '0');
  }
  if (p == pDigits || IsDigit(*p)) return ReadDecimal<Integer>(pText, nullptr);
  return bNegative ? -nValue : nValue;
}

// A real number cut towards zero and limited to the range of the result; 0 for not-a-number.
template <typename Integer>
Integer CutToInteger(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  // The largest integer, or the power of two above it.
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(value);
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_READDECIMAL_H
