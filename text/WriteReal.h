// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a real number as printf's "%g" does, at a fraction of its cost.

#ifndef QXRECORDSET_TEXT_WRITEREAL_H
#define QXRECORDSET_TEXT_WRITEREAL_H

#include <cstddef>

namespace JSON {

// Bytes that WriteReal needs room for: those of "-1.23457e-16" with a point of four, and of what is
// written beyond the end of a text.
constexpr std::size_t kMostReal = 24;

// Writes what printf's "%g" gives for the value, without a NUL, and returns the end of the text; or
// null for a value that is left to printf: one halfway between two results, one beside 0 that is
// nearer to it than 10^-16, one above 10^27, infinities and not-a-number, and all of them in other
// rounding modes than to nearest. REQUIRES: room for kMostReal bytes; what is not text is
// overwritten.
char* WriteReal(double value, char* out);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_WRITEREAL_H
