// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Included in front of every source of the WebAssembly module. The standard library there (libc++)
// has std::from_chars for integers only, and its strtod computes with 128 bits in software. A text
// of a real number is given to JavaScript, whose parser of numbers rounds correctly and is there
// already.

#ifndef QXRECORDSET_PACKAGING_NPM_NATIVE_REALTEXT_H
#define QXRECORDSET_PACKAGING_NPM_NATIVE_REALTEXT_H

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <system_error>

// The number that the text begins with, as parseFloat reads it; not-a-number when there is none.
extern "C" __attribute__((import_module("env"), import_name("readReal"))) double QX_ReadReal(
    const char* text, std::size_t length);

namespace std {

inline from_chars_result from_chars(const char* first, const char* last, double& value) {
  const double read = QX_ReadReal(first, static_cast<size_t>(last - first));
  if (isnan(read)) return {first, errc::invalid_argument};
  if (isinf(read)) return {last, errc::result_out_of_range};
  value = read;
  return {last, errc()};
}

// In place of strtod: the end of the number is never asked for.
inline double qx_strtod(const char* text, char** /*end*/) {
  const double read = QX_ReadReal(text, strlen(text));
  return isnan(read) ? 0.0 : read;
}

}  // namespace std

#define strtod qx_strtod

#endif  // QXRECORDSET_PACKAGING_NPM_NATIVE_REALTEXT_H
