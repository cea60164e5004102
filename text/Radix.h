// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the C library's conversions of reals depend on beside the number: the decimal point of the
// thread's locale, and the rounding mode. Both can change between any two calls, so both are asked
// for each time.

#ifndef QXRECORDSET_TEXT_RADIX_H
#define QXRECORDSET_TEXT_RADIX_H

#include <langinfo.h>

#include <cfenv>
#include <cstring>
#include <string_view>

namespace JSON {

// The decimal point. It is good until the locale changes.
inline std::string_view Radix() {
  const char* const pRadix = nl_langinfo(RADIXCHAR);
  const bool bOneByte = pRadix[0] != '\0' && pRadix[1] == '\0';
  return {pRadix, bOneByte ? 1 : std::strlen(pRadix)};
}

inline bool RoundsToNearest() { return std::fegetround() == FE_TONEAREST; }

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_RADIX_H
