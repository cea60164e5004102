// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Readers of numbers beyond 32 bits: AsLong64() and AsReal().

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

#include "json/JSONValue.h"
#include "text/Bytes.h"
#include "text/ReadDecimal.h"

namespace JSON {
namespace {

// Cut towards zero; the nearest bound beyond the range, 0 for not-a-number.
long long ToLong64(double value) {
  constexpr double kBeyond = 9223372036854775808.0;  // 2^63
  if (std::isnan(value)) return 0;
  if (value >= kBeyond) return std::numeric_limits<long long>::max();
  if (value < -kBeyond) return std::numeric_limits<long long>::min();
  return static_cast<long long>(value);
}

// The double nearest to digits.
double OfDigits(const char* pDigits, const char* pEnd) {
#ifdef __cpp_lib_to_chars
  double value = 0.0;
  const bool bFits = std::from_chars(pDigits, pEnd, value).ec != std::errc::result_out_of_range;
  return bFits ? value : HUGE_VAL;
#else
  while (pDigits != pEnd && *pDigits == '0') {
    ++pDigits;
  }
  char szDigits[std::numeric_limits<double>::max_exponent10 + 2] = {};
  const auto nDigits = static_cast<std::size_t>(pEnd - pDigits);
  if (nDigits >= sizeof szDigits) return HUGE_VAL;
  std::memcpy(szDigits, pDigits, nDigits);
  return std::strtod(szDigits, nullptr);
#endif
}

// The double nearest to an integer. The text is read up to the first byte that does not belong to
// it, as all readers do.
double ToReal(const char* pText) {
  if (pText == nullptr) return 0.0;
  const bool bNegative = *pText == '-';
  const char* const pDigits = bNegative || *pText == '+' ? pText + 1 : pText;
  const char* pEnd = pDigits;
  while (IsDigit(*pEnd)) {
    ++pEnd;
  }
  const double value = OfDigits(pDigits, pEnd);
  return bNegative ? -value : value;
}

}  // namespace

long long JSONValue::AsLong64() const {
  if (eType == jtInteger) return ReadDecimal<long long>(pText);
  return eType == jtDouble ? ToLong64(AsDouble()) : AsInt();
}

double JSONValue::AsReal() const { return eType == jtInteger ? ToReal(pText) : AsDouble(); }

}  // namespace JSON
