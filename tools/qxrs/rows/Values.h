// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the texts of values say: numbers, escapes, UTF-8.

#ifndef QXRECORDSET_TOOLS_ROWS_VALUES_H
#define QXRECORDSET_TOOLS_ROWS_VALUES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

// Integer or Real when `strText` is a number of strict JSON; otherwise Text. "007", "+1", ".5" and
// "-0" are no numbers: they would not come back as they are.
Kind NumberKind(std::string_view strText);

// What a text cell can be read as: an integer of 64 bits, a real, true, false, or a text.
Kind ReadAs(const Cell& cell);

// The integer, when 64 bits hold it.
std::optional<std::int64_t> ToInt64(std::string_view strText);

// The number; the nearest one where there are too many digits.
double ToDouble(std::string_view strText);

// The shortest text that gives `fValue` again, as a real of JSON: 2.0, 1e+300. An infinity becomes
// 9e999, which is read as one.
std::string RealText(double fValue);

// Whether a 64-bit binary real gives the number's digits back.
bool FitsDouble(std::string_view strText);

// Appends the content of a JSON string without its escapes. A pair of surrogates becomes one
// character; false when half a pair stood alone, for which U+FFFD is written. With bPairsOnly all
// other escapes stay.
bool AppendUnescaped(std::string_view strContent, std::string& strText, bool bPairsOnly = false);

// Whether every escape in the content of a JSON string is one of strict JSON, no byte is a control
// character, and, unless bSurrogates, no escape is a surrogate.
bool IsStrictContent(std::string_view strContent, bool bSurrogates);

// Whether the text is UTF-8 without surrogates; the same with U+FFFD for what is not.
bool IsUtf8(std::string_view strText);
std::string RepairedUtf8(std::string_view strText);

// The text of a cell for people and for formats without kinds: nothing for a null. It may lie in
// `strBuffer`. `pbWhole` becomes false when half a pair of surrogates was replaced.
std::string_view ShownText(const Cell& cell, std::string& strBuffer, bool* pbWhole = nullptr);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_VALUES_H
